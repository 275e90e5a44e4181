#include <cmath>
#include <complex>

#include "core/internal/host.h"
#include "fields/point_road.h"
#include "transducers/cap/cap.h"
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
  KESTO_INLINE void add_terms(Sum& sum, const LocalPoints<typename Sum::T>& p) const {
    using T = typename Sum::T;
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

int cap_fnm_cw(Transducer& element, CapFace face) {
  const Medium& medium = medium_of(element);
  const Wave wave = wave_or_default(medium);
  if (is_silent(element)) return 0;
  require_complex_output(element);
  const CapRimTables tables(*element.integral);
  for_each_cap(element, face, [&](const Cap& cap, Complex weight) {
    const RimOfCap rim = {cap, tables.n, tables.cosine.data(), tables.weight.data()};
    const PointKernel kernels[] = {{rim, wave, 2 * cap.roc, chosen_vector_target()}};
    const Complex at_focus = focal_value(cap, medium, wave) * weight;
    superpose_sums(element, kernels, cap_rim_factor(cap, medium) * weight, [&](int i, const CartesianCoordinate& p) {
      if (cap.is_behind(p)) return no_kernel;
      if (!cap.is_focus(p)) return 0;
      element.superpose_complex_pressure(i, at_focus);
      return no_kernel;
    });
  });
  return 0;
}

int cap_rayleigh_cw(Transducer& element, CapFace face) {
  const Medium& medium = medium_of(element);
  if (is_silent(element)) return 0;
  require_complex_output(element);
  const Wave wave = stored_wave(medium);
  const int n = element.integral->get_npoints();
  const ScratchArray<double> cosine_phi(n);
  fill_cosines_of_midpoints(cosine_phi, n, pi);
  for_each_cap(element, face, [&](const Cap& cap, Complex weight) {
    const CapRingTables rings(cap, n);
    const CellsOfCap cells = {cap.roc, n, cosine_phi.data(), rings.sine.data(), rings.cosine.data(), rings.area.data()};
    const PointKernel kernels[] = {{cells, wave, 2 * cap.roc, chosen_vector_target()}};
    const Complex factor = cap_rayleigh_factor(medium, weight);
    superpose_sums(element, kernels, factor, [&](int i, const CartesianCoordinate& p) {
      if (cap.is_behind(p)) return no_kernel;
      if (!is_apex(p)) return 0;
      element.superpose_complex_pressure(i, apex_sum(cap) * factor);
      return no_kernel;
    });
  });
  return 0;
}

}  // namespace kesto
