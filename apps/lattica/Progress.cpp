#include "Progress.h"

#include <algorithm>
#include <cmath>

#include "StopSignals.h"

namespace lattica::app {

std::string formatClock(double seconds) {
  const int64_t s = std::isfinite(seconds) && seconds > 0 ? int64_t(seconds + 0.5) : 0;
  char text[40];
  if (s >= 3600) {
    std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", (long long)(s / 3600),
                  (long long)(s / 60 % 60), (long long)(s % 60));
  } else {
    std::snprintf(text, sizeof text, "%02lld:%02lld", (long long)(s / 60), (long long)(s % 60));
  }
  return text;
}

std::optional<double> estimateSecondsLeft(int64_t done, int64_t total, double elapsed,
                                          double elapsedAtLastFrame) {
  if (done <= 0) return std::nullopt;
  if (done >= total) return 0.0;
  const double perFrame = elapsedAtLastFrame / double(done);
  const double intoCurrent = elapsed - elapsedAtLastFrame;
  return std::max(0.0, perFrame * double(total - done) - intoCurrent);
}

std::string formatProgressLine(int64_t done, int64_t total, double elapsed,
                               double elapsedAtLastFrame) {
  const auto left = estimateSecondsLeft(done, total, elapsed, elapsedAtLastFrame);
  const int percent = total > 0 ? int(done * 100 / total) : 100;
  char text[160];
  std::snprintf(text, sizeof text, "%lld/%lld frames  %d%%  elapsed %s  ETA %s", (long long)done,
                (long long)total, percent, formatClock(elapsed).c_str(),
                left ? formatClock(*left).c_str() : "--:--");
  return text;
}

Progress::Progress(FILE* out, int64_t total, bool enabled)
    : out_(out), total_(total), enabled_(enabled), start_(std::chrono::steady_clock::now()) {
  if (!enabled_) return;
  std::lock_guard lock(mutex_);
  drawLocked();
  ticker_ = std::thread([this] { tick(); });
}

Progress::~Progress() {
  finish();
}

double Progress::secondsSince(std::chrono::steady_clock::time_point t) const {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - t).count();
}

void Progress::tick() {
  std::unique_lock lock(mutex_);
  while (!finished_) {
    wake_.wait_for(lock, std::chrono::seconds(1));
    if (!finished_) drawLocked();
  }
}

void Progress::drawLocked() {
  if (stop::stopping()) return;
  const std::string line =
      formatProgressLine(done_, total_, secondsSince(start_), elapsedAtLastFrame_);
  std::fprintf(out_, "\r\033[K%s", line.c_str());
  std::fflush(out_);
  lineOpen_ = true;
  stop::setProgressLineOpen(true);
}

void Progress::clearLocked() {
  if (!lineOpen_) return;
  std::fprintf(out_, "\r\033[K");
  lineOpen_ = false;
  stop::setProgressLineOpen(false);
}

void Progress::frameDone() {
  std::lock_guard lock(mutex_);
  ++done_;
  elapsedAtLastFrame_ = secondsSince(start_);
  if (enabled_ && !finished_) drawLocked();
}

void Progress::printMessage(const std::string& text) {
  std::lock_guard lock(mutex_);
  clearLocked();
  std::fprintf(out_, "%s\n", text.c_str());
  if (enabled_ && !finished_) {
    drawLocked();
  } else {
    std::fflush(out_);
  }
}

void Progress::finish() {
  {
    std::lock_guard lock(mutex_);
    if (finished_) return;
    finished_ = true;
    if (enabled_) {
      drawLocked();
      std::fprintf(out_, "\n");
      std::fflush(out_);
      lineOpen_ = false;
      stop::setProgressLineOpen(false);
    }
  }
  wake_.notify_all();
  if (ticker_.joinable()) ticker_.join();
}

}  // namespace lattica::app
