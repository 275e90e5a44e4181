// What is computed once for a cap, whatever the points: the shape, its rim's nodes, its rings of cells, and the factors
// of its integrals.
#pragma once

#include <cmath>
#include <complex>

#include "core/constants.h"
#include "core/internal/host.h"
#include "core/medium.h"
#include "core/numerical_helpers.h"
#include "core/numerical_integration.h"
#include "fields/midpoints.h"
#include "fields/wave.h"
#include "transducers/cap_transducer.h"

namespace kesto {

struct Cap {
  Cap(double aperture_radius, double radius_of_curvature)
      : radius(aperture_radius), roc(radius_of_curvature), h(std::sqrt(roc * roc - radius * radius)), depth(roc - h) {}

  bool is_behind(const CartesianCoordinate& p) const {
    const double z = p.z - roc;
    return z < -h && p.x * p.x + p.y * p.y + z * z > roc * roc;
  }
  bool is_focus(const CartesianCoordinate& p) const {
    return std::sqrt(p.x * p.x + p.y * p.y) < 1e-10 && std::fabs(p.z - roc) < 1e-10;
  }

  double radius, roc;  // m
  double h;            // m, from the centre of curvature to the plane of the rim
  double depth;        // m, from the apex to the plane of the rim
};

inline bool is_apex(const CartesianCoordinate& p) { return p.z == 0 && std::sqrt(p.x * p.x + p.y * p.y) == 0; }

// Calls compute(cap, sign) for the outer cap, +1, and for the hole of an annulus, -1.
template <class Compute>
void for_each_cap(CapFace face, Compute compute) {
  compute(Cap(face.outer, face.roc), 1.0);
  if (face.inner > 0) compute(Cap(face.inner, face.roc), -1.0);
}

// The element's rule mapped to the rim angles from 0 to pi; the weights times `factor`.
struct CapRimTables {
  explicit CapRimTables(const NumericalIntegration& rule, double factor = 1)
      : n(rule.get_npoints()), cosine(n), weight(n) {
    for (int i = 0; i < n; ++i) {
      cosine[i] = std::cos(half_pi * rule.get_abscissa(i) + half_pi);
      weight[i] = rule.get_weight(i) * half_pi * factor;
    }
  }
  int n;
  ScratchArray<double> cosine, weight;
};

// Sines and cosines of the polar angles of n rings. Each ring has n cells over half its circumference; `area` is that
// of a cell and of its mirror image in the other half.
struct CapRingTables {
  CapRingTables(const Cap& cap, int n) : sine(n), cosine(n), area(n) {
    const double half_angle = std::asin(cap.radius / cap.roc);
    for (int i = 0; i < n; ++i) {
      const double theta = midpoint(i, n, half_angle);
      sine[i] = std::sin(theta);
      cosine[i] = std::cos(theta);
      area[i] = 2 * sine[i] * cap.roc * cap.roc * (half_angle / n) * (pi / n);
    }
  }
  ScratchArray<double> sine, cosine, area;
};

inline double cap_rim_factor(const Cap& cap, const Medium& medium) {
  return medium._rho_density * medium._soundspeed * cap.roc * cap.radius / pi;
}

inline double cap_transient_factor(const Cap& cap, const Medium& medium, double sign) {
  return sign * (cap.roc * cap.radius / pi * medium._rho_density * medium._soundspeed);
}

// The limit of the rim integral at the centre of curvature. f0 as stored is its factor, also where the wave has
// another.
inline std::complex<double> focal_value(const Cap& cap, const Medium& medium, Wave wave) {
  const double k = 2 * pi * medium._rho_density * medium._f0 * cap.depth;
  const std::complex<double> e = smart_exp(-wave.attenuation * cap.roc, -wave.wavenumber * cap.roc);
  return {-k * e.imag(), k * e.real()};
}

inline std::complex<double> cap_rayleigh_factor(const Medium& medium, std::complex<double> weight) {
  return medium._f0 * medium._rho_density * weight * std::complex<double>(0, 1);
}

// The sum of the cells at the apex, where the field of a cap is known.
inline double apex_sum(const Cap& cap) { return two_pi * cap.depth; }

}  // namespace kesto
