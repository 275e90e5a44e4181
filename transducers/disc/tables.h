// What is computed once for a disc, whatever the points: its rim's nodes and the factors of its integrals.
#pragma once

#include <cmath>
#include <complex>

#include "core/constants.h"
#include "core/internal/host.h"
#include "core/medium.h"
#include "core/numerical_integration.h"
#include "transducers/disc_transducer.h"

namespace kesto {

// Calls compute(radius, sign) for the outer disc, +1, and for the hole of an annulus, -1.
template <class Compute>
void for_each_disc(DiscFace face, Compute compute) {
  compute(face.outer, 1.0);
  if (face.inner > 0) compute(face.inner, -1.0);
}

inline std::complex<double> disc_rim_factor(const Medium& medium, double radius, std::complex<double> weight) {
  return medium._rho_density * medium._soundspeed * radius / pi * weight;
}

inline double disc_transient_factor(const Medium& medium, double radius, double sign) {
  return sign * (medium._rho_density * medium._soundspeed * radius / pi);
}

inline std::complex<double> disc_rayleigh_factor(const Medium& medium, std::complex<double> weight) {
  return std::complex<double>(0, 2 * medium._rho_density * medium._f0) * weight;
}

// The rule mapped to the rim angles from 0 to pi, which is how it is left; the weights times `factor`.
struct DiscRimTables {
  DiscRimTables(NumericalIntegration& rule, double a, double factor = 1)
      : radius(a), n(rule.get_npoints()), cosine(n), cosine_2a(n), weight(n) {
    rule.gauss_quadrature(0, pi);
    for (int i = 0; i < n; ++i) {
      cosine[i] = std::cos(rule.get_abscissa(i));
      cosine_2a[i] = 2 * a * cosine[i];
      weight[i] = rule.get_weight(i) * factor;
    }
  }

  double radius;
  int n;
  ScratchArray<double> cosine, cosine_2a, weight;
};

// 1 - cos psi of the rule as DiscRimTables left it, for single precision: with it the squared distance from the rim in
// its plane is a sum of squares, (r - a)^2 + 2 a r (1 - cos psi), and keeps its digits next to the rim.
inline void fill_versines(const ScratchArray<double>& versine, const NumericalIntegration& rule) {
  for (int i = 0; i < rule.get_npoints(); ++i) {
    const double half_sine = std::sin(rule.get_abscissa(i) / 2);
    versine[i] = 2 * half_sine * half_sine;
  }
}

}  // namespace kesto
