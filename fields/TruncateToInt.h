#pragma once
// Truncation toward zero to a 32-bit integer that is defined for every input: a value outside
// the integer range, infinity or not-a-number gives INT32_MIN, as the processor's own
// conversion does. Callers then hold the result to their valid range, so a NaN fraction reads a
// table's first entry instead of failing.

#include <cstdint>
#include <limits>

namespace lattica {

inline int32_t truncateToInt32(double value) {
  if (!(value > -2147483649.0 && value < 2147483648.0)) {
    return std::numeric_limits<int32_t>::min();
  }
  return static_cast<int32_t>(value);
}

}  // namespace lattica
