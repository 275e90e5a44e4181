#include "validation/geometries.h"

#include <cmath>

#include "transducers/circular_transducer.h"
#include "transducers/rectangular_transducer.h"
#include "transducers/ring_transducer.h"
#include "transducers/spherical_ring_transducer.h"
#include "transducers/spherical_transducer.h"
#include "validation/gauss_legendre.h"

namespace kesto::validation {

namespace {

constexpr double disc_radius = 7.5e-3, hole_radius = 3e-3;
constexpr double bowl_radius = 15e-3, bowl_hole_radius = 6e-3, bowl_roc = 25e-3;

// Columns over the face, its rim and as far again as half the face beside it; heights in equal ratios.
Points plane_before_flat_face(double half_width) {
  Points points;
  for (const double z : in_ratio(water.wavelength() / 4, 30 * water.wavelength(), 20)) {
    for (const double x : spaced(0, 1.5 * half_width, 16)) points.push_back({x, 0, z});
  }
  return points;
}

// The same along the normals of the sphere, past the centre of curvature.
Points plane_before_bowl(double radius, double roc) {
  Points points;
  const double rim = std::asin(radius / roc);
  for (const double s : in_ratio(water.wavelength() / 4, 1.5 * roc, 20)) {
    for (const double theta : spaced(0, 1.3 * rim, 14)) {
      points.push_back({(roc - s) * std::sin(theta), 0, roc - (roc - s) * std::cos(theta)});
    }
  }
  return points;
}

// The wave from a circle, which all its points send to the axis in phase.
Complex from_circle(const Fluid& fluid, double radius, double z) { return fluid.outgoing(std::hypot(radius, z)); }

// The waves of the two rims; that of a disc's centre is e^{-gamma z}.
Complex flat_axis(const Fluid& fluid, double inner, double outer, double z) {
  return fluid.impedance() * (from_circle(fluid, inner, z) - from_circle(fluid, outer, z));
}

double depth_of(double radius, double roc) { return roc - std::sqrt(roc * roc - radius * radius); }

// O'Neil's (e^{-gamma z} - e^{-gamma R}) / (1 - z / roc), R the distance of the rim. Written with R^2 - z^2 = 2 depth
// (roc - z), so that nothing cancels at the centre of curvature.
Complex cap_axis(const Fluid& fluid, double radius, double roc, double z) {
  const double depth = depth_of(radius, roc), rim = std::hypot(radius, z - depth);
  const double difference_by_height = 2 * depth / (rim + z);  // (R - z) / (roc - z)
  const Complex half = fluid.gamma() * (difference_by_height * (roc - z) / 2);
  const Complex sinhc = half == 0.0 ? 1.0 : std::sinh(half) / half;
  return fluid.impedance() * fluid.gamma() * roc * difference_by_height * fluid.outgoing((rim + z) / 2) * sinhc;
}

Complex spherical_axis(const Fluid& fluid, double inner, double outer, double roc, double z) {
  return cap_axis(fluid, outer, roc, z) - (inner > 0 ? cap_axis(fluid, inner, roc, z) : Complex());
}

double jinc(double x) { return x == 0 ? 1 : 2 * std::cyl_bessel_j(1, x) / x; }
double sinc(double x) { return x == 0 ? 1 : std::sin(x) / x; }

Complex disc_pattern(double radius, double k, double angle) {
  return pi * radius * radius * jinc(k * radius * std::sin(angle));
}

// Ring by ring of the sphere.
Complex spherical_pattern(double inner, double outer, double roc, double k, double angle) {
  static const std::vector<GaussNode> nodes = gauss_legendre(32);
  const auto ring = [&](double theta) {
    const double height = roc * (1 - std::cos(theta)), radius = roc * std::sin(theta);
    return 2 * pi * roc * radius * std::cyl_bessel_j(0, k * radius * std::sin(angle)) *
           std::polar(1.0, k * height * std::cos(angle));
  };
  return integrate(nodes, 8, std::asin(inner / roc), std::asin(outer / roc), ring);
}

Geometry flat_ring(const char* name, double inner, double outer) {
  Geometry g;
  g.name = name;
  g.make = [=](double amplitude, double phase) -> std::unique_ptr<Transducer> {
    if (inner == 0) return std::make_unique<CircularTransducer>(outer, amplitude, phase);
    return std::make_unique<RingTransducer>(inner, outer, amplitude, phase);
  };
  g.face = std::make_shared<FlatRing>(inner, outer);
  g.on_axis = [=](const Fluid& fluid, double z) { return flat_axis(fluid, inner, outer, z); };
  g.pattern = [=](double k, double angle, double) {
    return disc_pattern(outer, k, angle) - (inner > 0 ? disc_pattern(inner, k, angle) : Complex());
  };
  g.radius = outer;
  g.hole = inner;
  g.roc = 0;
  g.plane = plane_before_flat_face(outer);
  g.rims = g.cells = inner == 0 ? 1 : 2;
  return g;
}

Geometry spherical_zone(const char* name, double inner, double outer, double roc) {
  Geometry g;
  g.name = name;
  g.make = [=](double amplitude, double phase) -> std::unique_ptr<Transducer> {
    if (inner == 0) return std::make_unique<SphericalTransducer>(outer, roc, amplitude, phase);
    return std::make_unique<SphericalRingTransducer>(inner, outer, roc, amplitude, phase);
  };
  g.face = std::make_shared<SphericalZone>(inner, outer, roc);
  g.on_axis = [=](const Fluid& fluid, double z) { return spherical_axis(fluid, inner, outer, roc, z); };
  g.pattern = [=](double k, double angle, double) { return spherical_pattern(inner, outer, roc, k, angle); };
  g.radius = outer;
  g.hole = inner;
  g.roc = roc;
  g.plane = plane_before_bowl(outer, roc);
  g.rims = g.cells = inner == 0 ? 1 : 2;
  return g;
}

Geometry rectangle(double width, double height) {
  Geometry g;
  g.name = "rectangle";
  g.make = [=](double amplitude, double phase) {
    return std::make_unique<RectangularTransducer>(width, height, amplitude, phase);
  };
  g.face = std::make_shared<FlatRectangle>(width, height);
  g.on_axis = [=](const Fluid& fluid, double z) { return rectangle_over_face(fluid, width, height, {0, 0, z}); };
  g.pattern = [=](double k, double angle, double azimuth) -> Complex {
    const double x = k * width / 2 * std::sin(angle) * std::cos(azimuth);
    const double y = k * height / 2 * std::sin(angle) * std::sin(azimuth);
    return width * height * sinc(x) * sinc(y);
  };
  g.radius = std::hypot(width, height) / 2;
  g.hole = 0;
  g.roc = 0;
  g.plane = plane_before_flat_face(width / 2);
  double terms = 0;
  for (const Point& p : g.plane) terms += (std::abs(p.x) < width / 2 ? 4 : 2) + 4;
  g.rims = terms / static_cast<double>(g.plane.size());
  g.cells = 1;
  return g;
}

}  // namespace

std::vector<Geometry> geometries() {
  return {flat_ring("disc", 0, disc_radius), flat_ring("annulus", hole_radius, disc_radius),
          rectangle(rectangle_width, rectangle_height), spherical_zone("shell", 0, bowl_radius, bowl_roc),
          spherical_zone("spherical annulus", bowl_hole_radius, bowl_radius, bowl_roc)};
}

Complex rectangle_over_face(const Fluid& fluid, double width, double height, const Point& p) {
  static const std::vector<GaussNode> nodes = gauss_legendre(32);
  constexpr int panels = 16;
  // Of an edge at the distance d from the foot, between -left and right along it.
  const auto edge = [&](double d, double left, double right) {
    return integrate(nodes, panels, -std::atan2(left, d), std::atan2(right, d),
                     [&](double phi) { return fluid.outgoing(std::hypot(p.z, d / std::cos(phi))); });
  };
  const double east = width / 2 - p.x, west = width / 2 + p.x, north = height / 2 - p.y, south = height / 2 + p.y;
  const Complex rim =
      edge(east, south, north) + edge(west, north, south) + edge(north, east, west) + edge(south, west, east);
  return fluid.impedance() * (fluid.outgoing(p.z) - rim / (2 * pi));
}

Complex far_field(const Geometry& geometry, const Fluid& fluid, double distance, double angle, double azimuth) {
  const Complex factor(0, fluid.density * fluid.frequency);
  return factor * fluid.outgoing(distance) / distance * geometry.pattern(fluid.k(), angle, azimuth);
}

}  // namespace kesto::validation
