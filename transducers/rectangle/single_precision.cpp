// The single-precision fields of a rectangle.
#include <cmath>
#include <complex>

#include "core/constants.h"
#include "core/internal/four_floats.h"
#include "core/internal/host.h"
#include "core/numerical_helpers.h"
#include "fields/context.h"
#include "fields/point_road.h"
#include "transducers/rectangle/float_edges.h"

namespace kesto {

namespace {

float wavelength_in(const Medium& medium) {
  return static_cast<float>(medium._soundspeed / frequency_of_wavelength(medium));
}

}  // namespace

}  // namespace kesto

using namespace kesto;

int RectangularTransducer::fnm_cw_single() {
  const Medium& properties = medium_of(*this);
  const float minus_k = -two_pi_single / wavelength_in(properties);
  if (is_silent(*this)) return 0;
  require_complex_output(*this);
  const float minus_alpha = static_cast<float>(-attenuation_of(properties));
  const RectangleTables tables(*this, true);
  const RectangleNodes t = tables.nodes();
  const double rho_c = static_cast<double>(static_cast<float>(properties._rho_density)) *
                       static_cast<double>(static_cast<float>(properties._soundspeed));
  const Complex factor = rectangle_rim_factor(*this, rho_c, static_cast<double>(-two_pi_single));
  const auto wave_at = [&](float distance) {
    return smart_exp(static_cast<double>(minus_alpha * distance), static_cast<double>(minus_k * distance));
  };
  superpose_values(*this, is_in_front, [&](const CartesianCoordinate& local) {
    const FloatPoint p(local, t);
    const Complex reference = wave_at(p.z);
    Complex sum;
    const auto add = [&](double weighted_multiplier, float d, float u2) {
      const float denominator = d * d + u2;
      sum +=
          weighted_multiplier * (wave_at(std::sqrt(p.z2 + d * d + u2)) - reference) / static_cast<double>(denominator);
    };
    for_each_pair(p, t, [&](const FloatEdgePair& pair) {
      for (int i = 0; i < t.n; ++i) {
        if (!pair.split()) {
          const float u = static_cast<float>(pair.whole[i]) + pair.foot;
          for (const float d : pair.d) add(pair.whole_weight[i] * static_cast<double>(d), d, u * u);
        } else {
          for (const float end : pair.ends) {
            const float u2 = static_cast<float>(t.t_squared[i]) * (end * end);
            for (const float d : pair.d) add(t.t_weight[i] * static_cast<double>(end * d), d, u2);
          }
        }
      }
    });
    return sum * factor;
  });
  return 0;
}

int RectangularTransducer::fnm_cw_sse() {
  const Medium& properties = medium_of(*this);
  const Wave wave = wave_or_default(properties);
  require_complex_output(*this);
  const Float4 minus_k = broadcast_ps(static_cast<float>(-wave.wavenumber));
  const Float4 minus_alpha = broadcast_ps(static_cast<float>(-wave.attenuation));
  const RectangleTables tables(*this, false, 4);
  const RectangleNodes t = tables.nodes();
  const Complex factor = rectangle_rim_factor(*this, properties._rho_density * properties._soundspeed, -two_pi);
  superpose_values(*this, is_in_front, [&](const CartesianCoordinate& local) {
    const FloatPoint p(local, t);
    Float4 re0, im0;
    complex_exp(minus_alpha * p.z, minus_k * p.z, &re0, &im0);
    ComplexSum4 sum;
    const auto add = [&](Float4 weighted_multiplier, float d, Float4 u2) {
      const Float4 distance = sqrt_ps(p.z2 + d * d + u2), g = weighted_multiplier / (d * d + u2);
      Float4 re, im;
      complex_exp(minus_alpha * distance, minus_k * distance, &re, &im);
      sum.re += g * (re - re0);
      sum.im += g * (im - im0);
    };
    for_each_pair(p, t, [&](const FloatEdgePair& pair) {
      for (int i = 0; i < t.n; i += 4) {
        if (!pair.split()) {
          const Float4 u = rounded_ps(pair.whole + i) + pair.foot, weight = rounded_ps(pair.whole_weight + i);
          for (const float d : pair.d) add(weight * d, d, u * u);
        } else {
          const Float4 t_squared = rounded_ps(&t.t_squared[i]), weight = rounded_ps(&t.t_weight[i]);
          for (const float end : pair.ends) {
            for (const float d : pair.d) add(weight * (end * d), d, t_squared * (end * end));
          }
        }
      }
    });
    return sum.total() * factor;
  });
  return 0;
}

int RectangularTransducer::fnm_cw_sse2() {
  const Medium& properties = medium_of(*this);
  const float k = two_pi_single / wavelength_in(properties);
  if (is_silent(*this)) return 0;
  require_complex_output(*this);
  const float minus_alpha = static_cast<float>(-attenuation_of(properties));
  const RectangleTables tables(*this, true);
  const RectangleNodes t = tables.nodes();
  const float rho_c = static_cast<float>(properties._rho_density) * static_cast<float>(properties._soundspeed);
  const Complex factor = rectangle_rim_factor(*this, static_cast<double>(rho_c), -two_pi);
  superpose_values(*this, is_in_front, [&](const CartesianCoordinate& local) {
    const FloatPoint p(local, t);
    const std::complex<float> reference = smart_exp(minus_alpha * p.z, -k * p.z);
    ComplexSum4 sum;
    for_each_pair(p, t, [&](const FloatEdgePair& pair) {
      const Float4 d = {pair.d[0], pair.d[1], pair.d[0], pair.d[1]};
      const Float4 end = {pair.ends[0], pair.ends[0], pair.ends[1], pair.ends[1]};
      const Float4 first_two = {1, 1, 0, 0};  // a whole edge has two terms
      for (int i = 0; i < t.n; ++i) {
        Float4 u2, weighted_multiplier;
        if (pair.split()) {
          u2 = static_cast<float>(t.t_squared[i]) * (end * end);
          weighted_multiplier = static_cast<float>(t.t_weight[i]) * (end * d);
        } else {
          const float u = static_cast<float>(pair.whole[i]) + pair.foot;
          u2 = broadcast_ps(u * u);
          weighted_multiplier = static_cast<float>(pair.whole_weight[i]) * d * first_two;
        }
        const Float4 distance = sqrt_ps(p.z2 + d * d + u2), g = weighted_multiplier / (d * d + u2);
        Float4 sine, cosine;
        sincos_ps(k * distance, &sine, &cosine);
        sum.re += g * (cosine - reference.real());
        sum.im += g * (-sine - reference.imag());
      }
    });
    return sum.total() * factor;
  });
  return 0;
}

int RectangularTransducer::rayleigh_cw_sse() {
  const Medium& properties = medium_of(*this);
  const Wave wave = wave_or_default(properties);
  if (is_silent(*this)) return 0;
  require_complex_output(*this);
  const Float4 minus_k = broadcast_ps(static_cast<float>(-wave.wavenumber));
  const Float4 minus_alpha = broadcast_ps(static_cast<float>(-wave.attenuation));
  const RectangleTables tables(*this);
  const RectangleNodes t = tables.nodes();
  const Complex factor = rectangle_rayleigh_factor(*this);
  for_each_local_point(*this, [&](int index, const CartesianCoordinate& local) {
    if (!(local.z >= 0)) return;
    const FloatPoint p(local, t);
    ComplexSum4 sum;
    for (int column = 0; column < t.n; ++column) {
      const float dx = p.x - static_cast<float>(t.x[column]), weight = static_cast<float>(t.x_weight[column]);
      for (int i = 0; i + 4 <= t.n; i += 4) {
        const Float4 dy = p.y - rounded_ps(&t.y[i]);
        const Float4 distance = sqrt_ps(dy * dy + dx * dx + p.z2);
        if (index == 0) kesto::print("R i: %f\n", static_cast<double>(distance[0]));
        const Float4 area = weight * rounded_ps(&t.y_weight[i]) / distance;
        Float4 re, im;
        complex_exp(minus_alpha * distance, minus_k * distance, &re, &im);
        sum.re += area * re;
        sum.im += area * im;
      }
    }
    superpose_complex_pressure(index, sum.total() * factor);
  });
  return 0;
}
