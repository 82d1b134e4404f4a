#include "ObjCacheLimit.h"

#include <cstdlib>

namespace lattica {

int64_t parseObjCacheLimit(const char* text) {
  if (text == nullptr) return kDefaultObjCacheMegabytes;
  const long long value = std::strtoll(text, nullptr, 10);
  if (value < 2) return kDefaultObjCacheMegabytes;
  return int64_t(value);
}

int64_t objCacheLimitMegabytes() {
  static const int64_t limit = parseObjCacheLimit(std::getenv("VEXEL_LATTICA_OBJ_CACHE_MBS"));
  return limit;
}

}  // namespace lattica
