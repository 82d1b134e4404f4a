#include "StopSignals.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>

#include "ImageWriter.h"

namespace lattica::app::stop {
namespace {

// Lock-free atomics only: the handler may run on any thread, at any point.
std::atomic<int> gPendingSignal{0};
std::atomic<int> gDeferDepth{0};  // sections open on the main thread
std::atomic<bool> gStopping{false};
std::atomic<pid_t> gChild{0};
std::atomic<bool> gProgressLineOpen{false};

void writeAll(const char* text) {
  size_t left = std::strlen(text);
  while (left > 0) {
    const ssize_t n = ::write(STDERR_FILENO, text, left);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return;
    text += n;
    left -= size_t(n);
  }
}

// Async-signal-safe throughout. The first caller does the work; any other thread that gets here
// waits for the exit.
[[noreturn]] void stopNow(int signal) {
  sigset_t both;
  sigemptyset(&both);
  sigaddset(&both, SIGINT);
  sigaddset(&both, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &both, nullptr);
  if (gStopping.exchange(true)) {
    for (;;) pause();
  }
  // ffmpeg dies first, so nothing writes its output file after it is unlinked.
  if (const pid_t child = gChild.load(); child > 0) {
    ::kill(child, SIGKILL);
    while (::waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
  }
  TemporaryFileRegistry::process().removeAllNow();
  if (gProgressLineOpen.load()) writeAll("\r\033[K");
  writeAll(signal == SIGINT ? "lattica: interrupted; partial outputs removed\n"
                            : "lattica: terminated; partial outputs removed\n");
  _exit(128 + signal);
}

extern "C" void onStopSignal(int signal) {
  gPendingSignal.store(signal);
  if (gDeferDepth.load() == 0) stopNow(signal);
}

}  // namespace

void installHandlers() {
  struct sigaction action {};
  action.sa_handler = onStopSignal;
  sigemptyset(&action.sa_mask);
  sigaddset(&action.sa_mask, SIGINT);
  sigaddset(&action.sa_mask, SIGTERM);
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
  struct sigaction ignore {};
  ignore.sa_handler = SIG_IGN;
  sigemptyset(&ignore.sa_mask);
  sigaction(SIGPIPE, &ignore, nullptr);
}

void setChild(pid_t pid) {
  gChild.store(pid);
}

void setProgressLineOpen(bool open) {
  gProgressLineOpen.store(open);
}

bool stopping() {
  return gStopping.load();
}

// The handler stores the signal before it looks at the depth, and a section changes the depth
// before it looks at the signal: one of the two always sees the other.
DeferredStopSection::DeferredStopSection() {
  gDeferDepth.fetch_add(1);
  if (const int signal = gPendingSignal.load()) stopNow(signal);
}

DeferredStopSection::~DeferredStopSection() {
  if (gDeferDepth.fetch_sub(1) != 1) return;
  if (const int signal = gPendingSignal.load()) stopNow(signal);
}

}  // namespace lattica::app::stop
