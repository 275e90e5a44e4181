// The impulse response of a rectangle, and when it begins and ends.
#include <algorithm>
#include <cmath>
#include <limits>

#include "core/constants.h"
#include "core/medium.h"
#include "fields/context.h"
#include "fields/traces.h"
#include "transducers/rectangle/arrivals.h"
#include "transducers/rectangular_transducer.h"

namespace kesto {

namespace {

// The circle of radius sigma about a corner, within the rectangle that extends from it by A and B: the angle of its arc
// (Lockwood & Willette 1973; Emeterio & Ullate 1992).
double angle_from_corner(double sigma, double A, double B) {
  if (!(sigma * sigma <= A * A + B * B)) return 0;
  // acos(side / sigma), without its loss of digits where the circle has just passed the side.
  const auto beyond = [sigma](double side) {
    return sigma > side ? std::atan2(std::sqrt((sigma - side) * (sigma + side)), side) : 0;
  };
  return pi / 2 - beyond(A) - beyond(B);
}

// Four corner rectangles about the point's projection, signed by the side of the projection that they lie on. A corner
// on an edge spans none.
double angle_on_rectangle(double sigma, double a, double b, const CartesianCoordinate& p) {
  double sum = 0;
  for (const double A : {a - p.x, a + p.x}) {
    for (const double B : {b - p.y, b + p.y}) {
      if (A == 0 || B == 0) continue;
      const double angle = angle_from_corner(sigma, std::fabs(A), std::fabs(B));
      sum += (A > 0) == (B > 0) ? angle : -angle;
    }
  }
  return sum;
}

}  // namespace

}  // namespace kesto

using namespace kesto;

int RectangularTransducer::impulse_begin_and_end_times() {
  require_grid_and_medium(*this);
  const double a = width * 0.5, b = height * 0.5, c = medium->_soundspeed;
  impulse_begin_time = std::numeric_limits<double>::max();
  impulse_end_time = 0;
  for_each_local_point(*this, [&](int, const CartesianCoordinate& p) {
    const Arrivals arrivals = rectangle_arrivals(a, b, c, p);
    impulse_begin_time = std::min(impulse_begin_time, arrivals.first + time_delay);
    impulse_end_time = std::max(impulse_end_time, arrivals.last + time_delay);
  });
  return 0;
}

int RectangularTransducer::impulse_response() {
  require_transient_output(*this);
  const TimeAxis axis(*this);
  const double a = width * 0.5, b = height * 0.5, c = medium->_soundspeed;
  superpose_traces(*this, axis.samples, [&](const CartesianCoordinate& p, double* trace) {
    std::fill_n(trace, axis.samples, 0.0);
    if (!is_in_front(p)) return;
    const Arrivals arrivals = rectangle_arrivals(a, b, c, p);
    for (int k = 0; k < axis.samples; ++k) {
      const double t = axis.times[k] - axis.time_delay;
      if (!(t >= arrivals.first && t <= arrivals.last)) continue;
      const double sigma = std::sqrt(std::max((c * t - p.z) * (c * t + p.z), 0.0));
      trace[k] = c / two_pi * angle_on_rectangle(sigma, a, b, p) * amplitude;
    }
  });
  return 0;
}
