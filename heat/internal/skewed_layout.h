// Where the solver keeps its points: rows cut into W lanes, every lane one row behind the lane before it.
//
// The plain loops relax a point from six neighbours. Three of them (i - 1, j - 1, k - 1) have just been relaxed, three
// (i + 1, j + 1, k + 1) have not. So points that are neighbours cannot share a vector; points on different rows can.
//
// Cut the n0 - 2 interior points of every row into W chunks of M = ceil((n0 - 2) / W). Lane l takes chunk l and lags l
// rows: vector m of skewed row y holds, in lane l, the point
//
//     i = 1 + l M + m,   j = y - l.          0 <= m < M,   1 <= y <= n1 - 2 + W - 1
//
// This is the first plane's interior for W = 4, M = 3, four rows of it; letters are rows, figures columns i:
//
//                 vector 0        vector 1        vector 2
//     row 1     a1  .   .   .   a2  .   .   .   a3  .   .   .
//     row 2     b1  a4  .   .   b2  a5  .   .   b3  a6  .   .
//     row 3     c1  b4  a7  .   c2  b5  a8  .   c3  b6  a9  .
//     row 4     d1  c4  b7  a10 d2  c5  b8  a11 d3  c6  b9  a12
//     row 5     .   d4  c7  b10 .   d5  c8  b11 .   d6  c9  b12   ...
//
// Relax these vectors from left to right and row after row. Then b4 comes in the row after b3 and a4, and before b5 and
// c4: every point finds relaxed what the plain loops would have relaxed, and nothing else, so that its value is theirs
// to the last bit.
//
// Moreover every neighbour is a whole, aligned vector: i +- 1 one vector away, j +- 1 one row, k +- 1 one plane. At a
// row's ends alone the lanes move by one. To the right of d3 c6 b9 a12 stand d4 c7 b10, found in vector 0 of the next
// row one lane further; to the left of d1 c4 b7 a10 stand c3 b6 a9, found in the last vector of the row before. What
// enters at the outermost lane is the boundary, 0.
//
// Lanes without an interior point (the dots, and i > n0 - 2) are dead. They hold +0 and so serve as the boundary to
// those that read them. One row of zeros stands between the planes and serves both.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace kesto {

constexpr int max_lanes = 8;

struct SkewedLayout {
  SkewedLayout(int lane_count, int n0, int n1, int n2)
      : lanes(lane_count),
        columns(n0 - 2),
        lines(n1 - 2),
        planes(n2 - 2),
        vectors((columns + lanes - 1) / lanes),
        rows(lines + lanes - 1),
        row(std::ptrdiff_t{lanes} * vectors),
        plane((rows + 1) * row + max_lanes),
        field((planes + 2) * plane + row),
        first_partial(std::min(live_vectors(lanes - 1), vectors - 1)) {
    for (int m = first_partial; m < vectors; ++m) {
      for (int l = 0; l < lanes; ++l) live_lanes[m - first_partial][l] = m < live_vectors(l) ? ~std::uint64_t{0} : 0;
    }
  }

  // In how many vectors of a row the lane has an interior column; the first ones.
  int live_vectors(int lane) const { return std::clamp(columns - lane * vectors, 0, vectors); }

  int lanes;                   // W
  int columns, lines, planes;  // interior points along i, j and k; planes 0 and planes + 1 are zero
  int vectors;                 // M, to a row
  int rows;                    // skewed rows that have live lanes, from 1 on; row 0 and row rows + 1 are zero
  std::ptrdiff_t row, plane;   // strides in doubles; a cache line more keeps planes from sharing its places
  std::ptrdiff_t field;        // all planes, in doubles

  // From this vector on there are lanes without a column; the last vector is counted among them in any case. All bits
  // of the live lanes are set. A row lacks fewer than W points, so these are W vectors at most.
  int first_partial;
  std::uint64_t live_lanes[max_lanes][max_lanes];
};

}  // namespace kesto
