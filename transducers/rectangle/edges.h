// The four edges of a rectangle: the edge of its integral, in continuous waves and in time.
#pragma once

#include "fields/edge.h"
#include "transducers/rectangle/tables.h"

namespace kesto {

// The nodes along one pair of parallel edges: for whole edges, and on [0, 1] for the two parts of a split one.
struct EdgeNodes {
  const double *whole, *whole_weight, *t_squared, *t_weight;
};

// A pair of edges that a point's projection sees at distances D[0] and D[1] across, and whose ends lie at distances
// `ends` along.
template <class T>
struct EdgePair {
  Double<T> ends[2], d[2];
};

// The kinds of edge that points see: whether the foot of the perpendicular splits the edges along x, and those along y.
enum RectangleEdges : int { whole, split_along_x, split_along_y, split_along_both, kinds_of_edges };

inline int kind_of_edges(const RectangleNodes& t, const CartesianCoordinate& p) {
  return (is_split(t.a + p.x, t.a - p.x) ? split_along_x : whole) +
         (is_split(t.b - p.y, t.b + p.y) ? split_along_y : whole);
}

// Weights D / (D^2 + u^2), for u along the edge from the foot of the perpendicular.
template <int kind>
struct EdgesOfRectangle {
  explicit EdgesOfRectangle(const RectangleNodes& t)
      : a(t.a),
        b(t.b),
        n(t.n),
        along_x{t.x, t.x_weight, t.t_squared, t.t_weight},
        along_y{t.y, t.y_weight, t.t_squared, t.t_weight} {}

  double a, b;
  int n;
  EdgeNodes along_x, along_y;

  template <class T>
  KESTO_INLINE Double<T> reference_distance(const LocalPoints<T>& p) const {
    return p.z;
  }

  template <class T, class Visit>
  KESTO_INLINE void visit_parts(const LocalPoints<T>& p, const Visit& visit) const {
    const Double<T> d1 = a - p.x, d2 = b - p.y, d3 = a + p.x, d4 = b + p.y, z2 = p.z * p.z;
    visit_pair<(kind & split_along_x) != 0, T>(visit, along_x, EdgePair<T>{{d3, d1}, {d4, d2}}, p.x, z2);
    visit_pair<(kind & split_along_y) != 0, T>(visit, along_y, EdgePair<T>{{d2, d4}, {d3, d1}}, p.y, z2);
  }

  int rays() const { return ((kind & split_along_x) != 0 ? 4 : 2) * n + ((kind & split_along_y) != 0 ? 4 : 2) * n; }

 private:
  template <bool split, class T, class Visit>
  KESTO_INLINE void visit_pair(const Visit& visit, const EdgeNodes& nodes, const EdgePair<T>& pair, Double<T> foot,
                               Double<T> z2) const {
    const Double<T> d2[2] = {pair.d[0] * pair.d[0], pair.d[1] * pair.d[1]};
    const Double<T> z2_d2[2] = {z2 + d2[0], z2 + d2[1]};
    if constexpr (split) {
      const Double<T> end2[2] = {pair.ends[0] * pair.ends[0], pair.ends[1] * pair.ends[1]};
      const Double<T> area[2][2] = {{pair.ends[0] * pair.d[0], pair.ends[0] * pair.d[1]},
                                    {pair.ends[1] * pair.d[0], pair.ends[1] * pair.d[1]}};
      visit(n, [&](int i) KESTO_INLINE_LAMBDA {
        const Double<T> weight = broadcast<T>(nodes.t_weight[i]);
        const Double<T> u2[2] = {nodes.t_squared[i] * end2[0], nodes.t_squared[i] * end2[1]};
        return WaveTerms<T, 4>{{weight * area[0][0] / (d2[0] + u2[0]), weight * area[0][1] / (d2[1] + u2[0]),
                                weight * area[1][0] / (d2[0] + u2[1]), weight * area[1][1] / (d2[1] + u2[1])},
                               {sqrt<T>(z2_d2[0] + u2[0]), sqrt<T>(z2_d2[1] + u2[0]), sqrt<T>(z2_d2[0] + u2[1]),
                                sqrt<T>(z2_d2[1] + u2[1])}};
      });
    } else {
      visit(n, [&](int i) KESTO_INLINE_LAMBDA {
        const Double<T> weight = broadcast<T>(nodes.whole_weight[i]), u = nodes.whole[i] + foot, u2 = u * u;
        return WaveTerms<T, 2>{{weight * pair.d[0] / (d2[0] + u2), weight * pair.d[1] / (d2[1] + u2)},
                               {sqrt<T>(z2_d2[0] + u2), sqrt<T>(z2_d2[1] + u2)}};
      });
    }
  }
};

}  // namespace kesto
