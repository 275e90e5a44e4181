// exp and sincos of the kernels, in every width, against long double and to the errors that their header states.
#include "core/lanes/lane_math.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "tests/support/lane_math_arrays.h"
#include "tests/support/targets.h"

namespace {

std::mt19937_64 random_bits(20261121);
double uniform(double low, double high) { return std::uniform_real_distribution<>(low, high)(random_bits); }

// Both signs, all magnitudes up to the range, its very ends.
std::vector<double> arguments(double range) {
  std::vector<double> x = {0.0, -0.0, range, -range, std::numeric_limits<double>::denorm_min(), 1e-300};
  for (int i = 0; i < 200000; ++i) {
    x.push_back(uniform(-range, range));
    x.push_back(std::copysign(range * std::exp2(uniform(-60, 0)), uniform(-1, 1)));
  }
  return x;
}

TEST(LaneMath, ExpKeepsItsError) {
  const std::vector<double> x = arguments(kesto::exp_range);
  for (const kesto::VectorTarget target : kesto::available_targets()) {
    std::vector<double> y(x.size());
    kesto::apply_to_arrays<kesto::ExpOfArray>(target, {x.data()}, {y.data()}, x.size());
    long double worst = 0;
    for (size_t i = 0; i < x.size(); ++i)
      worst = std::max(worst, std::abs(y[i] / std::exp(static_cast<long double>(x[i])) - 1));
    EXPECT_LT(static_cast<double>(worst), kesto::exp_error) << kesto::name_of(target);
  }
}

TEST(LaneMath, SincosKeepsItsErrorEvenAtItsZeros) {
  std::vector<double> x = arguments(kesto::sincos_range);
  for (int quarter = 1; quarter < 1900000; quarter += 1 + quarter / 97) {
    const double zero = quarter * 1.5707963267948966;
    for (const double near : {std::nextafter(zero, 0), zero, std::nextafter(zero, 1e9)}) x.push_back(near);
  }
  for (const kesto::VectorTarget target : kesto::available_targets()) {
    std::vector<double> s(x.size()), c(x.size());
    kesto::apply_to_arrays<kesto::SincosOfArray>(target, {x.data()}, {s.data(), c.data()}, x.size());
    long double worst = 0;
    for (size_t i = 0; i < x.size(); ++i) {
      const long double exact = x[i];
      worst = std::max({worst, std::abs(s[i] - std::sin(exact)), std::abs(c[i] - std::cos(exact))});
    }
    EXPECT_LT(static_cast<double>(worst), kesto::sincos_error) << kesto::name_of(target);
  }
}

// In any lane, of any last vector, without touching what lies around the results.
TEST(LaneMath, LeavesOutliersToLibmAndItsNeighboursAlone) {
  const double inf = std::numeric_limits<double>::infinity(), nan = std::nan("");
  const double outliers[] = {inf, -inf, nan, 710.5, -746.0, 3.1e6, -1e300};
  for (const kesto::VectorTarget target : kesto::available_targets()) {
    for (size_t n = 0; n <= 19; ++n) {
      for (size_t lane = 0; lane < n; ++lane) {
        const double outlier = outliers[(lane + n) % 7];
        std::vector<double> x(n, 0.5), e(n + 1, 7), s(n + 1, 7), c(n + 1, 7), re(n + 1, 7), im(n + 1, 7);
        x[lane] = outlier;
        std::copy(x.begin(), x.end(), re.begin());
        kesto::apply_to_arrays<kesto::ExpOfArray>(target, {x.data()}, {e.data()}, n);
        kesto::apply_to_arrays<kesto::SincosOfArray>(target, {x.data()}, {s.data(), c.data()}, n);
        kesto::apply_to_arrays<kesto::ComplexExpOfArray>(target, {re.data(), x.data()}, {re.data(), im.data()}, n);
        const auto same = [](double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); };
        const bool far = !(std::abs(outlier) <= kesto::sincos_range);
        EXPECT_TRUE(same(e[lane], std::exp(outlier))) << outlier;
        if (far) {
          EXPECT_TRUE(same(s[lane], std::sin(outlier)) && same(c[lane], std::cos(outlier))) << outlier;
        }
        for (size_t i = 0; i < n; ++i) {
          EXPECT_TRUE(i == lane || std::abs(e[i] - std::exp(0.5)) < 1e-15) << i << " of " << n;
          EXPECT_TRUE(same(re[i], e[i] * c[i]) && same(im[i], e[i] * s[i])) << i << " of " << n << ", " << outlier;
        }
        for (const auto* result : {&e, &s, &c, &re, &im}) EXPECT_EQ(result->back(), 7);
      }
    }
  }
}

}  // namespace
