// In which order the sweeps visit the rows of the skewed layout.
#pragma once

#include "core/vector_target.h"
#include "heat/internal/relaxation.h"
#include "heat/internal/skewed_layout.h"

namespace kesto {

// Makes `sweeps` sweeps over `temperature`, in place. `source` is the heat source over kappa. Each field has
// layout.field doubles, begins on a boundary of W doubles and lies in the same block as the other. All of the
// temperature must be +0 at first; dead lanes of the source may hold anything.
void sweep(const SkewedLayout& layout, const RelaxationWeights& weights, int sweeps, VectorTarget target,
           double* temperature, const double* source);

}  // namespace kesto
