// A point that scatters.
#pragma once

#include "core/coordinate_grid.h"

class Scatterer {
 public:
  Scatterer() = default;
  Scatterer(CartesianCoordinate at, double strength) : position(at), amplitude(strength) {}

  CartesianCoordinate position;
  double amplitude = 0;
};
