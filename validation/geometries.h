// The five geometries, each as the library's element and as what the references know of it. Velocity 1.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/transducer.h"
#include "validation/points.h"
#include "validation/rayleigh_sum.h"

namespace kesto::validation {

struct Geometry {
  std::string name;
  std::function<std::unique_ptr<Transducer>(double amplitude, double phase)> make;
  std::shared_ptr<const Face> face;

  // The fast nearest method's p on the axis, with rho c as its factor: the closed form, in which gamma may be complex.
  std::function<Complex(const Fluid&, double z)> on_axis;

  // The Fraunhofer integral of e^{jk n.r} over the face, n = (sine cos azimuth, sine sin azimuth, cosine).
  std::function<Complex(double k, double angle, double azimuth)> pattern;

  double radius = 0;  // of the smallest circle about the face, m
  double hole = 0;    // radius of the hole, m; 0 for none
  double roc = 0;     // radius of curvature, m; 0 where flat
  Points plane;       // in y = 0, from a quarter of a wavelength before the face on, to beyond the rim

  // Terms that the library sums at a point, for n nodes: rims n of the fast nearest method, cells n^2 of its Rayleigh
  // sum. The rectangle's edges are whole or split at a foot: 4 to 8 n, the mean of its plane.
  double rims = 0;
  double cells = 0;
};

std::vector<Geometry> geometries();

// p of a rectangle over any point of its face, with rho c as its factor. In polar coordinates about the foot of the
// perpendicular the radial integral is elementary:
//   p = rho c [e^{-gamma z} - (1 / 2 pi) int_0^{2 pi} e^{-gamma R(phi)} dphi],  R the distance of the edge seen at phi.
Complex rectangle_over_face(const Fluid& fluid, double width, double height, const Point& p);

constexpr double rectangle_width = 9e-3, rectangle_height = 15e-3;

// p = j rho f0 e^{-gamma R} / R pattern.
Complex far_field(const Geometry& geometry, const Fluid& fluid, double distance, double angle, double azimuth);

}  // namespace kesto::validation
