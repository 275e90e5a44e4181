// The 4-wide float routines, against double precision, to the errors that their header states.
#include "core/vector_math.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include "host/embedded_host.h"

namespace {

std::mt19937 random_bits(20261121);
float uniform(float low, float high) { return std::uniform_real_distribution<float>(low, high)(random_bits); }

TEST(VectorMath, KeepsItsErrors) {
  double sine = 0, cosine = 0, exponential = 0, logarithm = 0;
  for (int trial = 0; trial < 200000; ++trial) {
    const float wide = uniform(-8192, 8192), quarter = static_cast<float>(trial % 10430) * 0.78539816f;
    const Float4 x = {wide * (sin_ps_range / 8192), quarter, std::nextafter(quarter, 0.0f), wide / 4096};
    Float4 s, c;
    sincos_ps(x, &s, &c);
    const Float4 y = {uniform(exp_ps_lower, exp_ps_upper), uniform(-1, 1), exp_ps_upper, exp_ps_lower}, ey = exp_ps(y);
    const Float4 l = {std::exp2(uniform(-149, 127.9f)), uniform(0.5f, 2), std::numeric_limits<float>::max(), 1};
    const Float4 ll = log_ps(l);
    for (int lane = 0; lane < 4; ++lane) {
      const double xd = static_cast<double>(x[lane]), yd = static_cast<double>(y[lane]);
      const double log_exact = std::log(static_cast<double>(l[lane]));
      sine = std::max(sine, std::abs(static_cast<double>(s[lane]) - std::sin(xd)));
      cosine = std::max(cosine, std::abs(static_cast<double>(c[lane]) - std::cos(xd)));
      exponential = std::max(exponential, std::abs(static_cast<double>(ey[lane]) / std::exp(yd) - 1));
      const double scale = log_exact == 0 ? 1 : std::abs(log_exact);
      logarithm = std::max(logarithm, std::abs(static_cast<double>(ll[lane]) - log_exact) / scale);
      ASSERT_EQ(sin_ps(x)[lane], s[lane]);
      ASSERT_EQ(cos_ps(x)[lane], c[lane]);
    }
  }
  EXPECT_LT(sine, sin_ps_error);
  EXPECT_LT(cosine, sin_ps_error);
  EXPECT_LT(exponential, exp_ps_error);
  EXPECT_LT(logarithm, log_ps_error);
}

TEST(VectorMath, AnswersSpecialArguments) {
  const float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
  const Float4 logs = log_ps(Float4{0, -1, inf, 1e-40f}), exps = exp_ps(Float4{inf, -inf, nan, 0});
  EXPECT_TRUE(std::isnan(logs[0]) && std::isnan(logs[1]));
  EXPECT_EQ(logs[2], inf);
  EXPECT_NEAR(logs[3], std::log(1e-40), 1e-4);
  EXPECT_NEAR(exps[0] / 2.406e38f, 1, 1e-3);
  EXPECT_EQ(exps[1], 0);
  EXPECT_TRUE(std::isnan(exps[2]));
  EXPECT_EQ(exps[3], 1);
  const Float4 ends = exp_ps(Float4{1000, 88.5f, exp_ps_upper, -87.34f});
  EXPECT_TRUE(ends[0] == ends[2] && ends[1] == ends[2] && ends[3] == 0);
  for (float x = sin_ps_range; x < inf; x *= 1.37f) EXPECT_LE(std::abs(sin_ps(Float4{x})[0]), 1) << x;
  EXPECT_TRUE(std::isnan(sin_ps(Float4{} + inf)[0]) && std::isnan(cos_ps(Float4{} + nan)[3]));
}

TEST(VectorMath, CombinesLanesAndWritesAnywhere) {
  alignas(16) char memory[64] = {};
  Float4* const re = reinterpret_cast<Float4*>(memory + 4);  // of no particular alignment
  Float4* const im = reinterpret_cast<Float4*>(memory + 24);
  complex_exp(Float4{0, -1, 2, 0}, Float4{0, 0.5f, -3, 1.5f}, re, im);
  float parts[10];
  std::memcpy(parts, memory + 4, sizeof parts);
  EXPECT_EQ(parts[0], 1);
  EXPECT_NEAR(parts[1], std::exp(-1.0) * std::cos(0.5), 1e-7);
  EXPECT_NEAR(parts[2], std::exp(2.0) * std::cos(-3.0), 1e-6);
  EXPECT_NEAR(parts[8], std::sin(1.5), 1e-7);
  EXPECT_EQ(horizontal_add_ps(Float4{1e8f, 1, -1e8f, 2}), 3);  // (0 + 2) + (1 + 3): in turn it would be 2
  const auto report = kesto::host::guarded([] { debug_m128(_mm_set_doubles(1, 2.5, -3, 4)); });
  EXPECT_EQ(report.console, "<1.000000e+00 2.500000e+00 -3.000000e+00 4.000000e+00>\n");
}

}  // namespace
