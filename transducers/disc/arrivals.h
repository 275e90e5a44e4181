// When a point hears which part of a disc.
#pragma once

#include <cmath>

#include "core/coordinate_grid.h"

namespace kesto {

// Travel times between a point, r from the axis and z over the face, and the disc of radius a.
struct DiscArrivals {
  DiscArrivals(const CartesianCoordinate& p, double a, double c)
      : r(std::sqrt(p.x * p.x + p.y * p.y)),
        axial(p.z / c),
        near_rim(std::sqrt((r - a) * (r - a) + p.z * p.z) / c),
        far_rim(std::sqrt(p.z * p.z + (r + a) * (r + a)) / c),
        first(r <= a ? axial : near_rim) {}
  double r;      // m
  double axial;  // s, signed as z is
  double near_rim, far_rim, first;
};

}  // namespace kesto
