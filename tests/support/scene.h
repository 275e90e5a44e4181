// An element, what stands around it, and one computation: what tests and fuzz targets wire by this alone.
#pragma once

#include <algorithm>
#include <cmath>
#include <complex>
#include <functional>
#include <memory>
#include <vector>

#include "core/medium.h"
#include "core/numerical_integration.h"
#include "host/embedded_host.h"
#include "tests/support/targets.h"
#include "transducers/circular_transducer.h"
#include "transducers/rectangular_transducer.h"
#include "transducers/ring_transducer.h"
#include "transducers/spherical_ring_transducer.h"
#include "transducers/spherical_transducer.h"

namespace scenes {

using kesto::at_every_width;

using Point = CartesianCoordinate;
using Points = std::vector<Point>;
using Complex = std::complex<double>;
using Computation = int (Transducer::*)();

enum class Shape { disc, ring, rectangle, shell, shell_ring };
constexpr Shape all_shapes[] = {Shape::disc, Shape::ring, Shape::rectangle, Shape::shell, Shape::shell_ring};
constexpr const char* shape_names[] = {"disc", "ring", "rectangle", "shell", "shell_ring"};
inline const char* name_of(Shape shape) { return shape_names[static_cast<int>(shape)]; }

struct Element {
  Shape shape;
  double outer, inner, roc, height;  // m; inner 0 for none; a rectangle's sides are 2 outer and 2 height
  std::unique_ptr<Transducer> face = {};

  bool is_flat() const { return shape != Shape::shell && shape != Shape::shell_ring; }
  bool has_hole() const { return inner > 0; }
};

inline Element make_element(Shape shape, double outer, double inner, double roc, double height) {
  Element e = {shape, outer, shape == Shape::ring || shape == Shape::shell_ring ? inner : 0, roc, height};
  switch (shape) {
    case Shape::disc: e.face = std::make_unique<CircularTransducer>(outer); break;
    case Shape::ring: e.face = std::make_unique<RingTransducer>(inner, outer); break;
    case Shape::rectangle: e.face = std::make_unique<RectangularTransducer>(2 * outer, 2 * height); break;
    case Shape::shell: e.face = std::make_unique<SphericalTransducer>(outer, roc); break;
    default: e.face = std::make_unique<SphericalRingTransducer>(inner, outer, roc);
  }
  e.face->set_amplitude(1.5), e.face->set_phase(0.7);
  return e;
}

// About 8 mm across.
inline Element usual_element(Shape shape) {
  return make_element(shape, shape == Shape::rectangle ? 3e-3 : 4e-3, 1.5e-3, 9e-3, 2.5e-3);
}

inline Medium water(double f0 = 1e6, double attenuation = 0) {
  Medium m;
  m._f0 = f0, m._soundspeed = 1500, m._rho_density = 1000, m._dBcmMHz = attenuation;
  return m;
}

struct Scene {
  Medium medium = water();
  Points points;
  std::vector<double> box;  // from and to of x, y and z and their steps, in place of the points
  int nodes = 16;           // 0 for a rule without any
  double tmin = 0, tmax = 0, deltat = 0;
  std::vector<double> times;  // in place of equal steps; with a deltat, of a vector that claims it
  ExcitationFunction* pulse = nullptr;
  double delay = 0;

  bool is_transient() const { return deltat != 0 || !times.empty(); }

  void fill(CoordinateGrid& grid) const {
    if (!box.empty()) {
      grid.RegularCoordinateGrid(box[0], box[1], box[2], box[3], box[4], box[5], box[6], box[7], box[8]);
      return;
    }
    std::vector<double> columns;
    for (const auto member : {&Point::x, &Point::y, &Point::z}) {
      for (const Point& p : points) columns.push_back(p.*member);
    }
    grid.CoordinateGridVector(columns.data(), static_cast<int>(points.size()));
  }
  void fill(TimeSamples& time) const {
    if (deltat != 0) time.generatetimevectorfromminmaxdeltat(deltat, tmin, tmax);
    if (deltat == 0) time.vectoroftimevalues(times.data(), static_cast<int>(times.size()));
    if (deltat != 0) std::copy_n(times.begin(), times.size(), time.time_values);
  }
};

struct Outcome {
  kesto::host::Report report;
  int answer = -1;
  Points local;                // the points in the element's own coordinates
  std::vector<double> values;  // all real parts, then all imaginary ones; or the traces, point by point at each time

  Complex pressure(std::size_t i) const { return {values[i], values[local.size() + i]}; }
  std::vector<double> trace(std::size_t i) const {
    std::vector<double> samples;
    for (std::size_t at = i; at < values.size(); at += local.size()) samples.push_back(values[at]);
    return samples;
  }
};

// The buffers start at `background`, so that a point left alone shows.
inline Outcome run(const Scene& scene, Transducer& t, const std::function<int(Transducer&)>& compute,
                   double background = 0) {
  Outcome out;
  out.report = kesto::host::guarded([&] {
    CoordinateGrid grid;
    scene.fill(grid);
    NumericalIntegration rule;
    if (scene.nodes > 0) rule.allocate_memory(scene.nodes);
    rule.gauss_quadrature();
    TimeSamples time;
    if (scene.is_transient()) scene.fill(time);
    Medium medium = scene.medium;
    const auto points = static_cast<std::size_t>(grid.npoints);
    const std::size_t per_point = scene.is_transient() ? static_cast<std::size_t>(time.nt) : 2;
    out.values.assign(points * per_point, background);
    t.set_medium(&medium), t.set_global_coordinate_grid(&grid), t.set_integral_pointer(&rule);
    t.excitation = scene.pulse;
    if (scene.is_transient()) {
      t.set_time_vector(&time), t.set_time_delay(scene.delay);
      t.set_transient_pressure_pointer(out.values.data());
    } else {
      t.set_complex_pressure_pointers(out.values.data(), out.values.data() + points);
    }
    t.InitializeRotationMatrix();
    grid.for_each_point([&](int, const Point& p) { out.local.push_back(t.Transducer::rotateTranslate(p)); });
    out.answer = compute(t);
  });
  return out;
}

}  // namespace scenes
