// When a rectangle's impulse response begins and ends.
#include <algorithm>
#include <cmath>
#include <limits>

#include "core/medium.h"
#include "fields/context.h"
#include "fields/point_road.h"
#include "transducers/rectangular_transducer.h"

using namespace kesto;

int RectangularTransducer::impulse_begin_and_end_times() {
  require_grid_and_medium(*this);
  const double a = width * 0.5, b = height * 0.5, c = medium->_soundspeed;
  impulse_begin_time = std::numeric_limits<double>::max();
  impulse_end_time = 0;
  for_each_local_point(*this, [&](int, const CartesianCoordinate& p) {
    const double x = std::fabs(p.x), y = std::fabs(p.y);
    const double beside_x = x > a ? x - a : 0, beside_y = y > b ? y - b : 0;  // the projection from the face
    const double nearest = std::sqrt(beside_y * beside_y + p.z * p.z + beside_x * beside_x);
    const double farthest = std::sqrt((y + b) * (y + b) + p.z * p.z + (x + a) * (x + a));
    impulse_begin_time = std::min(impulse_begin_time, nearest / c + time_delay);
    impulse_end_time = std::max(impulse_end_time, farthest / c + time_delay);
  });
  return 0;
}
