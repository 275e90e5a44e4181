#include "examples/bowl_field.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace kesto::example {

namespace {

constexpr double pi = 3.14159265358979323846;

struct GaussNode {
  double x, weight;
};

// Gauss-Legendre nodes on [-1, 1]: the roots of P_n by Newton's method, n >= 2.
std::vector<GaussNode> gauss_legendre(int n) {
  std::vector<GaussNode> nodes;
  for (int i = 0; i < n; ++i) {
    double x = std::cos(pi * (i + 0.75) / (n + 0.5));
    double slope = 0;
    for (double change = 1; std::abs(change) > 1e-15;) {
      double previous = 1, value = x;
      for (int m = 2; m <= n; ++m) {
        const double next = ((2 * m - 1) * x * value - (m - 1) * previous) / m;
        previous = value;
        value = next;
      }
      slope = n * (x * value - previous) / (x * x - 1);
      change = value / slope;
      x -= change;
    }
    nodes.push_back({x, 2 / ((1 - x * x) * slope * slope)});
  }
  return nodes;
}

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

BowlField::BowlField(const FocusedBowl& bowl, int refinement)
    : wavenumber_(2 * pi * bowl.frequency / bowl.soundspeed),
      factor_(0, bowl.density * bowl.soundspeed * wavenumber_ * bowl.velocity / (2 * pi)),
      refinement_(static_cast<std::size_t>(refinement)) {
  const double radius = bowl.curvature_radius, aperture_radius = bowl.aperture_diameter / 2;
  // The phase runs through at most k times the length of the meridian; two nodes per 2 pi of it are the limit.
  const double half_angle = std::asin(aperture_radius / radius);
  const int polar_nodes = refinement * (16 + static_cast<int>(wavenumber_ * radius * half_angle / 3));
  std::size_t most_azimuths = 0;
  for (const GaussNode& node : gauss_legendre(polar_nodes)) {
    const double angle = half_angle * (1 + node.x) / 2;
    const double meridian = radius * half_angle / 2 * node.weight;
    const Ring ring = {radius * std::sin(angle), radius * (1 - std::cos(angle)),
                       2 * pi * radius * std::sin(angle) * meridian};
    most_azimuths = std::max(most_azimuths, azimuths(ring.radius, ring));
    rings_.push_back(ring);
  }
  cosines_.resize(most_azimuths + 1);
  for (std::size_t n = 1; n <= most_azimuths; ++n) {
    for (std::size_t i = 0; i < n; ++i) {
      cosines_[n].push_back(std::cos(pi * (static_cast<double>(i) + 0.5) / static_cast<double>(n)));
    }
  }
}

// Round the ring the phase swings by no more than k min(r, ring radius) either way. Midpoints converge like a Bessel
// function in its order, 2 n here: fast, once the order is beyond the argument.
std::size_t BowlField::azimuths(double r, const Ring& ring) const {
  return refinement_ * (8 + static_cast<std::size_t>(0.6 * wavenumber_ * std::min(r, ring.radius)));
}

std::complex<double> BowlField::pressure(double r, double z) const {
  double real = 0, imag = 0;
  for (const Ring& ring : rings_) {
    const std::vector<double>& cosines = cosines_[azimuths(r, ring)];
    const double height = z - ring.z;
    const double mean_square = height * height + r * r + ring.radius * ring.radius;
    const double swing = 2 * r * ring.radius;
    double ring_real = 0, ring_imag = 0;
    for (const double cosine : cosines) {
      const double distance = std::sqrt(mean_square - swing * cosine);
      const double phase = wavenumber_ * distance;
      ring_real += std::cos(phase) / distance;
      ring_imag -= std::sin(phase) / distance;
    }
    const double area = ring.area / static_cast<double>(cosines.size());
    real += area * ring_real;
    imag += area * ring_imag;
  }
  return factor_ * std::complex<double>(real, imag);
}

AxialProfile axial_profile(const FocusedBowl& bowl, const BowlField& field) {
  const auto amplitude = [&field](double z) { return std::abs(field.pressure(0, z)); };
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

RadialTable::RadialTable(const BowlField& field, std::vector<double> planes, double radius, double step,
                         const Progress& progress)
    : planes_(std::move(planes)), step_(step), columns_(static_cast<std::size_t>(radius / step) + 4) {
  values_.reserve(columns_ * planes_.size());
  for (std::size_t plane = 0; plane < planes_.size(); ++plane) {
    progress(static_cast<double>(plane) / static_cast<double>(planes_.size()));
    values_.push_back(field.pressure(step_, planes_[plane]));
    for (std::size_t column = 1; column < columns_; ++column) {
      values_.push_back(field.pressure(static_cast<double>(column - 1) * step_, planes_[plane]));
    }
  }
  progress(1);
}

std::complex<double> RadialTable::pressure(std::size_t plane, double r) const {
  const std::size_t column = static_cast<std::size_t>(r / step_);  // at -step from there; r between the middle two
  const double t = r / step_ - static_cast<double>(column);
  const std::complex<double>* const p = &values_[column + columns_ * plane];
  return -t * (t - 1) * (t - 2) / 6 * p[0] + (t + 1) * (t - 1) * (t - 2) / 2 * p[1] - (t + 1) * t * (t - 2) / 2 * p[2] +
         (t + 1) * t * (t - 1) / 6 * p[3];
}

double RadialTable::worst_error(const BowlField& reference, std::size_t stride) const {
  double worst = 0;
  for (std::size_t plane = 0; plane < planes_.size(); plane += stride) {
    for (std::size_t column = 0; column + 3 < columns_; column += stride) {
      const double r = (static_cast<double>(column) + 0.5) * step_;
      worst = std::max(worst, std::abs(pressure(plane, r) - reference.pressure(r, planes_[plane])));
    }
  }
  return worst;
}

}  // namespace kesto::example
