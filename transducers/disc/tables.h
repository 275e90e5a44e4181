// What the double and the single-precision fields of a disc share.
#pragma once

#include <cmath>
#include <complex>
#include <cstddef>

#include "core/constants.h"
#include "core/internal/host.h"
#include "core/medium.h"
#include "core/numerical_integration.h"
#include "core/transducer.h"
#include "fields/continuous_wave.h"
#include "transducers/disc/disc.h"
#include "transducers/disc/rim.h"

namespace kesto {

// Calls compute(radius, sign) for the disc and for the one it lacks.
template <class Compute>
void for_each_signed_disc(DiscFace face, Compute compute) {
  compute(face.outer, 1.0);
  if (face.inner > 0) compute(face.inner, -1.0);
}

// Calls compute(radius, weight) for the disc and, with the weight negated, for the one it lacks.
template <class Compute>
void for_each_disc(const Transducer& element, DiscFace face, Compute compute) {
  for_each_signed_disc(face, [&](double radius, double sign) { compute(radius, sign * element.complex_weight); });
}

inline Complex disc_rim_factor(const Medium& medium, double radius, Complex weight) {
  return medium._rho_density * medium._soundspeed * radius / pi * weight;
}

inline Complex disc_rayleigh_factor(const Medium& medium, Complex weight) {
  return Complex(0, 2 * medium._rho_density * medium._f0) * weight;
}

// The element's rule mapped to the rim angles from 0 to pi, which is how the rule is left; the weights times `factor`.
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
  RimOfDisc rim() const { return {radius, n, cosine.data(), cosine_2a.data(), weight.data()}; }

  double radius;
  int n;
  ScratchArray<double> cosine, cosine_2a, weight;
};

// Travel times between a point, r from the axis and z over the face, and the disc of radius a.
struct DiscArrivals {
  DiscArrivals(const CartesianCoordinate& p, double a, double c)
      : r(std::sqrt(p.x * p.x + p.y * p.y)),
        axial(p.z / c),
        near_rim(std::sqrt((r - a) * (r - a) + p.z * p.z) / c),
        far_rim(std::sqrt(p.z * p.z + (r + a) * (r + a)) / c),
        first(r <= a ? axial : near_rim) {}
  double r;      // m
  double axial;  // s, signed as z is
  double near_rim, far_rim, first;
};

}  // namespace kesto
