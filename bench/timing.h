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
