// Doubles into 32-bit integers without undefined behaviour.
#pragma once

#include <climits>

namespace kesto {

// Truncated toward zero; NaN and what lies beyond 32 bits becomes the most negative integer.
inline int to_int32(double value) {
  return value > INT_MIN - 1.0 && value < INT_MAX + 1.0 ? static_cast<int>(value) : INT_MIN;
}

}  // namespace kesto
