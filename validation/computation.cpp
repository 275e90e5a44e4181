#include "validation/computation.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <stdexcept>

namespace kesto::validation {

namespace {

constexpr double amplitude = 0.04, phase = 0.3;

double now() { return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count(); }

}  // namespace

Computation::Computation(const Geometry& geometry, const Fluid& fluid, const Points& points, int nodes)
    : element_(geometry.make(amplitude, phase)), real_(points.size()), imag_(points.size()) {
  medium_._f0 = fluid.frequency;
  medium_._soundspeed = fluid.soundspeed;
  medium_._rho_density = fluid.density;
  medium_._dBcmMHz = fluid.attenuation;
  std::vector<double> columns;
  for (const Point& p : points) columns.push_back(p.x);
  for (const Point& p : points) columns.push_back(p.y);
  for (const Point& p : points) columns.push_back(p.z);
  grid_.CoordinateGridVector(columns.data(), static_cast<int>(points.size()));
  rule_.allocate_memory(nodes);
  element_->set_medium(&medium_);
  element_->set_global_coordinate_grid(&grid_);
  element_->set_integral_pointer(&rule_);
  element_->set_complex_pressure_pointers(real_.data(), imag_.data());
  rule_.gauss_quadrature();
}

void Computation::call(Method method) {
  if ((*element_.*method)() != 0) throw std::logic_error("the geometry does not offer the method");
}

Field Computation::field(Method method) {
  rule_.gauss_quadrature();  // the disc's method maps it to another interval
  std::fill(real_.begin(), real_.end(), 0.0);
  std::fill(imag_.begin(), imag_.end(), 0.0);
  call(method);
  const Complex weight = std::polar(amplitude, phase);
  Field result;
  for (std::size_t i = 0; i < real_.size(); ++i) result.push_back(Complex(real_[i], imag_[i]) / weight);
  return result;
}

double Computation::seconds(Method method) {
  constexpr double budget = 0.01;
  constexpr std::size_t fewest = 5;
  std::vector<double> times;
  rule_.gauss_quadrature();
  for (const double start = now(); times.size() < fewest || now() - start < budget;) {
    const double begun = now();
    call(method);
    times.push_back(now() - begun);
  }
  std::nth_element(times.begin(), times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2), times.end());
  return times[times.size() / 2];
}

Field library_field(const Geometry& geometry, const Fluid& fluid, const Points& points, int nodes, Method method) {
  return Computation(geometry, fluid, points, nodes).field(method);
}

}  // namespace kesto::validation
