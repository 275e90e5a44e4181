// When the sound of a rectangle's face arrives at a point.
#pragma once

#include <cmath>

#include "core/coordinate_grid.h"
#include "fields/rays.h"

namespace kesto {

// Of the nearest point of the face and of its farthest corner, for half sides a and b. A projection on an edge is over
// the face.
inline Arrivals rectangle_arrivals(double a, double b, double soundspeed, const CartesianCoordinate& p) {
  const double x = std::fabs(p.x), y = std::fabs(p.y);
  const double beside_x = x > a ? x - a : 0, beside_y = y > b ? y - b : 0;  // the projection from the face
  const double nearest = std::sqrt(beside_y * beside_y + p.z * p.z + beside_x * beside_x);
  const double farthest = std::sqrt((y + b) * (y + b) + p.z * p.z + (x + a) * (x + a));
  return {nearest / soundspeed, farthest / soundspeed};
}

}  // namespace kesto
