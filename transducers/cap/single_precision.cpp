// The single-precision fields of a spherical cap.
#include <cmath>
#include <complex>

#include "core/internal/four_floats.h"
#include "core/internal/host.h"
#include "fields/context.h"
#include "fields/midpoints.h"
#include "fields/point_road.h"
#include "transducers/cap/tables.h"

namespace kesto {

namespace {

// About the centre of curvature.
struct FloatPoint {
  FloatPoint(const CartesianCoordinate& p, double roc) : x(static_cast<float>(p.x)), z(static_cast<float>(p.z - roc)) {
    const float y = static_cast<float>(p.y);
    y2 = y * y;
    r2 = x * x + y2;
    r = std::sqrt(r2);
  }
  float x, z, y2, r2, r;
};

}  // namespace

int CapTransducer::fnm_cw_sse() {
  const Wave wave = wave_or_default(medium_of(*this));
  if (is_silent(*this)) return 0;
  require_complex_output(*this);
  const Float4 minus_k = broadcast_ps(static_cast<float>(-wave.wavenumber));
  const Float4 minus_alpha = broadcast_ps(static_cast<float>(-wave.attenuation));
  const CapRimTables tables(*integral);
  const ScratchArray<double> sine_squared(tables.n);
  for (int i = 0; i < tables.n; ++i) sine_squared[i] = (1 - tables.cosine[i]) * (1 + tables.cosine[i]);
  for_each_cap(face(), [&](const Cap& cap, double sign) {
    const Complex weight = sign * complex_weight;
    const float a = static_cast<float>(cap.radius), d = static_cast<float>(cap.roc), h = static_cast<float>(cap.h);
    const auto in_reach = [&](const CartesianCoordinate& p) { return !cap.is_behind(p); };
    superpose_values(*this, in_reach, [&](const CartesianCoordinate& local) -> Complex {
      if (cap.is_focus(local)) return focal_value(cap, *medium, wave) * weight;
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
      return sum.total() * cap_rim_factor(cap, *medium) * weight;
    });
  });
  return 0;
}

int CapTransducer::rayleigh_cw_sse() {
  const Wave wave = wave_or_default(medium_of(*this));
  if (is_silent(*this)) return 0;
  require_complex_output(*this);
  const Float4 minus_k = broadcast_ps(static_cast<float>(-wave.wavenumber));
  const Float4 minus_alpha = broadcast_ps(static_cast<float>(-wave.attenuation));
  const int n = integral->get_npoints();
  const ScratchArray<double> cosines_phi(n);
  fill_cosines_of_midpoints(cosines_phi, n, pi);
  for_each_cap(face(), [&](const Cap& cap, double sign) {
    const Complex weight = sign * complex_weight;
    const CapRingTables rings(cap, n);
    const Complex factor = cap_rayleigh_factor(*medium, weight);
    const float d = static_cast<float>(cap.roc);
    const auto in_reach = [&](const CartesianCoordinate& p) { return !cap.is_behind(p); };
    superpose_values(*this, in_reach, [&](const CartesianCoordinate& local) -> Complex {
      if (is_apex(local)) return apex_sum(cap) * factor;
      const FloatPoint p(local, cap.roc);
      ComplexSum4 sum;
      for (int meridian = 0; meridian < n; ++meridian) {
        const float cosine_phi = static_cast<float>(cosines_phi[meridian]);
        const float sine_phi_squared = (1 - cosine_phi) * (1 + cosine_phi);
        for (int i = 0; i + 4 <= n; i += 4) {
          const Float4 d_sine = d * rounded_ps(&rings.sine[i]), d_cosine = d * rounded_ps(&rings.cosine[i]);
          // r^2 + z^2 + d^2 - 2 d (x sin theta cos phi - z cos theta) as a sum of squares: next to a cell the
          // difference would be below 0 in floats.
          const Float4 along_x = p.x - d_sine * cosine_phi, along_z = p.z + d_cosine;
          const Float4 distance =
              sqrt_ps(along_x * along_x + p.y2 + along_z * along_z + d_sine * d_sine * sine_phi_squared);
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
