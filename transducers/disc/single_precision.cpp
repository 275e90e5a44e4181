// The fields of a disc in single precision, four floats at a time.
#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>

#include "core/constants.h"
#include "core/internal/four_floats.h"
#include "core/numerical_integration.h"
#include "fields/context.h"
#include "fields/midpoints.h"
#include "fields/point_road.h"
#include "fields/transient_road.h"
#include "transducers/disc/rays.h"
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

// Rays in single precision on the transient road, ray by ray.
class FourRaysAtATime {
 public:
  FourRaysAtATime(DiscTransducer& element, const TimeAxis& axis)
      : element_(element),
        signal_(*element.excitation),
        axis_(axis),
        terms_(signal_.number_of_tsd_terms()),
        samples_(static_cast<std::size_t>(axis.samples)),
        temporal_(static_cast<std::size_t>(terms_) * samples_),
        trace_(samples_),
        spatial_(terms_) {
    signal_.temporal_tsd(temporal_.data(), element.time_vector, axis.samples, static_cast<float>(axis.time_delay));
  }

  double pulse_width() const { return signal_.get_pulse_width(); }

  void superpose(const RayBlock& block) {
    for (int p = 0; p < block.count; ++p) {
      std::fill_n(trace_.data(), samples_, 0.0f);
      for (int j = 0; j < block.rays; j += 4) add_rays(block, p, j, std::min(4, block.rays - j));
      const int first = axis_.within_pulse(block.arrivals[p].first, pulse_width()).first;
      const int last = axis_.within_pulse(block.reference[p], pulse_width()).last;
      for (int k = first; k < last; ++k) {
        const double t = axis_.times[k] - block.reference[p] - axis_.time_delay;
        trace_[k] -= static_cast<float>(signal_.at(t) * block.weight_sum[p]);
      }
      for (std::size_t k = 0; k < samples_; ++k) trace_[k] *= static_cast<float>(element_.amplitude);
      element_.superpose_transient_pressure(block.index[p], trace_.data());
    }
  }
  void superpose(int, const DelayedSlope&) {}  // a disc has no special points

 private:
  void add_rays(const RayBlock& block, int p, int from, int count) {
    Float4 delay = {}, weight = {};
    for (int ray = 0; ray < count; ++ray) {
      delay[ray] = static_cast<float>(block.delay[RayBlock::capacity * (from + ray) + p]);
      weight[ray] = static_cast<float>(block.weight[RayBlock::capacity * (from + ray) + p]);
    }
    signal_.spatial_tsd(spatial_.data(), delay);
    for (int ray = 0; ray < count; ++ray) {
      const Span span = axis_.within_pulse(static_cast<double>(delay[ray]), pulse_width());
      for (int m = 0; m < terms_; ++m) {
        const float factor = spatial_[m][ray] * weight[ray];
        const float* const of_term = temporal_.data() + static_cast<std::size_t>(m) * samples_;
        for (int k = span.first; k < span.last; ++k) trace_[k] += factor * of_term[k];
      }
    }
  }

  DiscTransducer& element_;
  ExcitationFunction& signal_;
  const TimeAxis& axis_;
  int terms_;
  std::size_t samples_;
  ScratchArray<float> temporal_, trace_;  // temporal: [term][sample]
  ScratchArray<Float4> spatial_;
};

}  // namespace

int DiscTransducer::fnm_cw_sse() {
  const Wave wave = stored_wave(medium_of(*this));
  require_complex_output(*this);
  const Float4 minus_k = broadcast_ps(static_cast<float>(-wave.wavenumber));
  const Float4 minus_alpha = broadcast_ps(static_cast<float>(-wave.attenuation));
  for_each_disc(face(), [&](double a, double sign) {
    const DiscRimTables tables(*integral, a);
    const ScratchArray<double> versine(tables.n);
    fill_versines(versine, *integral);
    const Complex factor = disc_rim_factor(*medium, a, sign * complex_weight);
    superpose_values(*this, is_in_front, [&](const CartesianCoordinate& local) {
      const FloatPoint p(local);
      const float beside = static_cast<float>(std::sqrt(local.x * local.x + local.y * local.y) - a);
      const float a_r_2 = static_cast<float>(2 * a) * p.r;
      Float4 re0, im0;
      complex_exp(minus_alpha * p.z, minus_k * p.z, &re0, &im0);
      ComplexSum4 sum;
      for (int i = 0; i + 4 <= tables.n; i += 4) {
        const Float4 v = rounded_ps(&versine[i]);
        const Float4 d = above_zero(beside * beside + a_r_2 * v);
        const Float4 distance = sqrt_ps(p.z * p.z + d);
        const Float4 g = rounded_ps(&tables.weight[i]) * ((beside - v * p.r) * approximate_reciprocal_ps(d));
        Float4 re, im;
        complex_exp(minus_alpha * distance, minus_k * distance, &re, &im);
        sum.re += g * (re - re0);
        sum.im += g * (im - im0);
      }
      return sum.total() * factor;
    });
  });
  return 0;
}

int DiscTransducer::rayleigh_cw_sse() {
  medium_of(*this);
  if (is_silent(*this)) return 0;
  require_complex_output(*this);
  const Float4 minus_k = broadcast_ps(static_cast<float>(-medium->_f0 * two_pi / medium->_soundspeed));
  const Float4 minus_alpha = broadcast_ps(static_cast<float>(-attenuation_of(*medium)));
  const int n = integral->get_npoints();
  const ScratchArray<double> cosine(n);
  fill_cosines_of_midpoints(cosine, n, pi);
  for_each_disc(face(), [&](double radius, double sign) {
    const Complex factor = disc_rayleigh_factor(*medium, sign * complex_weight);
    superpose_values(*this, is_in_front, [&](const CartesianCoordinate& local) {
      const FloatPoint p(local);
      ComplexSum4 sum;
      for (int ring = 0; ring < n; ++ring) {
        const double sigma = midpoint(ring, n, radius);
        const float area = static_cast<float>(radius / n * sigma * (pi / n));
        const float s = static_cast<float>(sigma * sigma) + (p.z * p.z + p.r2);
        const float sigma_r_2 = 2 * static_cast<float>(sigma) * p.r;
        for (int i = 0; i + 4 <= n; i += 4) {
          const Float4 distance = sqrt_ps(s - sigma_r_2 * rounded_ps(&cosine[i]));
          const Float4 loss = exp_ps(minus_alpha * distance) * area / distance;
          Float4 re, im;
          complex_exp(Float4{}, minus_k * distance, &re, &im);
          sum.re += loss * re;
          sum.im += loss * im;
        }
      }
      return sum.total() * factor;
    });
  });
  return 0;
}

int DiscTransducer::fnm_tsd_sse() {
  if (is_silent(*this)) return 0;
  require_excited_output(*this);
  const TimeAxis axis(*this);
  FourRaysAtATime form(*this, axis);
  for_each_disc(face(), [&](double radius, double sign) {
    superpose_rays(*this, DiscRaysInFloat(*this, radius, sign, TravelTime::by_division), form);
  });
  return 0;
}

}  // namespace kesto
