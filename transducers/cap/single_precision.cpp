// The single-precision fields of a spherical cap.
#include <cmath>
#include <complex>

#include "core/internal/four_floats.h"
#include "core/internal/host.h"
#include "fields/point_road.h"
#include "transducers/cap/tables.h"

namespace kesto {

namespace {

// About the centre of curvature.
struct FloatPoint {
  FloatPoint(const CartesianCoordinate& p, double roc) : x(static_cast<float>(p.x)), z(static_cast<float>(p.z - roc)) {
    const float y = static_cast<float>(p.y);
    r2 = x * x + y * y;
    r = std::sqrt(r2);
  }
  float x, z, r2, r;
};

}  // namespace

int cap_fnm_cw_sse(Transducer& element, CapFace face) {
  const Medium& medium = medium_of(element);
  const Wave wave = wave_or_default(medium);
  if (is_silent(element)) return 0;
  require_complex_output(element);
  const Float4 minus_k = broadcast_ps(static_cast<float>(-wave.wavenumber));
  const Float4 minus_alpha = broadcast_ps(static_cast<float>(-wave.attenuation));
  const CapRimTables tables(*element.integral);
  const ScratchArray<double> sine_squared(tables.n);
  for (int i = 0; i < tables.n; ++i) sine_squared[i] = (1 - tables.cosine[i]) * (1 + tables.cosine[i]);
  for_each_cap(element, face, [&](const Cap& cap, Complex weight) {
    const float a = static_cast<float>(cap.radius), d = static_cast<float>(cap.roc), h = static_cast<float>(cap.h);
    const auto in_reach = [&](const CartesianCoordinate& p) { return !cap.is_behind(p); };
    superpose_values(element, in_reach, [&](const CartesianCoordinate& local) -> Complex {
      if (cap.is_focus(local)) return focal_value(cap, medium, wave) * weight;
      const FloatPoint p(local, cap.roc);
      const float side = p.z > 1e-10f ? 1.0f : p.z < -1e-10f ? -1.0f : 0.0f;
      const float centre = d + side * std::sqrt(p.r2 + p.z * p.z);
      Float4 re0, im0;
      complex_exp(minus_alpha * centre, minus_k * centre, &re0, &im0);
      ComplexSum4 sum;
      for (int i = 0; i + 4 <= tables.n; i += 4) {
        const Float4 c = rounded_ps(&tables.cosine[i]);
        // Near the rim, R^2 and the denominator are differences of floats. Neither may come out as less than nothing,
        // hence the bound on one, and the other as a sum of squares.
        const Float4 squared = d * d + p.r2 + p.z * p.z - 2 * a * p.r * c + 2 * p.z * h;
        const Float4 distance = sqrt_ps(squared > 0.0f ? squared : Float4{});
        const Float4 numerator = p.r * h * c + a * p.z;
        const Float4 denominator = numerator * numerator + (p.r * d) * (p.r * d) * rounded_ps(&sine_squared[i]);
        const Float4 g = rounded_ps(&tables.weight[i]) * (numerator / denominator);
        Float4 re, im;
        complex_exp(minus_alpha * distance, minus_k * distance, &re, &im);
        sum.re += g * (re - re0);
        sum.im += g * (im - im0);
      }
      return sum.total() * cap_rim_factor(cap, medium) * weight;
    });
  });
  return 0;
}

int cap_rayleigh_cw_sse(Transducer& element, CapFace face) {
  const Medium& medium = medium_of(element);
  const Wave wave = wave_or_default(medium);
  if (is_silent(element)) return 0;
  require_complex_output(element);
  const Float4 minus_k = broadcast_ps(static_cast<float>(-wave.wavenumber));
  const Float4 minus_alpha = broadcast_ps(static_cast<float>(-wave.attenuation));
  const int n = element.integral->get_npoints();
  const ScratchArray<double> cosine_phi(n);
  fill_cosines_of_midpoints(cosine_phi, n, pi);
  for_each_cap(element, face, [&](const Cap& cap, Complex weight) {
    const CapRingTables rings(cap, n);
    const Complex factor = cap_rayleigh_factor(medium, weight);
    const float d = static_cast<float>(cap.roc);
    const auto in_reach = [&](const CartesianCoordinate& p) { return !cap.is_behind(p); };
    superpose_values(element, in_reach, [&](const CartesianCoordinate& local) -> Complex {
      if (is_apex(local)) return apex_sum(cap) * factor;
      const FloatPoint p(local, cap.roc);
      ComplexSum4 sum;
      for (int meridian = 0; meridian < n; ++meridian) {
        const float d_cosine_x = d * static_cast<float>(cosine_phi[meridian]) * p.x;
        for (int i = 0; i + 4 <= n; i += 4) {
          const Float4 sine = rounded_ps(&rings.sine[i]), cosine = rounded_ps(&rings.cosine[i]);
          const Float4 distance = sqrt_ps(p.r2 + p.z * p.z - 2 * (d_cosine_x * sine - d * p.z * cosine) + d * d);
          const Float4 area = rounded_ps(&rings.area[i]) / distance;
          Float4 re, im;
          complex_exp(minus_alpha * distance, minus_k * distance, &re, &im);
          sum.re += area * re;
          sum.im += area * im;
        }
      }
      return sum.total() * factor;
    });
  });
  return 0;
}

}  // namespace kesto
