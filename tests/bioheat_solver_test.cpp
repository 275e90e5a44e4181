// The solver below the gateway: against the plain loops to the bit, against the exact solution of the balance and in
// its limits.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <set>
#include <vector>

#include "heat/internal/relaxation.h"
#include "heat/internal/solve.h"
#include "tests/exact_bioheat.h"
#include "tests/plain_bioheat.h"
#include "tests/support/targets.h"

namespace {

struct Fields {
  explicit Fields(const kesto::BioheatProblem& p)
      : n(size_t(p.n0) * size_t(p.n1) * size_t(p.n2)), real(n), imag(n), heat(n), temperature(n, 7.0) {}
  size_t n;
  std::vector<double> real, imag, heat, temperature;
};

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
  const auto expect_equal = [&](const char* by) {
    ASSERT_TRUE(same_bits(fast.temperature.data(), plain.temperature))
        << p.n0 << " x " << p.n1 << " x " << p.n2 << ", " << p.sweeps << " sweeps, " << by;
  };
  const auto reset = [&] { std::fill(fast.temperature.begin(), fast.temperature.end(), 7.0); };
  reset();
  solve_steady_bioheat(p, fast.real.data(), fast.imag.data(), fast.heat.data(), fast.temperature.data());
  expect_equal("as called");
  if (p.n0 < 3 || p.n1 < 3 || p.n2 < 3) return;
  for (const kesto::VectorTarget target : kesto::available_targets()) {
    reset();
    solve_in_lanes(target, p, fast.real.data(), fast.imag.data(), fast.temperature.data());
    expect_equal(kesto::name_of(target));
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
      for (const int n2 : sides) expect_plain(tissue(n0, n1, n2, sweeps++ % 42));
  // Thin ones, and some whose sweeps in flight need several bands.
  const int shapes[][4] = {{3, 3, 1000, 11},  {3, 1000, 3, 9},     {1000, 3, 3, 8},
                           {3, 200, 50, 7},   {2500, 9, 5, 16},    {200, 150, 3, 24},
                           {61, 101, 31, 40}, {128, 128, 128, 37}, {515, 120, 10, 18}};
  for (const auto& s : shapes) expect_plain(tissue(s[0], s[1], s[2], s[3]));
}

TEST(BioheatSolver, EveryTargetHasKernelsOfItsOwnAndServesTheGridsThatFillIt) {
  std::set<kesto::RelaxRows> kernels;
  size_t available = 0;
  for (const kesto::VectorTarget target : kesto::all_vector_targets) {
    const int lanes = static_cast<int>(target);
    EXPECT_EQ(fastest_lanes(tissue(64, 64, 64, 1), target), lanes);
    EXPECT_EQ(fastest_lanes(tissue(200, 3, 50, 1), target), std::min(lanes, 4));
    EXPECT_EQ(fastest_lanes(tissue(3, 3, 3000, 1), target), 1);
    if (!kesto::is_available(target)) continue;
    available += kesto::max_turns;
    for (int turns = 1; turns <= kesto::max_turns; ++turns) kernels.insert(kesto::relax_rows(target, turns));
  }
  EXPECT_EQ(kernels.size(), available);
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

TEST(BioheatSolver, ApproachesTheSolutionOfTheDiscreteBalance) {
  const kesto::BioheatProblem p = tissue(41, 23, 31, 600);
  Fields f(p);
  for (size_t m = 0; m < f.n; ++m) {
    f.real[m] = 1e6 * std::uniform_real_distribution<>(-1, 1)(random_bits);
    f.imag[m] = 1e6 * std::uniform_real_distribution<>(0, 1)(random_bits);
    f.heat[m] = (f.real[m] * f.real[m] + f.imag[m] * f.imag[m]) * p.absorption / p.impedance;
  }
  const std::vector<double> exact = exact_bioheat(p, f.heat);
  solve_steady_bioheat(p, f.real.data(), f.imag.data(), f.heat.data(), f.temperature.data());
  double worst = 0, peak = 0;
  for (size_t m = 0; m < f.n; ++m) {
    worst = std::max(worst, std::abs(f.temperature[m] - exact[m]));
    peak = std::max(peak, exact[m]);
  }
  EXPECT_GT(peak, 1);
  EXPECT_LT(worst / peak, 1e-12);
}

}  // namespace
