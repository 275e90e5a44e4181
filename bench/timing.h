// What the paired measurements share.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <vector>

inline double median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2), values.end());
  return values[values.size() / 2];
}

template <class F>
double seconds(F body) {
  const auto start = std::chrono::steady_clock::now();
  body();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// The processor's clock, from a chain of rotations of one cycle each.
inline double cycles_per_second() {
#if defined(__x86_64__)
  constexpr int turns = 100000;
  std::vector<double> times;
  for (int trial = 0; trial < 9; ++trial) {
    times.push_back(seconds([] {
      unsigned long x = 1;
      for (int i = 0; i < turns; ++i) {
        __asm__ volatile("rol $1, %0\n\trol $1, %0\n\trol $1, %0\n\trol $1, %0\n\trol $1, %0\n\trol $1, %0" : "+r"(x));
      }
    }));
  }
  return 6.0 * turns / median(times);
#else
  return 1e9;  // cycles then read as nanoseconds
#endif
}
