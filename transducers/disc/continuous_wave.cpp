// The continuous-wave fields of a disc in double precision.
#include <cmath>
#include <complex>

#include "core/constants.h"
#include "core/internal/host.h"
#include "core/numerical_integration.h"
#include "core/piston_apodization.h"
#include "fields/context.h"
#include "fields/midpoints.h"
#include "fields/point_road.h"
#include "transducers/disc/rim.h"
#include "transducers/disc/tables.h"

namespace kesto {

namespace {

// The apodized rim integral: rows of n nodes psi, one for each ring of radius sigma.
struct RimsOfRings {
  int n;
  const double *cosine, *cosine_2, *weight;           // of the angles
  const double *sigma, *sigma_squared, *ring_weight;  // of the rings, with the derivative of the profile and sigma
  int first_ring;                                     // those before have a derivative of 0

  template <class Sum>
  KESTO_INLINE void add_terms(Sum& sum, const LocalPoints<typename Sum::Target>& p) const {
    using T = typename Sum::Target;
    const Double<T> r2 = p.x * p.x + p.y * p.y, r = sqrt<T>(r2), z2 = p.z * p.z;
    sum.subtract_wave_at(p.z);
    // Where values may not be finite, rings that weigh nothing are added too: they carry the NaN into the result.
    for (int ring = Sum::argument_range == Arguments::any ? 0 : first_ring; ring < n; ++ring) {
      const Double<T> s = sigma_squared[ring] + r2;
      const double sigma_here = sigma[ring], weight_here = ring_weight[ring];
      sum.add(n, [&](int i) KESTO_INLINE_LAMBDA {
        const Double<T> d = s - cosine_2[i] * r * sigma_here;
        return WaveTerms<T>{{weight_here * weight[i] * ((cosine[i] * r - sigma_here) / d)}, {sqrt<T>(z2 + d)}};
      });
    }
  }
};

// The Rayleigh integral: n rings of n sectors each.
struct CellsOfDisc {
  int n;
  const double *cosine, *sigma, *sigma_squared, *area;  // area and velocity of a cell, by ring

  template <class Sum>
  KESTO_INLINE void add_terms(Sum& sum, const LocalPoints<typename Sum::Target>& p) const {
    using T = typename Sum::Target;
    const Double<T> r2 = p.x * p.x + p.y * p.y, r = sqrt<T>(r2), distance_squared = p.z * p.z + r2;
    for (int ring = 0; ring < n; ++ring) {
      const Double<T> s = sigma_squared[ring] + distance_squared, sigma_r_2 = 2 * sigma[ring] * r;
      const double area_here = area[ring];
      sum.add(n, [&](int i) KESTO_INLINE_LAMBDA {
        const Double<T> distance = sqrt<T>(s - sigma_r_2 * cosine[i]);
        return WaveTerms<T>{{area_here / distance}, {distance}};
      });
    }
  }
};

// `velocity(radius of the ring, radius of the disc)` weighs each ring of cells.
template <class Velocity>
void superpose_cells(DiscTransducer& element, Wave wave, Velocity velocity) {
  const int n = element.integral->get_npoints();
  const ScratchArray<double> cosine(n), sigma(n), sigma_squared(n), area(n);
  fill_cosines_of_midpoints(cosine, n, pi);
  for_each_disc(element.face(), [&](double radius, double sign) {
    for (int i = 0; i < n; ++i) {
      sigma[i] = midpoint(i, n, radius);
      sigma_squared[i] = sigma[i] * sigma[i];
      area[i] = radius / n * sigma[i] * (pi / n) * velocity(sigma[i], radius);
    }
    const CellsOfDisc cells = {n, cosine.data(), sigma.data(), sigma_squared.data(), area.data()};
    superpose_sum_in_front(element, {cells, wave, radius},
                           disc_rayleigh_factor(*element.medium, sign * element.complex_weight));
  });
}

}  // namespace

int DiscTransducer::fnm_cw() {
  const Wave wave = wave_or_default(medium_of(*this), NanFrequency::is_unset);
  if (is_silent(*this)) return 0;
  require_complex_output(*this);
  for_each_disc(face(), [&](double radius, double sign) {
    const DiscRimTables tables(*integral, radius);
    const EdgeIntegral<DiscRim> rim = {DiscRim(tables)};
    superpose_sum_in_front(*this, {rim, wave, radius}, disc_rim_factor(*medium, radius, sign * complex_weight));
  });
  return 0;
}

int DiscTransducer::fnm_cw_apodized() {
  const Wave wave = stored_wave(medium_of(*this));
  if (is_silent(*this)) return 0;
  require_complex_output(*this);
  NumericalIntegration& rule = *integral;
  rule.gauss_quadrature(0, pi);
  const int n = rule.get_npoints();
  const ScratchArray<double> cosine(n), cosine_2(n), weight_of_angle(n);
  const ScratchArray<double> sigma(n), sigma_squared(n), weight_of_ring(n);
  for_each_disc(face(), [&](double radius, double sign) {
    int first_ring = n;
    for (int i = n - 1; i >= 0; --i) {
      cosine[i] = std::cos(rule.get_abscissa(i));
      cosine_2[i] = 2 * cosine[i];
      weight_of_angle[i] = pi * rule.get_weight(i);
      sigma[i] = radius * rule.get_abscissa(i);
      sigma_squared[i] = sigma[i] * sigma[i];
      const double slope = piston_apodization::derivative(piston_apodization_index, sigma[i], radius);
      weight_of_ring[i] = radius * rule.get_weight(i) * slope * sigma[i];
      if (slope != 0) first_ring = i;
    }
    const RimsOfRings rims = {n,
                              cosine.data(),
                              cosine_2.data(),
                              weight_of_angle.data(),
                              sigma.data(),
                              sigma_squared.data(),
                              weight_of_ring.data(),
                              first_ring};
    superpose_sum_in_front(*this, {rims, wave, pi * radius}, disc_rim_factor(*medium, radius, sign * complex_weight));
  });
  return 0;
}

int DiscTransducer::rayleigh_cw() {
  double soundspeed = medium_of(*this)._soundspeed;
  if (soundspeed <= 1e-10) {
    warn("Sound speed not set; using default of 1500 m/s to calculate wavenumber.");
    soundspeed = 1500;
  }
  if (is_silent(*this)) return 0;
  require_complex_output(*this);
  const Wave growing = {medium->_f0 * two_pi / soundspeed, -attenuation_of(*medium)};
  superpose_cells(*this, growing, [](double, double) { return 1.0; });
  return 0;
}

int DiscTransducer::rayleigh_cw_apodized() {
  medium_of(*this);
  if (is_silent(*this)) return 0;
  require_complex_output(*this);
  const Wave wave = {medium->_f0 * two_pi / medium->_soundspeed, attenuation_of(*medium)};
  superpose_cells(*this, wave, [this](double r, double radius) {
    return piston_apodization::evaluate(piston_apodization_index, r, radius);
  });
  return 0;
}

}  // namespace kesto
