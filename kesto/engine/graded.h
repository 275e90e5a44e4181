// Points next to a rim or an edge, one at a time: Gauss rules on panels that shrink towards the singularities.
#pragma once

#include <complex>

#include "kesto/engine/rules.h"

namespace kesto {

using Complex = std::complex<double>;

struct TileSum;

// G of one point, in the notation of the shape's tile; to rounding. Lengths in units of 1/k. `sum` counts.
Complex graded_disc(double a, double r, double beyond_rim, double z, double loss, Rules& gauss, TileSum& sum);

struct BowlPoint;
Complex graded_bowl(double a, double d, const BowlPoint& point, double loss, Rules& gauss, TileSum& sum);

// Of one edge: D from the point's projection, which sees it from u0 to u1.
Complex graded_edge(double d, double u0, double u1, double z, double loss, Rules& gauss, TileSum& sum);

}  // namespace kesto
