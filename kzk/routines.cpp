#include "kzk/routines.h"

#include <algorithm>
#include <cmath>

namespace kesto {

namespace {

using Complex = std::complex<double>;

// Without the tests for infinities that the operator makes.
inline Complex product(Complex a, Complex b) {
  return {a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real()};
}
inline double product(double a, double b) { return a * b; }
inline Complex reciprocal(Complex a) { return std::conj(a) * (1 / std::norm(a)); }
inline double reciprocal(double a) { return 1 / a; }

template <class T>
void solve(int n, const T* lower, const T* diagonal, const T* upper, T* x, T* scratch) {
  T pivot = reciprocal(diagonal[0]);
  x[0] = product(x[0], pivot);
  for (int i = 1; i < n; ++i) {
    scratch[i] = product(upper[i - 1], pivot);
    pivot = reciprocal(diagonal[i] - product(lower[i], scratch[i]));
    x[i] = product(x[i] - product(lower[i], x[i - 1]), pivot);
  }
  for (int i = n - 1; i > 0; --i) x[i - 1] -= product(scratch[i], x[i]);
}

void rates(int harmonics, double strength, const Complex* p, Complex* rate) {
  for (int n = 1; n <= harmonics; ++n) {
    Complex sum = 0, differences = 0;
    for (int m = 1; m < n; ++m) sum += product(p[m - 1], p[n - m - 1]);
    for (int m = n + 1; m <= harmonics; ++m) differences += product(p[m - 1], std::conj(p[m - n - 1]));
    rate[n - 1] = product(Complex(0, n * strength), sum + 2.0 * differences);
  }
}

}  // namespace

double RadialGrid::area(int i) const { return i == 0 ? dr * dr / 8 : i * dr * dr; }

double RadialGrid::kept(int i, double part_of_way) const {
  constexpr double strength = 64;
  const double depth = (i * dr - rmax) / (nodes * dr - rmax);
  return depth > 0 ? std::exp(-strength * part_of_way * depth * depth * depth) : 1;
}

void source_plane(const BeamSource& source, const RadialGrid& grid, double* share) {
  for (int i = 0; i < grid.nodes; ++i) {
    const double from = std::max(i - 0.5, 0.0) * grid.dr, to = (i + 0.5) * grid.dr;
    const double first = std::max(from, source.inner_radius), last = std::min(to, source.radius);
    share[i] = last > first ? (last * last - first * first) / (to * to - from * from) : 0;
  }
  constexpr int passes = 4;
  for (int pass = 0; pass < passes; ++pass) {
    double before = 0;
    for (int i = 0; i < grid.nodes; ++i) {
      const double here = share[i], after = i + 1 < grid.nodes ? share[i + 1] : 0;
      share[i] += 0.125 * (grid.lower(i) * (before - here) + grid.upper(i) * (after - here));
      before = here;
    }
  }
}

void tridiagonal_coefficients(const RadialGrid& grid, double wavenumber, double rayleigh, double half, Complex* lower,
                              Complex* diagonal, Complex* upper) {
  const Complex g(0, -half / (2 * wavenumber * grid.dr * grid.dr));
  for (int i = 0; i < grid.nodes; ++i) {
    const double xi = i * grid.dr, well = std::pow(wavenumber * xi / rayleigh * grid.dr, 2);
    lower[i] = -g * grid.lower(i);
    upper[i] = -g * grid.upper(i);
    diagonal[i] = 1.0 + g * (grid.lower(i) + grid.upper(i) + well);
  }
}

void solve_tridiagonal(int n, const Complex* lower, const Complex* diagonal, const Complex* upper, Complex* x,
                       Complex* scratch) {
  solve(n, lower, diagonal, upper, x, scratch);
}

void solve_tridiagonal(int n, const double* lower, const double* diagonal, const double* upper, double* x,
                       double* scratch) {
  solve(n, lower, diagonal, upper, x, scratch);
}

void nonlinear_step(int harmonics, double strength, Complex* p, Complex* scratch) {
  Complex *const stage = scratch, *const rate = scratch + harmonics;
  const auto mix = [&](const Complex* from, double old_share, Complex* to) {
    rates(harmonics, strength, from, rate);
    for (int n = 0; n < harmonics; ++n) to[n] = old_share * p[n] + (1 - old_share) * (from[n] + rate[n]);
  };
  mix(p, 0, stage);
  mix(stage, 0.75, stage);
  mix(stage, 1.0 / 3, p);
}

}  // namespace kesto
