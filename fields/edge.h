// Integrals along the edge of a face, the fast nearest method: what a rim and the sides of a rectangle have in common.
//
// An edge is a struct of tables with
//
//   template <class T>
//   KESTO_INLINE Double<T> reference_distance(const LocalPoints<T>& p) const;   m
//   template <class T, class Visit>
//   KESTO_INLINE void visit_parts(const LocalPoints<T>& p, const Visit& visit) const;
//   int rays() const;                                                           terms at a point, of all parts
//
// The reference wave, at reference_distance, is subtracted from every term of the integral. visit_parts calls visit(n,
// node) for each part of the edge; node(i) gives the WaveTerms of its node i: weights, and distances (m) from the
// points.
#pragma once

#include "fields/wave_sum.h"

namespace kesto {

// The continuous-wave integral: sum of weight [E(distance) - E(reference distance)].
template <class Edge>
struct EdgeIntegral {
  Edge edge;

  template <class Sum>
  KESTO_INLINE void add_terms(Sum& sum, const LocalPoints<typename Sum::Target>& p) const {
    using T = typename Sum::Target;
    sum.subtract_wave_at(edge.template reference_distance<T>(p));
    edge.template visit_parts<T>(p, [&](int n, const auto& node) KESTO_INLINE_LAMBDA { sum.add(n, node); });
  }
};

}  // namespace kesto
