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

constexpr int rays_at_a_time = 4;

bool is_interpolated(const ExcitationFunction& signal) {
  const auto* const sampled = dynamic_cast<const SampledSignal*>(&signal);
  return sampled != nullptr && InterpolatedSignal::serves(*sampled);
}

std::size_t differences_of(Span time_block, int terms) {
  const int samples = std::min(samples_of_stretch, time_block.last - time_block.first);
  return static_cast<std::size_t>(samples) * static_cast<std::size_t>(terms * RayBlock::capacity);
}

}  // namespace

int samples_of_time_block(int samples, const ExcitationFunction& signal) {
  if (is_interpolated(signal)) return std::max(samples, 1);
  constexpr int doubles = (32 << 20) / static_cast<int>(sizeof(double));
  const int traces = RayBlock::capacity + 1, complex_parts = 4;  // the complex terms, and their two real ones each
  const int terms = std::max(signal.number_of_tsd_terms(), 1);
  return std::clamp(doubles / (complex_parts * terms + traces), 1, std::max(samples, 1));
}

Decomposition::Decomposition(Transducer& element, const TimeAxis& axis, Span time_block, DecompositionForm form,
                             const DecompositionArrays* given)
    : element_(element),
      signal_(*element.excitation),
      axis_(axis),
      time_block_(time_block),
      form_(form),
      laned_(laned_for(signal_, axis)),
      complex_(form.terms == DecompositionForm::Terms::through_complex && laned_ == nullptr),
      terms_(is_interpolated(signal_) ? 0 : signal_.number_of_tsd_terms() * (complex_ ? 2 : 1)),
      own_(given != nullptr ? 0 : table_size() + rays_at_a_time * static_cast<std::size_t>(terms_) + length()),
      differences_(laned_ != nullptr ? differences_of(time_block, terms_) : 0),
      complex_spatial_(complex_ ? terms_ / 2 : 0),
      traces_(is_interpolated(signal_) ? axis.samples : 0) {
  if (is_interpolated(signal_)) {
    interpolated_.emplace(signal_, SignalForm::value, axis, DelayOrder::travel_time_first);
    return;
  }
  if (given != nullptr) {
    arrays_ = *given;
  } else {
    arrays_.temporal = own_.data();
    for (int ray = 0; ray < rays_at_a_time; ++ray) arrays_.spatial[ray] = own_.data() + table_size() + ray * terms_;
    arrays_.trace = own_.data() + table_size() + rays_at_a_time * terms_;
  }
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
    signal_.temporal_tsd(arrays_.temporal, times, samples, axis_.time_delay);
    return;
  }
  // Re(s T) = Re s Re T + Im s (-Im T): a complex term is two real ones.
  const std::size_t half = table_size() / 2;
  const ScratchArray<std::complex<double>> complex_terms(half);
  signal_.temporal_tsd(complex_terms.data(), times, samples, axis_.time_delay);
  for (std::size_t i = 0; i < half; ++i) {
    arrays_.temporal[i] = complex_terms[i].real();
    arrays_.temporal[half + i] = -complex_terms[i].imag();
  }
}

void Decomposition::superpose(const RayBlock& block) {
  if (block.rays == 0) return;  // a rule without nodes
  if (interpolated_) return superpose_interpolated(block);
  laned_ != nullptr ? superpose_in_lanes(block) : superpose_ray_by_ray(block);
}

void Decomposition::superpose(int i, const DelayedSlope& slope) {
  const Span span = intersection_of(axis_.within_pulse(slope.delay, pulse_width()), time_block_);
  superpose_slope(element_, axis_, slope, span, i);
}

void Decomposition::superpose_in_lanes(const RayBlock& block) {
  DecompositionArguments d;
  d.block = &block;
  d.times = axis_.times.data(), d.temporal = arrays_.temporal;
  d.time_block = time_block_, d.samples = axis_.samples;
  d.start = axis_.start, d.per_sample = axis_.per_sample, d.time_delay = axis_.time_delay;
  d.pulse_width = pulse_width(), d.amplitude = element_.amplitude;
  d.reference_start = form_.reference;
  d.rounded_to_float = form_.samples == DecompositionForm::Samples::rounded_to_float;
  d.differences = differences_.data();
  d.buffer = element_.transient_pressure, d.points = element_.global_coordinate_grid->npoints;
  laned_(signal_, d);
}

double Decomposition::weighted(double sample) const {
  const double v = sample * element_.amplitude;
  return form_.samples == DecompositionForm::Samples::rounded_to_float ? static_cast<double>(static_cast<float>(v)) : v;
}

void Decomposition::fill_spatial(double delay, double* spatial) {
  if (!complex_) return signal_.spatial_tsd(spatial, delay);
  const int half = terms_ / 2;
  signal_.spatial_tsd(complex_spatial_.data(), delay);
  for (int m = 0; m < half; ++m) {
    spatial[m] = complex_spatial_[m].real();
    spatial[half + m] = complex_spatial_[m].imag();
  }
}

void Decomposition::add_ray(double weight, double delay, const double* spatial, double* trace) const {
  const Span span = intersection_of(axis_.within_pulse(delay, pulse_width()), time_block_);
  const std::ptrdiff_t samples = time_block_.last - time_block_.first;
  for (int k = span.first - time_block_.first; k < span.last - time_block_.first; ++k) {
    double v = 0;
    for (int m = 0; m < terms_; ++m) v += spatial[m] * weight * arrays_.temporal[samples * m + k];
    trace[k] += v;
  }
}

Span Decomposition::of_reference(const RayBlock& block, int p) const {
  const Span span = form_.reference == ReferenceStart::first_arrival
                        ? axis_.within_cut_pulse(block.arrivals[p].first, block.reference[p], pulse_width())
                        : axis_.within_pulse(block.reference[p], pulse_width());
  return intersection_of(span, time_block_);
}

void Decomposition::superpose_interpolated(const RayBlock& block) {
  Span windows[RayBlock::capacity], all = {axis_.samples, 0};
  for (int p = 0; p < block.count; ++p) {
    windows[p] = interpolated_->audible(block, p);
    all = union_of(all, windows[p]);
  }
  traces_.clear(block.count, all);
  // The signal's own bounds end the reference, and begin it unless it is cut.
  const auto reference_window = [&](int p) -> Span {
    const double first = block.arrivals[p].first;
    if (form_.reference == ReferenceStart::own || !(first > block.reference[p])) return windows[p];
    return {std::max(axis_.first_within(first), windows[p].first), windows[p].last};
  };
  for (int p = 0; p < block.count; ++p) {
    const double minus_sum = -block.weight_sum[p];
    interpolated_->add(&block.weight[p], &block.delay[p], RayBlock::capacity, static_cast<std::size_t>(block.rays),
                       windows[p], traces_.of(p));
    interpolated_->add(&minus_sum, &block.reference[p], 1, 1, reference_window(p), traces_.of(p));
    for (int k = windows[p].first; k < windows[p].last; ++k) traces_.of(p)[k] = weighted(traces_.of(p)[k]);
  }
  traces_.superpose(element_, block.index, block.count, all, 1);
}

void Decomposition::superpose_ray_by_ray(const RayBlock& block) {
  const int samples = static_cast<int>(length());
  const std::ptrdiff_t points = element_.global_coordinate_grid->npoints;
  for (int p = 0; p < block.count; ++p) {
    double* const trace = arrays_.trace;
    std::fill_n(trace, samples, 0.0);
    for (int j = 0; j < block.rays; j += rays_at_a_time) {
      const int count = std::min(rays_at_a_time, block.rays - j);
      const double* const weight = &block.weight[RayBlock::capacity * j + p];
      const double* const delay = &block.delay[RayBlock::capacity * j + p];
      for (int i = 0; i < count; ++i) fill_spatial(delay[RayBlock::capacity * i], arrays_.spatial[i]);
      for (int i = 0; i < count; ++i) {
        add_ray(weight[RayBlock::capacity * i], delay[RayBlock::capacity * i], arrays_.spatial[i], trace);
      }
    }
    const Span span = of_reference(block, p);
    for (int k = span.first; k < span.last; ++k) {
      trace[k - time_block_.first] -=
          signal_.at(axis_.times[k] - block.reference[p] - axis_.time_delay) * block.weight_sum[p];
    }
    double* const buffer = element_.transient_pressure + time_block_.first * points + block.index[p];
    for (int k = 0; k < samples; ++k) buffer[k * points] += weighted(trace[k]);
  }
}

}  // namespace kesto
