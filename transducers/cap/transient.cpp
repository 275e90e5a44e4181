// The transient fields of a spherical cap.
#include <algorithm>
#include <cmath>

#include "core/internal/four_floats.h"
#include "core/internal/host.h"
#include "fields/decomposition.h"
#include "fields/direct_transient.h"
#include "fields/rays.h"
#include "fields/traces.h"
#include "transducers/cap/rim.h"
#include "transducers/cap/tables.h"

namespace kesto {

namespace {

double transient_factor(const Cap& cap, const Medium& medium, double sign) {
  return sign * (cap.roc * cap.radius / pi * medium._rho_density * medium._soundspeed);
}

// At the centre of curvature: the samples of `span` of rho depth v'(t - delay - roc/c).
void superpose_focal_trace(Transducer& element, const TimeAxis& axis, const Cap& cap, double sign, Span span, int i,
                           double* trace) {
  const double delay = cap.roc / element.medium->_soundspeed, depth = sign * cap.depth;
  std::fill_n(trace, axis.samples, 0.0);
  for (int k = span.first; k < span.last; ++k) {
    const double slope = element.excitation->derivative(axis.times[k] - axis.time_delay - delay);
    trace[k] = slope * depth * element.medium->_rho_density * element.amplitude;
  }
  element.superpose_transient_pressure(i, trace);
}

// Hands the rays of every point that the cap has any for to consume(block); superpose_focal(i) is called for the centre
// of curvature.
template <class Fill, class Focal, class Consume>
void for_each_cap_ray_block(Transducer& element, const Cap& cap, int nodes, BehindCap behind, Fill fill,
                            Focal superpose_focal, Consume consume) {
  RayBlock block(nodes);
  const auto accept = [&](int i, const CartesianCoordinate& p) {
    if (behind == BehindCap::skipped && cap.is_behind(p)) return false;
    if (!cap.is_focus(p)) return true;
    superpose_focal(i);
    return false;
  };
  const auto arrive = [](const CartesianCoordinate&, double& first, double& last) { first = last = 0; };
  for_each_ray_block(element, block, fill, accept, arrive, consume);
}

auto fill_in_double(const RimOfCap& rim, double c) {
  return [rim, c, function = function_on<OutermostRays<RimOfCap>>(chosen_vector_target())](RayBlock& block) {
    function(rim, {c}, block);
  };
}

// The rays of a block with every step in single precision.
void fill_in_float(const Cap& cap, const CapRimTables& tables, float c, RayBlock& block) {
  const float a = static_cast<float>(cap.radius), d = static_cast<float>(cap.roc), h = std::sqrt(d * d - a * a);
  for (int p = 0; p < RayBlock::capacity; ++p) {
    const float x = static_cast<float>(block.x[p]), y = static_cast<float>(block.y[p]);
    const float z = static_cast<float>(block.z[p] - cap.roc), r2 = x * x + y * y, r = std::sqrt(r2);
    float sum = 0;
    for (int j = 0; j < tables.n; ++j) {
      const float cosine = static_cast<float>(tables.cosine[j]);
      const float sine_squared = static_cast<float>((1 - tables.cosine[j]) * (1 + tables.cosine[j]));
      // The denominator as a sum of squares: in floats, the difference that it also is may vanish near the rim.
      const float numerator = r * cosine * h + a * z;
      const float denominator = numerator * numerator + (r * d) * (r * d) * sine_squared;
      const float weight = static_cast<float>(tables.weight[j]) * (numerator / denominator);
      sum += weight;
      block.weight[RayBlock::capacity * j + p] = static_cast<double>(weight);
      const float squared = above_zero(d * d + r2 + z * z - 2 * a * r * cosine + 2 * z * h);
      block.delay[RayBlock::capacity * j + p] = static_cast<double>(std::sqrt(squared) / c);
    }
    block.weight_sum[p] = static_cast<double>(sum);
    const float side = z > 1e-10f ? 1.0f : z < -1e-10f ? -1.0f : 0.0f;
    block.reference[p] = static_cast<double>((d + side * std::sqrt(r2 + z * z)) / c);
  }
}

int decompose(Transducer& element, CapFace face, BehindCap behind, DecompositionForm form, bool float_geometry) {
  if (is_silent(element)) return 0;
  require_excited_output(element);
  const TimeAxis axis(element);
  Decomposition decomposition(element, axis, form);
  const ScratchArray<double> focal_trace(axis.samples);
  const Medium& medium = *element.medium;
  for_each_signed_cap(face, [&](const Cap& cap, double sign) {
    const CapRimTables tables(*element.integral, transient_factor(cap, medium, sign));
    const auto focal = [&](int i) {
      const Span span = axis.within_pulse(cap.roc / medium._soundspeed, element.excitation->get_pulse_width());
      superpose_focal_trace(element, axis, cap, sign, span, i, focal_trace.data());
    };
    const auto consume = [&](const RayBlock& block) { decomposition.superpose(block, false); };
    if (float_geometry) {
      const auto fill = [&](RayBlock& block) {
        fill_in_float(cap, tables, static_cast<float>(medium._soundspeed), block);
      };
      for_each_cap_ray_block(element, cap, tables.n, behind, fill, focal, consume);
    } else {
      const RimOfCap rim = {cap, tables.n, tables.cosine.data(), tables.weight.data()};
      for_each_cap_ray_block(element, cap, tables.n, behind, fill_in_double(rim, medium._soundspeed), focal, consume);
    }
  });
  return 0;
}

}  // namespace

int cap_fnm_transient(Transducer& element, CapFace face, BehindCap behind) {
  if (is_silent(element)) return 0;
  require_excited_output(element);
  const TimeAxis axis(element);
  const DirectSum sum(*element.excitation, SignalForm::value, axis, true);
  const Traces traces(axis.samples);
  const Span all = {0, axis.samples};
  const Medium& medium = *element.medium;
  for_each_signed_cap(face, [&](const Cap& cap, double sign) {
    const CapRimTables tables(*element.integral, transient_factor(cap, medium, sign));
    const RimOfCap rim = {cap, tables.n, tables.cosine.data(), tables.weight.data()};
    const auto focal = [&](int i) { superpose_focal_trace(element, axis, cap, sign, all, i, traces.of(0)); };
    const auto fill = fill_in_double(rim, medium._soundspeed);
    for_each_cap_ray_block(element, cap, tables.n, behind, fill, focal, [&](const RayBlock& block) {
      const Span window = sum.reach(block);
      traces.clear(block.count, window);
      for (int p = 0; p < block.count; ++p) sum.add(block, p, window, traces.of(p));
      traces.superpose(element, block.index, block.count, window, element.amplitude);
    });
  });
  return 0;
}

int cap_fnm_tsd(Transducer& element, CapFace face, BehindCap behind) {
  return decompose(element, face, behind, {}, false);
}

int cap_fnm_fdtsd(Transducer& element, CapFace face) {
  return decompose(element, face, BehindCap::skipped, {true, false}, false);
}

int cap_fnm_tsd_low_precision(Transducer& element, CapFace face) {
  return decompose(element, face, BehindCap::skipped, {}, true);
}

}  // namespace kesto
