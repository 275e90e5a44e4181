// A rectangle's edges in single precision.
#pragma once

#include "core/coordinate_grid.h"
#include "transducers/rectangle/tables.h"

namespace kesto {

// The distances of a point's projection from the lines of the four edges, and its height.
struct FloatPoint {
  FloatPoint(const CartesianCoordinate& p, const RectangleNodes& t)
      : x(static_cast<float>(p.x)), y(static_cast<float>(p.y)), z(static_cast<float>(p.z)), z2(z * z) {
    const float a = static_cast<float>(t.a), b = static_cast<float>(t.b);
    d1 = a - x, d2 = b - y, d3 = a + x, d4 = b + y;
  }
  float x, y, z, z2, d1, d2, d3, d4;
};

// One of the two pairs of parallel edges: their distances across, the distances of their ends along, and the nodes.
struct FloatEdgePair {
  float ends[2], d[2], foot;
  const double *whole, *whole_weight;
  bool split() const { return is_split(ends[0], ends[1]); }
};

// Calls add for either pair, that along x first.
template <class Add>
void for_each_pair(const FloatPoint& p, const RectangleNodes& t, Add add) {
  add(FloatEdgePair{{p.d3, p.d1}, {p.d4, p.d2}, p.x, t.x, t.x_weight});
  add(FloatEdgePair{{p.d2, p.d4}, {p.d3, p.d1}, p.y, t.y, t.y_weight});
}

}  // namespace kesto
