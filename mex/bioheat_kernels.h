// Relaxing one diagonal of one k-plane, in every vector width.
#pragma once

#include <cstddef>

#include "core/kernels/vector_target.h"

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
};

// Updates `length` points in place. Layout of both arrays: planes in DiagonalOrder, source already divided by kappa.
//
// The last vector of a run reaches up to three points beyond it and puts their old values back. These lie inside the
// arrays: after the last interior point of a plane come four boundary points, and after the plane another one.
using RelaxDiagonal = void (*)(double* temperature_plane, const double* source_plane, const DiagonalRun& run,
                               const RelaxationWeights& weights);

RelaxDiagonal relax_diagonal(VectorTarget target);

}  // namespace kesto
