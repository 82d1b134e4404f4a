#pragma once
// A one-line progress display on a terminal: frames done, total, elapsed and estimated time left,
// redrawn every second. Messages printed through it land on their own lines, never inside the
// progress line.

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace lattica::app {

// "MM:SS", or "H:MM:SS" from an hour on; rounded to the nearest second.
std::string formatClock(double seconds);

// Time left: the average time of the frames done so far, times the frames left, less the time
// already spent on the frame under way. Nothing before the first frame is done.
std::optional<double> estimateSecondsLeft(int64_t done, int64_t total, double elapsed,
                                          double elapsedAtLastFrame);

// "12/48 frames  25%  elapsed 00:31  ETA 01:33" ("ETA --:--" before the first frame).
std::string formatProgressLine(int64_t done, int64_t total, double elapsed,
                               double elapsedAtLastFrame);

class Progress {
 public:
  // Shows nothing when `enabled` is false; messages are still printed.
  Progress(FILE* out, int64_t total, bool enabled);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void frameDone();
  // Prints `text` and a newline, clearing the progress line first and redrawing it after.
  void printMessage(const std::string& text);
  // Draws the final state and ends the line; nothing is drawn afterwards.
  void finish();

 private:
  void drawLocked();
  void clearLocked();
  void tick();
  double secondsSince(std::chrono::steady_clock::time_point t) const;

  FILE* out_;
  int64_t total_;
  bool enabled_;
  int64_t done_ = 0;
  bool lineOpen_ = false;
  bool finished_ = false;
  std::chrono::steady_clock::time_point start_;
  double elapsedAtLastFrame_ = 0.0;
  std::mutex mutex_;
  std::condition_variable wake_;
  std::thread ticker_;
};

}  // namespace lattica::app
