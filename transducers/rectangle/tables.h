// What is computed once for a rectangle, whatever the points: its rule and the factors of its integrals.
#pragma once

#include <cmath>
#include <complex>

#include "core/constants.h"
#include "core/internal/host.h"
#include "core/medium.h"
#include "core/numerical_integration.h"
#include "transducers/rectangular_transducer.h"

namespace kesto {

// A rule on [-1, 1] mapped to the two sides' half-lengths and, for a side split at a foot, to [0, 1].
struct RectangleNodes {
  double a, b;  // half the sides, m
  int n;
  const double *t_squared, *t_weight, *x, *x_weight, *y, *y_weight;
};

// Such nodes in memory of their own.
struct RectangleTables {
  // `rounded`: maps nodes and weights rounded to single precision. `padded_to`: fills up to a multiple of that many
  // with copies of the last node of no weight.
  RectangleTables(const RectangularTransducer& piston, bool rounded = false, int padded_to = 1)
      : a(piston.width * 0.5),
        b(piston.height * 0.5),
        n((piston.integral->get_npoints() + padded_to - 1) / padded_to * padded_to),
        t_squared(n),
        t_weight(n),
        x(n),
        x_weight(n),
        y(n),
        y_weight(n) {
    const int given = piston.integral->get_npoints();
    for (int i = 0; i < n; ++i) {
      double node = piston.integral->get_abscissa(i < given ? i : given - 1);
      double weight = i < given ? piston.integral->get_weight(i) : 0;
      if (rounded) {
        node = static_cast<float>(node);
        weight = static_cast<float>(weight);
      }
      if (!(std::fabs(node) <= farthest_node)) farthest_node = std::fabs(node);
      const double t = (node + 1) * 0.5;
      t_squared[i] = t * t;
      t_weight[i] = weight * 0.5;
      x[i] = node * a;
      x_weight[i] = weight * a;
      y[i] = node * b;
      y_weight[i] = weight * b;
    }
  }

  // By how much a distance from an edge or a node may exceed that of its point from the origin. KEPT: a rule that its
  // owner left on another interval is used as it is, with nodes beyond the rectangle.
  double extent() const { return 2 * farthest_node * (std::fabs(a) + std::fabs(b)); }

  RectangleNodes nodes() const {
    return {a, b, n, t_squared.data(), t_weight.data(), x.data(), x_weight.data(), y.data(), y_weight.data()};
  }

  void scale_weights(double factor) const {
    for (int i = 0; i < n; ++i) t_weight[i] *= factor, x_weight[i] *= factor, y_weight[i] *= factor;
  }

  double a, b;  // half the sides, m
  int n;
  double farthest_node = 1;  // in half sides
  ScratchArray<double> t_squared, t_weight, x, x_weight, y, y_weight;
};

// The foot of the perpendicular lies strictly within an edge that ends at these distances on either side of it.
template <class Real>
bool is_split(Real one, Real other) {
  return one > 0 && other > 0;
}

inline std::complex<double> rectangle_rim_factor(const RectangularTransducer& piston, double rho_c,
                                                 double minus_two_pi) {
  const std::complex<double> w = piston.complex_weight;
  return {rho_c * w.real() / minus_two_pi, rho_c * w.imag() / minus_two_pi};
}

// Of the fields in time, whose amplitude comes last.
inline double rectangle_transient_factor(const Medium& medium) {
  return -(medium._rho_density * medium._soundspeed) / two_pi;
}

inline std::complex<double> rectangle_rayleigh_factor(const RectangularTransducer& piston) {
  return piston.complex_weight * std::complex<double>(0, 1) * (piston.medium->_f0 * piston.medium->_rho_density);
}

}  // namespace kesto
