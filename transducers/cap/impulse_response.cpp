// The impulse response of a spherical cap, and when it begins and ends.
#include <algorithm>
#include <cmath>

#include "fields/context.h"
#include "fields/traces.h"
#include "transducers/cap/tables.h"

namespace kesto {

namespace {

// A point as the sphere of the cap sees it, and when it hears which part (Penttinen & Luukkala 1976; Arditi, Foster &
// Hunt 1981).
struct CapPoint {
  CapPoint(const CartesianCoordinate& p, const Cap& from, double soundspeed)
      : cap(from),
        c(soundspeed),
        r(std::sqrt(p.x * p.x + p.y * p.y)),
        z(p.z - cap.roc),
        centre(std::sqrt(r * r + z * z)),
        through_centre((z > 0 ? cap.roc + centre : cap.roc - centre) / c),
        near_rim(std::sqrt((cap.radius - r) * (cap.radius - r) + (z + cap.h) * (z + cap.h)) / c),
        far_rim(std::sqrt((cap.radius + r) * (cap.radius + r) + (z + cap.h) * (z + cap.h)) / c),
        in_cone(r <= std::fabs(z) * (cap.radius / cap.h)) {}

  double begin() const { return in_cone && !(z > 0) ? through_centre : near_rim; }
  double end() const { return in_cone && z > 0 ? through_centre : far_rim; }

  double plateau() const { return c * cap.roc / centre; }

  // The sphere of radius c t about the point meets the cap's sphere in a circle, of which the cap holds an arc.
  double transition(double t) const {
    const double d = cap.roc, along = (centre * centre + d * d - t * t * c * c) / (2 * centre);
    const double squared = d * d - along * along, radius = squared < 0 ? 0 : std::sqrt(squared);
    const double u = (z * along + cap.h * centre) / r;
    return std::fabs(u) <= radius ? plateau() / pi * std::acos(u / radius) : 0;
  }

  double response(double t) const {
    if (r == 0) {
      const bool lit = z < 0 ? t >= through_centre && t <= near_rim : t >= far_rim && t <= through_centre;
      return z != 0 && lit ? plateau() : 0;
    }
    if (!in_cone) return t >= near_rim && t <= far_rim ? transition(t) : 0;
    if (z > 0) {
      if (t >= far_rim && t <= through_centre) return plateau();
      return t >= near_rim && t < far_rim ? transition(t) : 0;
    }
    if (t >= through_centre && t <= near_rim) return plateau();
    return t > near_rim && t <= far_rim ? transition(t) : 0;
  }

  Cap cap;
  double c;
  double r, z, centre;                       // m, about the centre of curvature
  double through_centre, near_rim, far_rim;  // s; the first by the line through the centre of curvature
  bool in_cone;                              // that line meets the cap
};

// All sound arrives at once: an impulse, one sample wide.
double response_at_centre(const Cap& cap, double c, const TimeAxis& axis, int k) {
  if (axis.times[k] - axis.time_delay != axis.time_delay + cap.roc / c) return 0;
  if (axis.samples == 1) return cap.depth / axis.times[0];
  const int before = k + 1 < axis.samples ? k : k - 1;
  return cap.depth / (axis.times[before + 1] - axis.times[before]);
}

}  // namespace

int CapTransducer::impulse_begin_and_end_times() {
  require_grid_and_medium(*this);
  const Cap cap(face().outer, face().roc);
  for_each_local_point(*this, [&](int i, const CartesianCoordinate& p) {
    const CapPoint point(p, cap, medium->_soundspeed);
    const double begin = point.begin() + time_delay, end = point.end() + time_delay;
    impulse_begin_time = i == 0 ? begin : std::min(impulse_begin_time, begin);
    impulse_end_time = i == 0 ? end : std::max(impulse_end_time, end);
  });
  return 0;
}

int CapTransducer::impulse_response() {
  if (is_silent(*this)) return 0;
  require_transient_output(*this);
  const TimeAxis axis(*this);
  const double c = medium->_soundspeed;
  for_each_cap(face(), [&](const Cap& cap, double sign) {
    superpose_traces(*this, axis.samples, [&](const CartesianCoordinate& p, double* trace) {
      const CapPoint point(p, cap, c);
      for (int k = 0; k < axis.samples; ++k) {
        const double h =
            point.centre == 0 ? response_at_centre(cap, c, axis, k) : point.response(axis.times[k] - axis.time_delay);
        trace[k] = sign * h * amplitude;
      }
    });
  });
  return 0;
}

}  // namespace kesto
