// The rim of a disc: the edge of its rim integral, in continuous waves and in time.
#pragma once

#include "fields/edge.h"
#include "transducers/disc/tables.h"

namespace kesto {

// n nodes psi with their cosines, 2 a times these, and weights.
struct DiscRim {
  explicit DiscRim(const DiscRimTables& t)
      : radius(t.radius), n(t.n), cosine(t.cosine.data()), cosine_2a(t.cosine_2a.data()), weight(t.weight.data()) {}

  double radius;  // a, m
  int n;
  const double *cosine, *cosine_2a, *weight;

  template <class T>
  KESTO_INLINE Double<T> reference_distance(const LocalPoints<T>& p) const {
    return p.z;
  }

  // Weights (r cos psi - a) / (r^2 + a^2 - 2 a r cos psi).
  template <class T, class Visit>
  KESTO_INLINE void visit_parts(const LocalPoints<T>& p, const Visit& visit) const {
    const Double<T> r2 = p.x * p.x + p.y * p.y, r = sqrt<T>(r2), z2 = p.z * p.z, s = r2 + radius * radius;
    visit(n, [rim = *this, r, z2, s](int i) KESTO_INLINE_LAMBDA {
      const Double<T> d = s - rim.cosine_2a[i] * r;
      return WaveTerms<T>{{rim.weight[i] * ((rim.cosine[i] * r - rim.radius) / d)}, {sqrt<T>(z2 + d)}};
    });
  }

  int rays() const { return n; }
};

}  // namespace kesto
