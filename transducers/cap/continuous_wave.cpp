// The continuous-wave fields of a spherical cap in double precision.
#include "core/constants.h"
#include "fields/context.h"
#include "fields/midpoints.h"
#include "fields/point_road.h"
#include "transducers/cap/rim.h"
#include "transducers/cap/tables.h"

namespace kesto {

namespace {

// The Rayleigh integral: n meridians phi of n cells theta each.
struct CellsOfCap {
  double roc;
  int n;
  const double *cosine_phi, *sine, *cosine, *area;  // of theta; the area of a cell and its mirror image

  template <class Sum>
  KESTO_INLINE void add_terms(Sum& sum, const LocalPoints<typename Sum::Target>& p) const {
    using T = typename Sum::Target;
    const double d = roc;
    const Double<T> z = p.z - d, s = p.x * p.x + p.y * p.y + z * z;
    for (int meridian = 0; meridian < n; ++meridian) {
      const double d_cosine_phi = d * cosine_phi[meridian];
      sum.add(n, [&](int i) KESTO_INLINE_LAMBDA {
        const Double<T> distance = sqrt<T>(s - 2 * (d_cosine_phi * sine[i] * p.x - d * cosine[i] * z) + d * d);
        return WaveTerms<T>{{area[i] / distance}, {distance}};
      });
    }
  }
};

}  // namespace

int CapTransducer::fnm_cw() {
  const Wave wave = wave_or_default(medium_of(*this));
  if (is_silent(*this)) return 0;
  require_complex_output(*this);
  const CapRimTables tables(*integral);
  for_each_cap(face(), [&](const Cap& cap, double sign) {
    const Complex weight = sign * complex_weight;
    const EdgeIntegral<CapRim> rim = {{cap, tables}};
    const Complex at_focus = focal_value(cap, *medium, wave) * weight;
    superpose_sums(
        *this, {{rim, wave, 2 * cap.roc}}, cap_rim_factor(cap, *medium) * weight,
        [&](const CartesianCoordinate& p) { return cap.is_behind(p)  ? no_field
                                                   : cap.is_focus(p) ? special_point
                                                                     : 0; },
        [&](const CartesianCoordinate&) { return at_focus; });
  });
  return 0;
}

int CapTransducer::rayleigh_cw() {
  const Wave wave = stored_wave(medium_of(*this));
  if (is_silent(*this)) return 0;
  require_complex_output(*this);
  const int n = integral->get_npoints();
  const ScratchArray<double> cosine_phi(n);
  fill_cosines_of_midpoints(cosine_phi, n, pi);
  for_each_cap(face(), [&](const Cap& cap, double sign) {
    const CapRingTables rings(cap, n);
    const CellsOfCap cells = {cap.roc, n, cosine_phi.data(), rings.sine.data(), rings.cosine.data(), rings.area.data()};
    const Complex factor = cap_rayleigh_factor(*medium, sign * complex_weight);
    superpose_sums(
        *this, {{cells, wave, 2 * cap.roc}}, factor,
        [&](const CartesianCoordinate& p) { return cap.is_behind(p) ? no_field
                                                   : is_apex(p)     ? special_point
                                                                    : 0; },
        [&](const CartesianCoordinate&) { return apex_sum(cap) * factor; });
  });
  return 0;
}

}  // namespace kesto
