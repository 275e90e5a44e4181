// What every fuzz target shares: decisions made from the fuzzer's bytes, and findings.
#pragma once

#include <cfloat>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

namespace fuzz {

// Ends the run where `truth` does not hold; the fuzzer keeps the bytes that led there.
inline void require(bool truth, const char* what, const std::string& seen = "") {
  if (truth) return;
  std::fprintf(stderr, "FINDING: %s: %s\n", what, seen.c_str());
  std::abort();
}

// The bytes in turn; zeros once they have run out.
class Bytes {
 public:
  Bytes(const std::uint8_t* data, std::size_t size) : at_(data), left_(size) {}

  unsigned next() {
    if (left_ == 0) return 0;
    --left_;
    return *at_++;
  }
  int below(int n) { return static_cast<int>(next()) % n; }
  bool one_in(int n) { return below(n) == n - 1; }
  bool ran_out() const { return left_ == 0; }

  // In [low, high], in steps of 2^-16 of the range.
  double between(double low, double high) {
    const unsigned position = next() * 256u + next();
    return low + (high - low) * position / 65535;
  }

  double raw() {
    std::uint64_t bits = 0;
    for (int i = 0; i < 8; ++i) bits = bits << 8 | next();
    double value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
  }

  // Mostly of the order of `usual`, else one that programs stumble over.
  double number(double usual) {
    // clang-format off
    constexpr double inf = std::numeric_limits<double>::infinity();
    static constexpr double awkward[] = {
        0.0, -0.0, -1.0, 0.9, 1.9, DBL_MIN / 4, -DBL_MIN / 4, DBL_MAX, -DBL_MAX, 1e-300, 1e300, 2147483647.0,
        2147483647.9, 2147483648.0, -2147483648.9, -2147483649.0, 4294967297.0, inf, -inf,
        std::numeric_limits<double>::quiet_NaN()};
    // clang-format on
    constexpr int count = sizeof awkward / sizeof awkward[0];
    const int choice = below(64);
    if (choice < count) return awkward[choice];
    return choice == count ? raw() : usual * between(0.25, 4);
  }

 private:
  const std::uint8_t* at_;
  std::size_t left_;
};

}  // namespace fuzz
