// A computation of the library's, with all that it needs.
#pragma once

#include <memory>
#include <vector>

#include "core/coordinate_grid.h"
#include "core/medium.h"
#include "core/numerical_integration.h"
#include "core/transducer.h"
#include "validation/geometries.h"

namespace kesto::validation {

using Method = int (Transducer::*)();

// Weighted by 0.04 m/s at 0.3 rad, so that a weight left out or conjugated shows; fields are those of a velocity of 1.
class Computation {
 public:
  Computation(const Geometry& geometry, const Fluid& fluid, const Points& points, int nodes);

  // Throws when the geometry does not offer the method.
  Field field(Method method);

  // Processor time of a call (s), the mean of as many as fill a millisecond.
  double seconds(Method method);

 private:
  void call(Method method);

  std::unique_ptr<Transducer> element_;
  Medium medium_;
  CoordinateGrid grid_;
  NumericalIntegration rule_;
  std::vector<double> real_, imag_;
};

Field library_field(const Geometry& geometry, const Fluid& fluid, const Points& points, int nodes, Method method);

}  // namespace kesto::validation
