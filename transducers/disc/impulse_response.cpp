// The impulse response of a disc, and when it begins and ends.
#include <algorithm>
#include <cmath>

#include "core/constants.h"
#include "fields/context.h"
#include "fields/traces.h"
#include "transducers/disc/arrivals.h"
#include "transducers/disc/tables.h"

namespace kesto {

namespace {

// The velocity potential at a point, at distance r from the axis and height z, of a disc of radius a that starts to
// move with unit velocity at t = 0: c over pi times half the angle of the arc in which the sphere of radius c t about
// the point cuts the disc (Oberhettinger 1961; Stepanishen 1971).
struct DiscResponse {
  double a, c, r, z;

  // Where the sphere meets the rim.
  double arc(double t) const {
    const double in_plane = c * c * t * t - z * z;  // squared radius of the cut
    const double numerator = r * r + in_plane - a * a;
    const double denominator = in_plane > 0 ? std::sqrt(in_plane) * (2 * r) : 0;
    return std::fabs(numerator) <= denominator ? std::acos(numerator / denominator) * c / pi : 0;
  }

  double at(double t, const DiscArrivals& arrivals) const {
    if (r > a) return t >= arrivals.near_rim && t <= arrivals.far_rim ? arc(t) : 0;
    if (r == a && r != 0) {
      if (!(t >= arrivals.axial && t <= arrivals.far_rim)) return 0;
      const double sphere = c * c * t * t;
      return sphere == z * z ? c : sphere > z * z ? arc(t) : 0;
    }
    // The sphere lies within the disc until it meets the near rim; on the axis the whole rim is met at once.
    if (t >= arrivals.axial && t <= arrivals.near_rim) return c;
    return r != 0 && t > arrivals.near_rim && t <= arrivals.far_rim ? arc(t) : 0;
  }
};

}  // namespace

int DiscTransducer::impulse_begin_and_end_times() {
  require_grid_and_medium(*this);
  const double c = medium->_soundspeed, a = face().outer;
  for_each_local_point(*this, [&](int i, const CartesianCoordinate& p) {
    const DiscArrivals arrivals(p, a, c);
    const double begin = arrivals.first + time_delay, end = arrivals.far_rim + time_delay;
    impulse_begin_time = i == 0 ? begin : std::min(impulse_begin_time, begin);
    impulse_end_time = i == 0 ? end : std::max(impulse_end_time, end);
  });
  return 0;
}

int DiscTransducer::impulse_response() {
  require_transient_output(*this);
  const TimeAxis axis(*this);
  const double c = medium->_soundspeed;
  for_each_disc(face(), [&](double a, double sign) {
    superpose_traces(*this, axis.samples, [&](const CartesianCoordinate& p, double* trace) {
      const DiscArrivals arrivals(p, a, c);
      const DiscResponse response = {a, c, arrivals.r, p.z};
      for (int k = 0; k < axis.samples; ++k) {
        trace[k] = sign * response.at(axis.times[k] - axis.time_delay, arrivals) * amplitude;
      }
    });
  });
  return 0;
}

}  // namespace kesto
