// The rim of a spherical cap: the edge of its rim integral, in continuous waves and in time.
#pragma once

#include "fields/edge.h"
#include "transducers/cap/tables.h"

namespace kesto {

// n nodes theta with their cosines and weights.
struct CapRim {
  CapRim(const Cap& of, const CapRimTables& t) : cap(of), n(t.n), cosine(t.cosine.data()), weight(t.weight.data()) {}

  Cap cap;
  int n;
  const double *cosine, *weight;

  // The reference wave passes through the centre of curvature: beyond it a point is at roc plus its distance from the
  // centre, before it at roc less that distance.
  template <class T>
  KESTO_INLINE Double<T> reference_distance(const LocalPoints<T>& p) const {
    const Double<T> z = p.z - cap.roc, centre = sqrt<T>(p.x * p.x + p.y * p.y + z * z);
    return cap.roc + (z > 1e-10 ? centre : (z < -1e-10 ? -centre : Double<T>{}));
  }

  template <class T, class Visit>
  KESTO_INLINE void visit_parts(const LocalPoints<T>& p, const Visit& visit) const {
    const double a = cap.radius, d = cap.roc, h = cap.h;
    const Double<T> z = p.z - d, r2 = p.x * p.x + p.y * p.y, r = sqrt<T>(r2), z2 = z * z;
    const Double<T> a_z = a * z, r_h = r * h, cross = 2 * a * h * z * r, r2_d2 = r2 * (d * d), r2_a2 = r2 * (a * a);
    const Double<T> a2_z2 = a * a * z2, s = d * d + r2 + z2, a_r_2 = 2 * a * r, z_h_2 = 2 * z * h;
    visit(n, [cosine = cosine, weight = weight, a_z, r_h, cross, r2_d2, r2_a2, a2_z2, s, a_r_2, z_h_2](int i)
                 KESTO_INLINE_LAMBDA {
                   const double c = cosine[i];
                   const Double<T> denominator = cross * c + r2_d2 - r2_a2 * (c * c) + a2_z2;
                   return WaveTerms<T>{{weight[i] * ((r_h * c + a_z) / denominator)}, {sqrt<T>(s - a_r_2 * c + z_h_2)}};
                 });
  }

  int rays() const { return n; }
};

}  // namespace kesto
