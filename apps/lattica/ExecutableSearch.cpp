#include "ExecutableSearch.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

namespace lattica::app {
namespace {

bool isExecutableFile(const std::string& path) {
  struct stat info {};
  return ::stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode) &&
         ::access(path.c_str(), X_OK) == 0;
}

}  // namespace

std::optional<std::string> findExecutable(const std::string& name, const char* searchPath) {
  if (name.empty()) return std::nullopt;
  if (name.find('/') != std::string::npos) {
    return isExecutableFile(name) ? std::optional<std::string>(name) : std::nullopt;
  }
  if (searchPath == nullptr) searchPath = std::getenv("PATH");
  const std::string folders = searchPath ? searchPath : "/usr/local/bin:/usr/bin:/bin";
  size_t start = 0;
  while (start <= folders.size()) {
    size_t end = folders.find(':', start);
    if (end == std::string::npos) end = folders.size();
    if (end > start) {
      std::string candidate = folders.substr(start, end - start);
      if (candidate.back() != '/') candidate += '/';
      candidate += name;
      if (isExecutableFile(candidate)) return candidate;
    }
    start = end + 1;
  }
  return std::nullopt;
}

}  // namespace lattica::app
