#include "Progress.h"

#include <string>

namespace lattica::app {
namespace {

std::string clock(double seconds) {
  const int64_t s = int64_t(seconds + 0.5);
  char text[32];
  if (s >= 3600) {
    std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", (long long)(s / 3600),
                  (long long)(s / 60 % 60), (long long)(s % 60));
  } else {
    std::snprintf(text, sizeof text, "%02lld:%02lld", (long long)(s / 60), (long long)(s % 60));
  }
  return text;
}

}  // namespace

Progress::Progress(FILE* out, int64_t total, bool enabled)
    : out_(out), total_(total), enabled_(enabled), start_(std::chrono::steady_clock::now()) {
  if (enabled_) draw();
}

void Progress::frameDone() {
  ++done_;
  if (enabled_) draw();
}

void Progress::draw() {
  const double elapsed =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
  std::string eta = "--:--";
  if (done_ > 0) eta = clock(elapsed / double(done_) * double(total_ - done_));
  std::fprintf(out_, "\r\033[Kframe %lld/%lld  elapsed %s  ETA %s", (long long)done_,
               (long long)total_, clock(elapsed).c_str(), eta.c_str());
  std::fflush(out_);
  drawn_ = true;
}

void Progress::interrupt() {
  if (enabled_ && drawn_) {
    std::fprintf(out_, "\r\033[K");
    drawn_ = false;
  }
}

void Progress::finish() {
  if (enabled_ && drawn_) {
    std::fprintf(out_, "\n");
    drawn_ = false;
  }
}

}  // namespace lattica::app
