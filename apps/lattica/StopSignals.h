#pragma once
// Ctrl-C and SIGTERM: stop at once, leaving only complete outputs.
//
// The handler kills the ffmpeg child (if any) and waits for it, unlinks every temporary file in the
// image writer's registry, clears an open progress line and exits 128 + the signal number. Code
// that must not be cut short by that (starting or reaping the child) runs inside a
// DeferredStopSection: a signal arriving there is handled when the section ends.

#include <sys/types.h>

namespace lattica::app::stop {

// Installs the SIGINT and SIGTERM handlers and ignores SIGPIPE (a dead ffmpeg then shows as a
// failed write instead of killing the program).
void installHandlers();

// The child process a stop must kill; 0 for none. Set and cleared inside a DeferredStopSection.
void setChild(pid_t pid);

// Whether a progress line is on screen, unfinished; a stop clears it first.
void setProgressLineOpen(bool open);

// True once a stop has begun.
bool stopping();

class DeferredStopSection {
 public:
  DeferredStopSection();
  ~DeferredStopSection();
  DeferredStopSection(const DeferredStopSection&) = delete;
  DeferredStopSection& operator=(const DeferredStopSection&) = delete;
};

}  // namespace lattica::app::stop
