// What the paired measurements share.
#pragma once

#include <time.h>

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

// Of this thread alone: what else runs on the machine stays out. For bodies of 10 us and more.
template <class F>
double own_seconds(F body) {
  const auto now = [] {
    timespec t;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
  };
  const double start = now();
  body();
  return now() - start;
}

// The processor's clock, from a chain of multiplications of three cycles each. Processors take additions and rotations
// out of such a chain, multiplications none.
inline double cycles_per_second() {
#if defined(__x86_64__)
  constexpr int turns = 100000;
  std::vector<double> times;
  for (int trial = 0; trial < 9; ++trial) {
    times.push_back(own_seconds([] {
      unsigned long x = 3;
      for (int i = 0; i < turns; ++i)
        __asm__ volatile("imul %0, %0\n\timul %0, %0\n\timul %0, %0\n\timul %0, %0" : "+r"(x));
    }));
  }
  return 12.0 * turns / median(times);
#else
  return 1e9;  // cycles then read as nanoseconds
#endif
}
