#include "transducers/triangle_transducer.h"

#include "fields/context.h"
#include "fields/point_road.h"

int TriangleTransducer::fnm_cw() {
  kesto::frequency_of_wavelength(kesto::medium_of(*this));
  kesto::require_grid_and_rule(*this);
  InitializeRotationMatrix();
  debug(2);
  kesto::for_each_local_point(*this, [](int, const CartesianCoordinate&) {});
  return 0;
}
