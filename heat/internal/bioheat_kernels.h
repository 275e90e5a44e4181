// Relaxing one diagonal of a few k-planes, in every vector width.
#pragma once

#include <cstddef>

#include "core/vector_target.h"

namespace kesto {

// T <- T r + f (Sz az + (Sy ay + (Sx ax + source))), with S the sum of the two neighbours along an axis.
struct RelaxationWeights {
  double ax, ay, az, f, r;
};

// Offsets in doubles from the start of the plane.
struct DiagonalRun {
  std::ptrdiff_t own;       // the first interior point
  std::ptrdiff_t next;      // its neighbour (i, j + 1); (i + 1, j) follows
  std::ptrdiff_t previous;  // its neighbour (i, j - 1); (i - 1, j) stands before
  std::ptrdiff_t plane;     // to the same point of the next plane
  int length;               // interior points
  int planes;               // how many planes: this one, and those below it
};

// Updates the run in place, plane after plane. Layout of both arrays: planes in DiagonalOrder, source already divided
// by kappa.
//
// Vectors overlap the run's ends: up to eight values before the first and behind the last neighbour are read, and up to
// three points behind the run are written with what they hold. All lie inside the arrays, since there is a plane of
// nine points or more on either side. Sliding the neighbours along in registers instead of loading each twice gains 10
// to 20 %: the loop is bound by loads.
using RelaxDiagonals = void (*)(double* temperature_plane, const double* source_plane, const DiagonalRun& run,
                                const RelaxationWeights& weights);

RelaxDiagonals relax_diagonals(VectorTarget target);

}  // namespace kesto
