// The single-precision fields of a disc.
#include <cmath>
#include <complex>

#include "core/internal/four_floats.h"
#include "core/internal/host.h"
#include "core/numerical_integration.h"
#include "fields/midpoints.h"
#include "fields/point_road.h"
#include "transducers/disc/tables.h"

namespace kesto {

namespace {

struct FloatPoint {
  explicit FloatPoint(const CartesianCoordinate& p) : z(static_cast<float>(p.z)) {
    const float x = static_cast<float>(p.x), y = static_cast<float>(p.y);
    r2 = x * x + y * y;
    r = std::sqrt(r2);
  }
  float z, r2, r;
};

}  // namespace

int disc_fnm_cw_sse(Transducer& element, DiscFace face) {
  const Medium& medium = medium_of(element);
  require_complex_output(element);
  const Wave wave = stored_wave(medium);
  const Float4 minus_k = broadcast_ps(static_cast<float>(-wave.wavenumber));
  const Float4 minus_alpha = broadcast_ps(static_cast<float>(-wave.attenuation));
  for_each_disc(element, face, [&](double radius, Complex weight) {
    const DiscRimTables tables(*element.integral, radius);
    const float a = static_cast<float>(radius), a2 = static_cast<float>(radius * radius);
    superpose_values(element, is_in_front, [&](const CartesianCoordinate& local) {
      const FloatPoint p(local);
      Float4 re0, im0;
      complex_exp(minus_alpha * p.z, minus_k * p.z, &re0, &im0);
      ComplexSum4 sum;
      for (int i = 0; i + 4 <= tables.n; i += 4) {
        const Float4 c = rounded_ps(&tables.cosine[i]);
        // On the rim, where d may round to nothing, the two waves are equal and the term is nothing too.
        const Float4 d = above_zero((p.r2 + a2) - rounded_ps(&tables.cosine_2a[i]) * p.r);
        const Float4 distance = sqrt_ps(p.z * p.z + d);
        const Float4 g = rounded_ps(&tables.weight[i]) * ((c * p.r - a) * approximate_reciprocal_ps(d));
        Float4 re, im;
        complex_exp(minus_alpha * distance, minus_k * distance, &re, &im);
        sum.re += g * (re - re0);
        sum.im += g * (im - im0);
      }
      return sum.total() * disc_rim_factor(medium, radius, weight);
    });
  });
  return 0;
}

int disc_rayleigh_cw_sse(Transducer& element, DiscFace face) {
  const Medium& medium = medium_of(element);
  if (is_silent(element)) return 0;
  require_complex_output(element);
  const Float4 minus_k = broadcast_ps(static_cast<float>(-medium._f0 * two_pi / medium._soundspeed));
  const Float4 minus_alpha = broadcast_ps(static_cast<float>(-attenuation_of(medium)));
  const int n = element.integral->get_npoints();
  const ScratchArray<double> cosine(n);
  fill_cosines_of_midpoints(cosine, n, pi);
  for_each_disc(element, face, [&](double radius, Complex weight) {
    superpose_values(element, is_in_front, [&](const CartesianCoordinate& local) {
      const FloatPoint p(local);
      ComplexSum4 sum;
      for (int ring = 0; ring < n; ++ring) {
        const double sigma = midpoint(ring, n, radius);
        const float area = static_cast<float>(radius / n * sigma * (pi / n));
        const float s = static_cast<float>(sigma * sigma) + (p.z * p.z + p.r2);
        const float sigma_r_2 = 2 * static_cast<float>(sigma) * p.r;
        for (int i = 0; i + 4 <= n; i += 4) {
          const Float4 distance = sqrt_ps(s - sigma_r_2 * rounded_ps(&cosine[i]));
          const Float4 amplitude = exp_ps(minus_alpha * distance) * area / distance;
          Float4 re, im;
          complex_exp(Float4{}, minus_k * distance, &re, &im);
          sum.re += amplitude * re;
          sum.im += amplitude * im;
        }
      }
      return sum.total() * disc_rayleigh_factor(medium, weight);
    });
  });
  return 0;
}

}  // namespace kesto
