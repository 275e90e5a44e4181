#include "examples/bowl_field.h"

#include <cmath>
#include <cstddef>
#include <stdexcept>
#include <utility>

namespace kesto::example {

namespace {

// Where a function with one maximum between `a` and `b` has it: golden-section search.
template <class F>
double place_of_maximum(F f, double a, double b, double tolerance) {
  const double golden = (std::sqrt(5.0) - 1) / 2;
  double left = b - golden * (b - a), right = a + golden * (b - a);
  double at_left = f(left), at_right = f(right);
  while (b - a > tolerance) {
    if (at_left < at_right) {
      a = left;
      left = std::exchange(right, a + golden * (b - a));
      at_left = std::exchange(at_right, f(a + golden * (b - a)));
    } else {
      b = right;
      right = std::exchange(left, b - golden * (b - a));
      at_right = std::exchange(at_left, f(b - golden * (b - a)));
    }
  }
  return (a + b) / 2;
}

// Where f crosses `level` between `above`, where it is larger, and `below`: bisection.
template <class F>
double place_of_level(F f, double level, double above, double below, double tolerance) {
  while (std::abs(above - below) > tolerance) {
    const double middle = (above + below) / 2;
    (f(middle) > level ? above : below) = middle;
  }
  return (above + below) / 2;
}

}  // namespace

BowlField::BowlField(const FocusedBowl& bowl, int abscissas)
    : shell_(bowl.aperture_diameter / 2, bowl.curvature_radius, bowl.velocity, 0) {
  fluid_._f0 = bowl.frequency;
  fluid_._soundspeed = bowl.soundspeed;
  fluid_._rho_density = bowl.density;
  rule_.allocate_memory(abscissas);
  rule_.gauss_quadrature();
  shell_.set_medium(&fluid_);
  shell_.set_integral_pointer(&rule_);
}

std::complex<double> BowlField::on_axis(double z) {
  CoordinateGrid point;
  point.SinglePoint(0, 0, z);
  return on(point).front();
}

std::vector<std::complex<double>> BowlField::on(const Grid& points) {
  const auto first = [&](std::size_t axis) { return points.origin[axis]; };
  const auto last = [&](std::size_t axis) { return points.coordinate(axis, points.points[axis] - 1); };
  CoordinateGrid grid;
  grid.RegularCoordinateGrid(first(0), last(0), first(1), last(1), first(2), last(2), points.spacing, points.spacing,
                             points.spacing);
  return on(grid);
}

std::vector<std::complex<double>> BowlField::on(CoordinateGrid& points) {
  const std::size_t n = static_cast<std::size_t>(points.npoints);
  std::vector<double> re(n), im(n);
  shell_.set_global_coordinate_grid(&points);
  shell_.set_complex_pressure_pointers(re.data(), im.data());
  if (shell_.fnm_cw() != 0) throw std::runtime_error("shells offer no fnm_cw");
  std::vector<std::complex<double>> pressure(n);
  for (std::size_t i = 0; i < n; ++i) pressure[i] = {re[i], im[i]};
  return pressure;
}

AxialProfile axial_profile(const FocusedBowl& bowl, BowlField& field) {
  const auto amplitude = [&field](double z) { return std::abs(field.on_axis(z)); };
  const double focus = bowl.curvature_radius;
  constexpr double tolerance = 1e-9;  // m
  AxialProfile profile;
  profile.focal_pressure = amplitude(focus);
  profile.peak_z = place_of_maximum(amplitude, 0.85 * focus, 1.05 * focus, tolerance);
  profile.peak_pressure = amplitude(profile.peak_z);
  const double half = profile.peak_pressure / 2;
  profile.near_z = place_of_level(amplitude, half, profile.peak_z, 0.7 * focus, tolerance);
  profile.far_z = place_of_level(amplitude, half, profile.peak_z, 1.5 * focus, tolerance);
  return profile;
}

}  // namespace kesto::example
