// Relaxing rows of the skewed layout, in every vector width.
#pragma once

#include <cstddef>

#include "core/lanes/lanes.h"
#include "core/vector_target.h"
#include "heat/internal/skewed_layout.h"

namespace kesto {

// T <- T r + f (Sz az + (Sy ay + (Sx ax + source))), with S the sum of the two neighbours along an axis.
struct RelaxationWeights {
  double ax, ay, az, f, r;
};

// Of numbers or of vectors. The sums keep the order of the plain loop, plus side first: the result is promised to the
// bit.
template <class V>
KESTO_INLINE V relaxed(V own, V i_plus, V i_minus, V j_plus, V j_minus, V k_plus, V k_minus, V source,
                       const RelaxationWeights& w) {
  const V sx = i_plus + i_minus, sy = j_plus + j_minus, sz = k_plus + k_minus;
  return own * w.r + w.f * (sz * w.az + (sy * w.ay + (sx * w.ax + source)));
}

// A row is one long chain: each vector waits for the one before it, five additions and two multiplications. So several
// rows that do not depend on each other take turns, a vector each. Six fill the time; more would want more registers.
constexpr int max_turns = 6;

// Rows y, y + 1, ... of one plane for the first turn; each further turn works one row behind, in a plane of its own.
struct RowRun {
  double* start;             // vector 0 of the first turn's first row, on a boundary of W doubles
  int y;                     // that row
  int rows;                  // the same number for every turn
  std::ptrdiff_t next_turn;  // from a turn's place to that of the next one
  std::ptrdiff_t source;     // from a temperature to the heat source of its point, over kappa
  std::ptrdiff_t ahead;      // from the first turn's place to what the caches are to fetch meanwhile
};

// Updates in place.
using RelaxRows = void (*)(const SkewedLayout& layout, const RelaxationWeights& weights, const RowRun& run);

RelaxRows relax_rows(VectorTarget target, int turns);

}  // namespace kesto
