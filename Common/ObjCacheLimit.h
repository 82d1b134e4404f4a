#pragma once
// The limit of the model cache, in megabytes: VEXEL_LATTICA_OBJ_CACHE_MBS as a decimal number,
// read once per process. It bounds the sum of all cached models, and so any single file too.

#include <cstdint>

namespace lattica {

inline constexpr int64_t kDefaultObjCacheMegabytes = 80;

// The limit a value of the variable gives: its leading decimal number, or 80 when the text is
// missing or the number is below 2.
int64_t parseObjCacheLimit(const char* text);

// The process's limit, from the environment on the first call.
int64_t objCacheLimitMegabytes();

}  // namespace lattica
