#include <cmath>
#include <complex>

#include "core/constants.h"
#include "core/internal/host.h"
#include "core/numerical_integration.h"
#include "core/piston_apodization.h"
#include "fields/midpoints.h"
#include "fields/point_road.h"
#include "transducers/disc/disc.h"
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
  KESTO_INLINE void add_terms(Sum& sum, const LocalPoints<typename Sum::T>& p) const {
    using T = typename Sum::T;
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
  KESTO_INLINE void add_terms(Sum& sum, const LocalPoints<typename Sum::T>& p) const {
    using T = typename Sum::T;
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
void superpose_cells(Transducer& element, DiscFace face, Wave wave, Velocity velocity) {
  const int n = element.integral->get_npoints();
  const ScratchArray<double> cosine(n), sigma(n), sigma_squared(n), area(n);
  fill_cosines_of_midpoints(cosine, n, pi);
  for_each_disc(element, face, [&](double radius, Complex weight) {
    for (int i = 0; i < n; ++i) {
      sigma[i] = midpoint(i, n, radius);
      sigma_squared[i] = sigma[i] * sigma[i];
      area[i] = radius / n * sigma[i] * (pi / n) * velocity(sigma[i], radius);
    }
    const CellsOfDisc cells = {n, cosine.data(), sigma.data(), sigma_squared.data(), area.data()};
    const PointKernel kernels[] = {{cells, wave, radius, chosen_vector_target()}};
    superpose_sums(element, kernels, disc_rayleigh_factor(*element.medium, weight), kernel_in_front);
  });
}

}  // namespace

int disc_fnm_cw(Transducer& element, DiscFace face) {
  const Medium& medium = medium_of(element);
  const Wave wave = wave_or_default(medium);
  if (is_silent(element)) return 0;
  require_complex_output(element);
  for_each_disc(element, face, [&](double radius, Complex weight) {
    const DiscRimTables tables(*element.integral, radius);
    const RimOfDisc rim = tables.rim();
    const PointKernel kernels[] = {{rim, wave, radius, chosen_vector_target()}};
    superpose_sums(element, kernels, disc_rim_factor(medium, radius, weight), kernel_in_front);
  });
  return 0;
}

int disc_fnm_cw_apodized(Transducer& element, DiscFace face) {
  const Medium& medium = medium_of(element);
  if (is_silent(element)) return 0;
  require_complex_output(element);
  NumericalIntegration& rule = *element.integral;
  rule.gauss_quadrature(0, pi);
  const int n = rule.get_npoints();
  const ScratchArray<double> cosine(n), cosine_2(n), weight_of_angle(n);
  const ScratchArray<double> sigma(n), sigma_squared(n), weight_of_ring(n);
  for_each_disc(element, face, [&](double radius, Complex weight) {
    int first_ring = n;
    for (int i = n - 1; i >= 0; --i) {
      cosine[i] = std::cos(rule.get_abscissa(i));
      cosine_2[i] = 2 * cosine[i];
      weight_of_angle[i] = pi * rule.get_weight(i);
      sigma[i] = radius * rule.get_abscissa(i);
      sigma_squared[i] = sigma[i] * sigma[i];
      const double slope = piston_apodization::derivative(element.piston_apodization_index, sigma[i], radius);
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
    const PointKernel kernels[] = {{rims, stored_wave(medium), pi * radius, chosen_vector_target()}};
    superpose_sums(element, kernels, disc_rim_factor(medium, radius, weight), kernel_in_front);
  });
  return 0;
}

int disc_rayleigh_cw(Transducer& element, DiscFace face) {
  const Medium& medium = medium_of(element);
  double soundspeed = medium._soundspeed;
  if (soundspeed <= 1e-10) {
    kesto::warn("Sound speed not set; using default of 1500 m/s to calculate wavenumber.");
    soundspeed = 1500;
  }
  if (is_silent(element)) return 0;
  require_complex_output(element);
  const Wave growing = {medium._f0 * two_pi / soundspeed, -attenuation_of(medium)};
  superpose_cells(element, face, growing, [](double, double) { return 1.0; });
  return 0;
}

int disc_rayleigh_cw_apodized(Transducer& element, DiscFace face) {
  const Medium& medium = medium_of(element);
  if (is_silent(element)) return 0;
  require_complex_output(element);
  const Wave wave = {medium._f0 * two_pi / medium._soundspeed, attenuation_of(medium)};
  superpose_cells(element, face, wave, [&](double r, double radius) {
    return piston_apodization::evaluate(element.piston_apodization_index, r, radius);
  });
  return 0;
}

}  // namespace kesto
