// The transient fields of a disc.
#include <cmath>

#include "core/internal/four_floats.h"
#include "core/internal/host.h"
#include "core/numerical_integration.h"
#include "fields/decomposition.h"
#include "fields/direct_transient.h"
#include "fields/midpoints.h"
#include "fields/rays.h"
#include "fields/traces.h"
#include "transducers/disc/rim.h"
#include "transducers/disc/tables.h"

namespace kesto {

namespace {

double transient_factor(const Medium& medium, double radius, double sign) {
  return sign * (medium._rho_density * medium._soundspeed * radius / pi);
}

// Hands the rays of every point in front of the disc to consume(block); `fill` replaces the rays in double precision.
template <class Fill, class Consume>
void for_each_disc_ray_block(Transducer& element, const DiscRimTables& tables, Fill fill, Consume consume) {
  const double c = element.medium->_soundspeed;
  RayBlock block(tables.n);
  const auto accept = [](int, const CartesianCoordinate& p) { return is_in_front(p); };
  const auto arrive = [&](const CartesianCoordinate& p, double& first, double& last) {
    const DiscArrivals arrivals(p, tables.radius, c);
    first = arrivals.first, last = arrivals.far_rim;
  };
  for_each_ray_block(element, block, fill, accept, arrive, consume);
}

auto fill_in_double(const RimOfDisc& rim, SoundSpeed c) {
  return [rim, c, function = function_on<OutermostRays<RimOfDisc>>(chosen_vector_target())](RayBlock& block) {
    function(rim, c, block);
  };
}

// The rays of a block with every step in single precision.
void fill_in_float(const DiscRimTables& tables, float c, RayBlock& block) {
  const float a = static_cast<float>(tables.radius);
  for (int p = 0; p < RayBlock::capacity; ++p) {
    const float x = static_cast<float>(block.x[p]), y = static_cast<float>(block.y[p]);
    const float z = static_cast<float>(block.z[p]), r2 = x * x + y * y, r = std::sqrt(r2);
    float sum = 0;
    for (int j = 0; j < tables.n; ++j) {
      const float cosine = static_cast<float>(tables.cosine[j]);
      const float d = above_zero(r2 + a * a - 2 * a * cosine * r);
      const float weight = static_cast<float>(tables.weight[j]) * ((cosine * r - a) / d);
      sum += weight;
      block.weight[RayBlock::capacity * j + p] = static_cast<double>(weight);
      block.delay[RayBlock::capacity * j + p] = static_cast<double>(std::sqrt(d + z * z) / c);
    }
    block.weight_sum[p] = static_cast<double>(sum);
    block.reference[p] = static_cast<double>(z / c);
  }
}

int decompose(Transducer& element, DiscFace face, DecompositionForm form, bool float_geometry) {
  if (is_silent(element)) return 0;
  require_excited_output(element);
  const TimeAxis axis(element);
  Decomposition decomposition(element, axis, form);
  for_each_signed_disc(face, [&](double radius, double sign) {
    const DiscRimTables tables(*element.integral, radius, transient_factor(*element.medium, radius, sign));
    const double c = element.medium->_soundspeed;
    const auto consume = [&](const RayBlock& block) { decomposition.superpose(block, true); };
    if (float_geometry) {
      const auto fill = [&](RayBlock& block) { fill_in_float(tables, static_cast<float>(c), block); };
      for_each_disc_ray_block(element, tables, fill, consume);
    } else {
      for_each_disc_ray_block(element, tables, fill_in_double(tables.rim(), {c, true}), consume);
    }
  });
  return 0;
}

}  // namespace

int disc_fnm_transient(Transducer& element, DiscFace face) {
  if (is_silent(element)) return 0;
  require_excited_output(element);
  const TimeAxis axis(element);
  const DirectSum sum(*element.excitation, SignalForm::value, axis, false);
  const Traces traces(axis.samples);
  const double pulse_width = element.excitation->get_pulse_width();
  for_each_signed_disc(face, [&](double radius, double sign) {
    const DiscRimTables tables(*element.integral, radius, transient_factor(*element.medium, radius, sign));
    const SoundSpeed c = {element.medium->_soundspeed};
    for_each_disc_ray_block(element, tables, fill_in_double(tables.rim(), c), [&](const RayBlock& block) {
      Span windows[RayBlock::capacity], all = {axis.samples, 0};
      for (int p = 0; p < block.count; ++p) {
        windows[p] = axis.between(block.first[p], block.last[p], pulse_width);
        all = union_of(all, windows[p]);
      }
      traces.clear(block.count, all);
      for (int p = 0; p < block.count; ++p) sum.add(block, p, windows[p], traces.of(p));
      traces.superpose(element, block.index, block.count, all, element.amplitude);
    });
  });
  return 0;
}

int disc_fnm_tsd(Transducer& element, DiscFace face) { return decompose(element, face, {}, false); }

int disc_fnm_fdtsd(Transducer& element, DiscFace face) { return decompose(element, face, {true, false}, false); }

int disc_fnm_tsd_low_precision(Transducer& element, DiscFace face) {
  return decompose(element, face, {false, true}, true);
}

int disc_fnm_tsd_sse(Transducer& element, DiscFace face) {
  if (is_silent(element)) return 0;
  require_excited_output(element);
  const TimeAxis axis(element);
  ExcitationFunction& signal = *element.excitation;
  const int terms = signal.number_of_tsd_terms();
  const auto samples = static_cast<std::size_t>(axis.samples);
  const ScratchArray<float> temporal(static_cast<std::size_t>(terms) * samples), trace(samples);
  signal.temporal_tsd(temporal.data(), element.time_vector, axis.samples, static_cast<float>(axis.time_delay));
  const ScratchArray<Float4> spatial(terms);
  const double pulse_width = signal.get_pulse_width();
  for_each_signed_disc(face, [&](double radius, double sign) {
    const DiscRimTables tables(*element.integral, radius, transient_factor(*element.medium, radius, sign));
    const float c = static_cast<float>(element.medium->_soundspeed);
    const auto fill = [&](RayBlock& block) { fill_in_float(tables, c, block); };
    for_each_disc_ray_block(element, tables, fill, [&](const RayBlock& block) {
      for (int p = 0; p < block.count; ++p) {
        std::fill_n(trace.data(), samples, 0.0f);
        for (int j = 0; j < block.n; j += 4) {
          Float4 delay = {}, weight = {};
          const int rays = std::min(4, block.n - j);
          for (int ray = 0; ray < rays; ++ray) {
            delay[ray] = static_cast<float>(block.delay[RayBlock::capacity * (j + ray) + p]);
            weight[ray] = static_cast<float>(block.weight[RayBlock::capacity * (j + ray) + p]);
          }
          signal.spatial_tsd(spatial.data(), delay);
          for (int ray = 0; ray < rays; ++ray) {
            const Span span = axis.within_pulse(static_cast<double>(delay[ray]), pulse_width);
            for (int m = 0; m < terms; ++m) {
              const float factor = spatial[m][ray] * weight[ray];
              const float* const of_term = temporal.data() + static_cast<std::size_t>(m) * samples;
              for (int k = span.first; k < span.last; ++k) trace[k] += factor * of_term[k];
            }
          }
        }
        const int first = axis.within_pulse(block.first[p], pulse_width).first;
        const int last = axis.within_pulse(block.reference[p], pulse_width).last;
        for (int k = first; k < last; ++k) {
          const double t = axis.times[k] - block.reference[p] - axis.time_delay;
          trace[k] -= static_cast<float>(signal.at(t) * block.weight_sum[p]);
        }
        for (std::size_t k = 0; k < samples; ++k) trace[k] *= static_cast<float>(element.amplitude);
        element.superpose_transient_pressure(block.index[p], trace.data());
      }
    });
  });
  return 0;
}

int disc_rayleigh_transient(Transducer& element, DiscFace face) {
  if (is_silent(element)) return 0;
  require_excited_output(element);
  const TimeAxis axis(element);
  const DirectSum sum(*element.excitation, SignalForm::derivative, axis, false);
  const Medium& medium = *element.medium;
  const double c = medium._soundspeed, pulse_width = element.excitation->get_pulse_width();
  const double factor = (medium._rho_density + medium._rho_density) / two_pi;
  const int n = element.integral->get_npoints();
  const std::size_t cells = static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
  const ScratchArray<double> cosine(n), weight(cells), delay(cells);
  const ScratchArray<double> trace(padded(axis.samples));
  fill_cosines_of_midpoints(cosine, n, pi);
  for_each_signed_disc(face, [&](double radius, double sign) {
    for_each_local_point(element, [&](int i, const CartesianCoordinate& p) {
      if (!is_in_front(p)) return;
      const DiscArrivals arrivals(p, radius, c);
      std::size_t cell = 0;
      for (int ring = 0; ring < n; ++ring) {
        const double sigma = midpoint(ring, n, radius);
        const double s = sigma * sigma + arrivals.r * arrivals.r + p.z * p.z;
        for (int j = 0; j < n; ++j, ++cell) {
          const double distance = std::sqrt(s - 2 * sigma * arrivals.r * cosine[j]);
          weight[cell] = sign * (radius / n * sigma * (pi / n) * factor / distance);
          delay[cell] = distance / c;
        }
      }
      std::fill_n(trace.data(), padded(axis.samples), 0.0);
      const Span window = axis.between(arrivals.first, arrivals.far_rim, pulse_width);
      sum.add(weight.data(), delay.data(), 1, cells, window, trace.data());
      for (int k = 0; k < axis.samples; ++k) trace[k] *= element.amplitude;
      element.superpose_transient_pressure(i, trace.data());
    });
  });
  return 0;
}

}  // namespace kesto
