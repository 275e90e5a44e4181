// The solver below its choice of a way.
#pragma once

#include "core/vector_target.h"
#include "heat/bioheat_solver.h"

namespace kesto {

// In the lanes of this target. Three points or more along each dimension.
void solve_in_lanes(VectorTarget target, const BioheatProblem& problem, const double* pressure_real,
                    const double* pressure_imag, double* temperature);

// How many lanes take the fewest cycles a sweep on targets up to `widest`: thin grids leave most of a wide target's
// dead, and the thinnest go by the plain loops, which are 1 then.
int fastest_lanes(const BioheatProblem& problem, VectorTarget widest);

}  // namespace kesto
