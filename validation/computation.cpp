#include "validation/computation.h"

#include <time.h>

#include <algorithm>
#include <cstddef>
#include <stdexcept>

namespace kesto::validation {

namespace {

constexpr double amplitude = 0.04, phase = 0.3;

// Not the time of day: other programs on the machine would have their part in it.
double processor_time() {
  timespec t;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

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
  rule_.gauss_quadrature();
  const double begun = processor_time();
  double calls = 0, elapsed = 0;
  while (elapsed < 1e-3) {
    call(method);
    ++calls;
    elapsed = processor_time() - begun;
  }
  return elapsed / calls;
}

Field library_field(const Geometry& geometry, const Fluid& fluid, const Points& points, int nodes, Method method) {
  return Computation(geometry, fluid, points, nodes).field(method);
}

}  // namespace kesto::validation
