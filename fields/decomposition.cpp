#include "fields/decomposition.h"

#include <algorithm>
#include <cmath>
#include <type_traits>

#include "core/internal/pending_array.h"
#include "fields/decomposition_lanes.h"

namespace kesto {

namespace {

using Laned = void (*)(const ExcitationFunction&, const DecompositionArguments&);

// Null where the signal is none of the analytic pulses, its phases are beyond the vector functions or running sums
// lose.
Laned laned_for(const ExcitationFunction& signal, const TimeAxis& axis) {
  return visit_pulse_lanes<Laned>(signal, [&](const auto& lanes) -> Laned {
    const double longest = axis.longest() + std::fabs(axis.time_delay) + lanes.width;
    if (!lanes.fits(longest) || !lanes.factors_last()) return nullptr;
    return kernel_on<SuperposeRunningSums<std::decay_t<decltype(lanes)>>>(chosen_vector_target());
  });
}

std::size_t differences_of(Span time_block, int terms) {
  const int samples = std::min(samples_of_stretch, time_block.last - time_block.first);
  return static_cast<std::size_t>(samples) * static_cast<std::size_t>(terms * RayBlock::capacity);
}

}  // namespace

int samples_of_time_block(int samples, int terms) {
  constexpr int doubles = (32 << 20) / static_cast<int>(sizeof(double));
  const int traces = RayBlock::capacity + 1, complex_parts = 4;  // the complex terms, and their two real ones each
  return std::clamp(doubles / (complex_parts * std::max(terms, 1) + traces), 1, std::max(samples, 1));
}

Decomposition::Decomposition(Transducer& element, const TimeAxis& axis, Span time_block, DecompositionForm form)
    : element_(element),
      signal_(*element.excitation),
      axis_(axis),
      time_block_(time_block),
      form_(form),
      laned_(laned_for(signal_, axis)),
      complex_(form.terms == DecompositionForm::Terms::through_complex && laned_ == nullptr),
      terms_(signal_.number_of_tsd_terms() * (complex_ ? 2 : 1)),
      temporal_(table_size()),
      differences_(laned_ != nullptr ? differences_of(time_block, terms_) : 0),
      spatial_(terms_),
      complex_spatial_(complex_ ? terms_ / 2 : 0),
      traces_(laned_ != nullptr ? 0 : time_block.last - time_block.first) {
  fill_temporal();
  if (laned_ != nullptr) std::fill_n(differences_.data(), differences_of(time_block, terms_), 0.0);
}

void Decomposition::fill_temporal() {
  const int samples = time_block_.last - time_block_.first;
  TimeSamples times_of_block;
  const TimeSamples* times = element_.time_vector;
  if (samples < axis_.samples) {
    PendingArray values = PendingArray::zeros(samples);
    std::copy_n(axis_.times.data() + time_block_.first, samples, values.data());
    values.replace(times_of_block.time_values);
    times_of_block.nt = times_of_block.nt_local = samples;
    times_of_block.deltat_ = times->deltat();
    times_of_block.tmin_ = axis_.times[time_block_.first], times_of_block.tmax_ = axis_.times[time_block_.last - 1];
    times = &times_of_block;
  }
  if (!complex_) {
    signal_.temporal_tsd(temporal_.data(), times, samples, axis_.time_delay);
    return;
  }
  // Re(s T) = Re s Re T + Im s (-Im T): a complex term is two real ones.
  const std::size_t half = table_size() / 2;
  const ScratchArray<std::complex<double>> complex_terms(half);
  signal_.temporal_tsd(complex_terms.data(), times, samples, axis_.time_delay);
  for (std::size_t i = 0; i < half; ++i) {
    temporal_[i] = complex_terms[i].real();
    temporal_[half + i] = -complex_terms[i].imag();
  }
}

void Decomposition::superpose(const RayBlock& block) {
  laned_ != nullptr ? superpose_in_lanes(block) : superpose_ray_by_ray(block);
}

void Decomposition::superpose(int i, const DelayedSlope& slope) {
  const Span span = intersection_of(axis_.within_pulse(slope.delay, pulse_width()), time_block_);
  superpose_slope(element_, axis_, slope, span, i);
}

void Decomposition::superpose_in_lanes(const RayBlock& block) {
  DecompositionArguments d;
  d.block = &block;
  d.times = axis_.times.data(), d.temporal = temporal_.data();
  d.time_block = time_block_, d.samples = axis_.samples;
  d.start = axis_.start, d.per_sample = axis_.per_sample, d.time_delay = axis_.time_delay;
  d.pulse_width = pulse_width(), d.amplitude = element_.amplitude;
  d.reference_start = form_.reference;
  d.rounded_to_float = form_.samples == DecompositionForm::Samples::rounded_to_float;
  d.differences = differences_.data();
  d.buffer = element_.transient_pressure, d.points = element_.global_coordinate_grid->npoints;
  laned_(signal_, d);
}

void Decomposition::add_ray(double weight, double delay, double* trace) {
  if (!complex_) {
    signal_.spatial_tsd(spatial_.data(), delay);
  } else {
    const int half = terms_ / 2;
    signal_.spatial_tsd(complex_spatial_.data(), delay);
    for (int m = 0; m < half; ++m) {
      spatial_[m] = complex_spatial_[m].real();
      spatial_[half + m] = complex_spatial_[m].imag();
    }
  }
  const Span span = intersection_of(axis_.within_pulse(delay, pulse_width()), time_block_);
  const std::ptrdiff_t samples = time_block_.last - time_block_.first;
  for (int k = span.first - time_block_.first; k < span.last - time_block_.first; ++k) {
    double v = 0;
    for (int m = 0; m < terms_; ++m) v += spatial_[m] * weight * temporal_[samples * m + k];
    trace[k] += v;
  }
}

Span Decomposition::of_reference(const RayBlock& block, int p) const {
  const Span span = form_.reference == ReferenceStart::first_arrival
                        ? axis_.within_cut_pulse(block.arrivals[p].first, block.reference[p], pulse_width())
                        : axis_.within_pulse(block.reference[p], pulse_width());
  return intersection_of(span, time_block_);
}

void Decomposition::superpose_ray_by_ray(const RayBlock& block) {
  const Span all = {0, time_block_.last - time_block_.first};
  traces_.clear(block.count, all);
  for (int p = 0; p < block.count; ++p) {
    double* const trace = traces_.of(p);
    for (int j = 0; j < block.rays; ++j) {
      add_ray(block.weight[RayBlock::capacity * j + p], block.delay[RayBlock::capacity * j + p], trace);
    }
    const Span span = of_reference(block, p);
    for (int k = span.first; k < span.last; ++k) {
      trace[k - time_block_.first] -=
          signal_.at(axis_.times[k] - block.reference[p] - axis_.time_delay) * block.weight_sum[p];
    }
    for (int k = 0; k < all.last; ++k) {
      trace[k] *= element_.amplitude;
      if (form_.samples == DecompositionForm::Samples::rounded_to_float) {
        trace[k] = static_cast<double>(static_cast<float>(trace[k]));
      }
    }
  }
  traces_.superpose(element_, block.index, block.count, all, 1, time_block_.first);
}

}  // namespace kesto
