// The integrand of a disc's rim integral.
#pragma once

#include "fields/wave_sum.h"

namespace kesto {

// n nodes psi with their cosines, 2 a times these, and weights.
struct RimOfDisc {
  double radius;  // a, m
  int n;
  const double *cosine, *cosine_2a, *weight;

  // Of the wave that every term is less.
  template <class T>
  KESTO_INLINE Double<T> reference_distance(const LocalPoints<T>& p) const {
    return p.z;
  }

  // i -> weight (r cos psi - a) / (r^2 + a^2 - 2 a r cos psi), and the distance from the rim there.
  template <class T>
  KESTO_INLINE auto terms(const LocalPoints<T>& p) const {
    const Double<T> r2 = p.x * p.x + p.y * p.y, r = sqrt<T>(r2), z2 = p.z * p.z, s = r2 + radius * radius;
    return [rim = *this, r, z2, s](int i) KESTO_INLINE_LAMBDA {
      const Double<T> d = s - rim.cosine_2a[i] * r;
      return WaveTerms<T>{{rim.weight[i] * ((rim.cosine[i] * r - rim.radius) / d)}, {sqrt<T>(z2 + d)}};
    };
  }

  template <class Sum>
  KESTO_INLINE void add_terms(Sum& sum, const LocalPoints<typename Sum::T>& p) const {
    sum.subtract_wave_at(reference_distance<typename Sum::T>(p));
    sum.add(n, terms<typename Sum::T>(p));
  }
};

}  // namespace kesto
