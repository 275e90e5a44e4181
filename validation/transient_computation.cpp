#include "validation/transient_computation.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <stdexcept>

#include "host/embedded_host.h"

namespace kesto::validation {

namespace {

constexpr double amplitude = 0.04, phase = 0.3;

}  // namespace

Times Sampling::times() const {
  Times times;
  for (int k = 0; k < count; ++k) times.push_back(at(k));
  return times;
}

TransientComputation::TransientComputation(const Geometry& geometry, const Points& points, double delay)
    : element_(geometry.make(amplitude, phase)), delay_(delay) {
  medium_._f0 = water.frequency;
  medium_._soundspeed = water.soundspeed;
  medium_._rho_density = water.density;
  std::vector<double> columns;
  for (const auto member : {&Point::x, &Point::y, &Point::z}) {
    for (const Point& p : points) columns.push_back(p.*member);
  }
  grid_.CoordinateGridVector(columns.data(), static_cast<int>(points.size()));
  element_->set_medium(&medium_);
  element_->set_global_coordinate_grid(&grid_);
  element_->set_integral_pointer(&rule_);
  element_->set_time_vector(&time_);
  element_->set_time_delay(delay_);
}

void TransientComputation::sample(const Sampling& sampling) {
  // Half a step more than the last sample: the count then does not hang on rounding.
  const double last = sampling.at(sampling.count - 1) + sampling.step / 2;
  time_.generatetimevectorfromminmaxdeltat(sampling.step, sampling.first + delay_, last + delay_);
  if (time_.nt != sampling.count) throw std::logic_error("not the samples that were asked for");
}

void TransientComputation::sample_at(Times times) {
  for (double& t : times) t += delay_;
  // Inside a call, so that the values that it prints stay in the report.
  host::guarded([&] { time_.vectoroftimevalues(times.data(), static_cast<int>(times.size())); });
}

Traces TransientComputation::traces(Method method) {
  const auto points = static_cast<std::size_t>(grid_.npoints), samples = static_cast<std::size_t>(time_.nt);
  std::vector<double> buffer(points * samples);
  element_->set_transient_pressure_pointer(buffer.data());
  if ((*element_.*method)() != 0) throw std::logic_error("the geometry does not offer the method");
  Traces traces(points);
  for (std::size_t i = 0; i < points; ++i) {
    for (std::size_t k = 0; k < samples; ++k) traces[i].push_back(buffer[i + k * points] / amplitude);
  }
  return traces;
}

Traces TransientComputation::traces(Method method, const ExcitationFunction& signal, int nodes) {
  rule_.allocate_memory(nodes);
  rule_.gauss_quadrature();
  element_->excitation = const_cast<ExcitationFunction*>(&signal);  // which computations only read
  return traces(method);
}

Traces library_traces(const Geometry& geometry, const Points& points, const Sampling& sampling, Method method,
                      const ExcitationFunction& signal, int nodes) {
  TransientComputation computation(geometry, points);
  computation.sample(sampling);
  return computation.traces(method, signal, nodes);
}

double largest(const Trace& trace) {
  double value = 0;
  for (const double p : trace) {
    if (std::isnan(p)) return std::numeric_limits<double>::quiet_NaN();
    value = std::max(value, std::abs(p));
  }
  return value;
}

double error_of(const Traces& traces, const Traces& references) {
  if (traces.size() != references.size() || traces.empty()) throw std::logic_error("different numbers of traces");
  double worst = 0;
  for (std::size_t i = 0; i < traces.size(); ++i) {
    if (traces[i].size() != references[i].size()) throw std::logic_error("traces of different lengths");
    Trace difference;
    for (std::size_t k = 0; k < traces[i].size(); ++k) difference.push_back(traces[i][k] - references[i][k]);
    const double error = largest(difference) / largest(references[i]);
    if (!(error <= worst)) worst = error;
    if (std::isnan(worst)) return worst;
  }
  return worst;
}

}  // namespace kesto::validation
