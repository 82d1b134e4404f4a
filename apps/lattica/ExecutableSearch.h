#pragma once
// Finding a program the way a shell does, so a missing one is reported before any work starts.

#include <optional>
#include <string>

namespace lattica::app {

// The first executable regular file `name` in the colon-separated folders of `searchPath`
// (nullptr: the PATH variable; unset PATH: /usr/local/bin:/usr/bin:/bin). Empty entries are
// skipped rather than read as the current folder. A name with a '/' is checked as it stands.
std::optional<std::string> findExecutable(const std::string& name, const char* searchPath);

}  // namespace lattica::app
