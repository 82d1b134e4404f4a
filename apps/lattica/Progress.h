#pragma once
// A one-line progress display on a terminal: frames done, total, elapsed, estimated time left.

#include <chrono>
#include <cstdint>
#include <cstdio>

namespace lattica::app {

class Progress {
 public:
  Progress(FILE* out, int64_t total, bool enabled);
  void frameDone();
  // Ends the line so later messages start on a fresh one.
  void finish();
  // Clears the line before a message is printed.
  void interrupt();

 private:
  void draw();

  FILE* out_;
  int64_t total_;
  int64_t done_ = 0;
  bool enabled_;
  bool drawn_ = false;
  std::chrono::steady_clock::time_point start_;
};

}  // namespace lattica::app
