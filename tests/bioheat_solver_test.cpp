// The solver below the gateway: against the plain loops to the bit, against closed forms and in its limits.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <set>
#include <vector>

#include "heat/internal/bioheat_kernels.h"
#include "tests/plain_bioheat.h"
#include "tests/support/targets.h"

namespace {

struct Fields {
  explicit Fields(const kesto::BioheatProblem& p)
      : n(size_t(p.n0) * size_t(p.n1) * size_t(p.n2)), real(n), imag(n), heat(n), temperature(n, 7.0) {}
  size_t n;
  std::vector<double> real, imag, heat, temperature;
};

void solve(const kesto::BioheatProblem& p, Fields& f, kesto::VectorTarget target) {
  solve_steady_bioheat(p, f.real.data(), f.imag.data(), f.heat.data(), f.temperature.data(), target);
}

std::mt19937_64 random_bits(20261121);

void expect_plain(kesto::BioheatProblem p, const std::vector<double>& odd_values = {}) {
  Fields plain(p);
  for (size_t n = 0; n < plain.n; ++n) {
    plain.real[n] = 1e6 * std::uniform_real_distribution<>(-1, 1)(random_bits);
    plain.imag[n] = 1e6 * std::uniform_real_distribution<>(-1, 1)(random_bits);
  }
  for (const double value : odd_values) plain.real[random_bits() % plain.n] = value;
  Fields fast = plain;
  plain_bioheat(p, plain.real.data(), plain.imag.data(), plain.heat.data(), plain.temperature.data());
  for (const kesto::VectorTarget target : kesto::available_targets()) {
    std::fill(fast.temperature.begin(), fast.temperature.end(), 7.0);
    solve(p, fast, target);
    ASSERT_TRUE(same_bits(fast.temperature.data(), plain.temperature))
        << p.n0 << " x " << p.n1 << " x " << p.n2 << ", " << p.sweeps << " sweeps, " << kesto::name_of(target);
  }
}

kesto::BioheatProblem tissue(int n0, int n1, int n2, int sweeps) {
  return {n0, n1, n2, 0.9e-3, 1.0e-3, 1.3e-3, 5.8, 1.6e6, 5.0, 3617.0, 0.51, sweeps};
}

TEST(BioheatSolver, EqualsThePlainLoopsOnEveryShape) {
  const int sides[] = {0, 1, 2, 3, 4, 5, 6, 7, 9, 12, 18, 37};
  int sweeps = 0;
  for (const int n0 : sides)
    for (const int n1 : sides)
      for (const int n2 : sides) expect_plain(tissue(n0, n1, n2, 1 + sweeps++ % 19));
  const int shapes[][4] = {{3, 3, 1000, 11},  {3, 1000, 3, 9},  {1000, 3, 3, 8},  {3, 200, 50, 7},   {200, 3, 50, 17},
                           {200, 150, 3, 24}, {61, 101, 31, 5}, {64, 64, 64, 13}, {128, 128, 128, 3}};
  for (const auto& s : shapes) expect_plain(tissue(s[0], s[1], s[2], s[3]));
}

TEST(BioheatSolver, EveryTargetHasAKernelOfItsOwn) {
  std::set<kesto::RelaxDiagonals> kernels;
  for (const auto target : kesto::available_targets()) kernels.insert(kesto::relax_diagonals(target));
  EXPECT_EQ(kernels.size(), kesto::available_targets().size());
}

TEST(BioheatSolver, EqualsThePlainLoopsForNonFiniteNumbers) {
  const double inf = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
  for (const double value : {inf, -inf, nan, 1e200, 1e-320}) expect_plain(tissue(17, 11, 9, 3), {value, value});
  using Field = double kesto::BioheatProblem::*;
  using P = kesto::BioheatProblem;
  for (const Field field : {&P::dx, &P::dy, &P::dz, &P::absorption, &P::impedance, &P::perfusion, &P::conductivity}) {
    for (const double value : {0.0, -1.0, inf, nan, 1e300}) {
      kesto::BioheatProblem p = tissue(9, 14, 6, 10);
      p.*field = value;
      expect_plain(p);
    }
  }
}

// On a box with zero walls the product of sines is an eigenfunction of the discrete operator, so the solution is known.
TEST(BioheatSolver, ReachesTheDiscreteSineMode) {
  const int n = 41;
  const double side = 40e-3, h = side / (n - 1), pi = std::acos(-1.0), source = 1e6;
  const kesto::BioheatProblem p{n, n, n, h, h, h, 1.0, 1.0, 5.0, 3600.0, 0.5, 600};
  Fields f(p);
  std::vector<double> expected(f.n);
  for (size_t m = 0; m < f.n; ++m) {
    const auto s = [&](size_t i) { return i == 0 || i == n - 1 ? 0.0 : std::sin(pi * double(i) / (n - 1)); };
    const double shape = s(m % n) * s(m / n % n) * s(m / n / n);
    f.real[m] = std::sqrt(source * shape);
    expected[m] = source * shape / (18000 + 0.5 * 3 * 4 / (h * h) * std::pow(std::sin(pi * h / 2 / side), 2));
  }
  solve(p, f, kesto::chosen_vector_target());
  const double peak = f.temperature[f.n / 2];
  EXPECT_NEAR(peak, 36.69994290, 5e-9);
  double worst = 0;
  for (size_t m = 0; m < f.n; ++m) worst = std::max(worst, std::abs(f.temperature[m] - expected[m]));
  EXPECT_LT(worst / peak, 1e-12);
}

}  // namespace
