#include "fields/decomposition.h"

#include <algorithm>
#include <cmath>
#include <complex>

#include "core/internal/host.h"
#include "excitation/lanes/pulse_lanes.h"

namespace kesto {

namespace {

constexpr int widest = RayBlock::capacity;

// The integer at or below, for what an index can hold.
template <class T>
KESTO_INLINE Double<T> floor_of(Double<T> x) {
  const Double<T> rounded = (x + round_in_place) - round_in_place;
  return rounded > x ? rounded - 1.0 : rounded;
}

// `position` within 0 and `count`; NaN is 0.
template <class T>
KESTO_INLINE Double<T> clamped(Double<T> position, double count) {
  return position > 0.0 ? (position < count ? position : broadcast<T>(count)) : Double<T>{};
}

template <class T>
struct SpanLanes {
  Double<T> first, last;
};

// TimeAxis::first_within and end_of in lanes.
template <class T>
KESTO_INLINE Double<T> first_within(const Decomposition::Work& w, Double<T> travel_time) {
  const Double<T> position = (travel_time + w.time_delay - w.start) * w.per_sample;
  return -floor_of<T>(-clamped<T>(position, w.samples));
}
template <class T>
KESTO_INLINE Double<T> end_of(const Decomposition::Work& w, Double<T> position) {
  const double count = w.samples;
  const Double<T> bounded = position > -1.0 ? (position < count ? position : broadcast<T>(count)) : broadcast<T>(-1.0);
  return clamped<T>(floor_of<T>(bounded) + 1.0, count);
}

// TimeAxis::within_pulse and within_cut_pulse in lanes.
template <class T>
KESTO_INLINE SpanLanes<T> within_pulse(const Decomposition::Work& w, Double<T> travel_time) {
  return {first_within<T>(w, travel_time),
          end_of<T>(w, (travel_time + w.time_delay - w.start + w.pulse_width) * w.per_sample)};
}
template <class T>
KESTO_INLINE SpanLanes<T> within_cut_pulse(const Decomposition::Work& w, Double<T> starts, Double<T> travel_time) {
  return {first_within<T>(w, starts),
          end_of<T>(w, (travel_time + w.time_delay + w.pulse_width - w.start) * w.per_sample)};
}

template <class T>
KESTO_INLINE Span union_of(SpanLanes<T> spans) {
  Span all = {static_cast<int>(spans.first[0]), static_cast<int>(spans.last[0])};
  for (int lane = 1; lane < T::width; ++lane) {
    all.first = std::min(all.first, static_cast<int>(spans.first[lane]));
    all.last = std::max(all.last, static_cast<int>(spans.last[lane]));
  }
  return all;
}

// Adds the factors of every ray of points p, p + 1, ... where its pulse begins and takes them away where it ends;
// returns the samples from the first begin to the last end.
template <class PulseLanes, class T>
KESTO_INLINE Span scatter_rays(const PulseLanes& pulse, const Decomposition::Work& w, const RayBlock& block, int p) {
  constexpr int terms = PulseLanes::terms, width = T::width;
  Span touched = {w.samples, 0};
  double* const differences = w.differences;
  for (int j = 0; j < block.n; ++j) {
    const Double<T> weight = load<width>(&block.weight[RayBlock::capacity * j + p]);
    const Double<T> delay = load<width>(&block.delay[RayBlock::capacity * j + p]);
    const SpanLanes<T> spans = within_pulse<T>(w, delay);
    Double<T> factors[terms];
    pulse.template spatial_terms<T>(delay, factors);
    double of_ray[terms][width];
    for (int m = 0; m < terms; ++m) store<width>(of_ray[m], weight * factors[m]);
    for (int lane = 0; lane < width; ++lane) {
      const int first = static_cast<int>(spans.first[lane]), last = static_cast<int>(spans.last[lane]);
      if (first >= last) continue;
      touched.first = std::min(touched.first, first);
      touched.last = std::max(touched.last, last);
      double* const begin = differences + std::ptrdiff_t{first} * (terms * width) + lane;
      double* const end = differences + std::ptrdiff_t{last} * (terms * width) + lane;
      for (int m = 0; m < terms; ++m) begin[m * width] += of_ray[m][lane];
      for (int m = 0; m < terms; ++m) end[m * width] -= of_ray[m][lane];
    }
  }
  return touched;
}

template <class PulseLanes, class T>
KESTO_INLINE void superpose_points(const PulseLanes& pulse, const Decomposition::Work& w, const RayBlock& block,
                                   int p) {
  constexpr int terms = PulseLanes::terms, width = T::width;
  const Span rays = scatter_rays<PulseLanes, T>(pulse, w, block, p);
  const Double<T> reference = load<width>(block.reference + p), weight_sum = load<width>(block.weight_sum + p);
  const SpanLanes<T> reference_spans =
      w.cut_reference ? within_cut_pulse<T>(w, load<width>(block.first + p), reference) : within_pulse<T>(w, reference);
  const Span references = union_of<T>(reference_spans);

  int count = block.count - p;
  if (count > width) count = width;
  const bool whole_line = count == width && block.index[p + width - 1] == block.index[p] + width - 1 && !w.float_traces;
  Double<T> running[terms] = {};
  // One sample more, to clear what the last rays took away.
  for (int k = std::min(rays.first, references.first); k <= std::max(rays.last, references.last); ++k) {
    Double<T> value = {};
    if (k >= rays.first && k <= rays.last) {
      double* const at = w.differences + std::ptrdiff_t{k} * (terms * width);
      for (int m = 0; m < terms; ++m) {
        running[m] = running[m] + load<width>(at + m * width);
        store<width>(at + m * width, Double<T>{});
        if (k < rays.last) {
          value = multiply_add<T>(running[m], broadcast<T>(w.temporal[std::ptrdiff_t{w.samples} * m + k]), value);
        }
      }
    }
    if (k >= w.samples) break;
    if (k >= references.first && k < references.last) {
      const double sample = k;
      const Double<T> v = pulse.template at<T>(w.times[k] - reference - w.time_delay) * weight_sum;
      const Bits<T> within = bits_of<T>(sample - reference_spans.last) & ~bits_of<T>(sample - reference_spans.first);
      value = value - where_top_bit<T>(within, v);
    }
    value = value * w.amplitude;
    double* const line = w.buffer + k * w.points;
    if (whole_line) {
      double* const to = line + block.index[p];
      store<width>(to, load<width>(to) + value);
    } else {
      for (int lane = 0; lane < count; ++lane) {
        const double v = value[lane];
        line[block.index[p + lane]] += w.float_traces ? static_cast<double>(static_cast<float>(v)) : v;
      }
    }
  }
}

template <class PulseLanes, class T>
KESTO_INLINE void superpose_block(const PulseLanes pulse, const Decomposition::Work w) {
  for (int p = 0; p < w.block->count; p += T::width) superpose_points<PulseLanes, T>(pulse, w, *w.block, p);
}

template <class PulseLanes>
struct Outermost {
  static PulseLanes lanes_of(const ExcitationFunction& signal) {
    return PulseLanes(static_cast<const typename PulseLanes::Pulse&>(signal));
  }
  static void baseline(const ExcitationFunction& signal, const Decomposition::Work& w) {
    superpose_block<PulseLanes, Baseline>(lanes_of(signal), w);
  }
#if KESTO_X86_64
  KESTO_TARGET_AVX2_FMA static void avx2(const ExcitationFunction& signal, const Decomposition::Work& w) {
    superpose_block<PulseLanes, Avx2Fma>(lanes_of(signal), w);
  }
  KESTO_TARGET_AVX512 static void avx512(const ExcitationFunction& signal, const Decomposition::Work& w) {
    superpose_block<PulseLanes, Avx512>(lanes_of(signal), w);
  }
#endif
};

using Laned = void (*)(const ExcitationFunction&, const Decomposition::Work&);

// Null where the signal is no pulse of that class, its phases are beyond the vector functions or running sums lose.
template <class PulseLanes>
Laned laned(const ExcitationFunction& signal, const TimeAxis& axis) {
  const auto* const pulse = dynamic_cast<const typename PulseLanes::Pulse*>(&signal);
  if (pulse == nullptr) return nullptr;
  const double longest = axis.longest() + std::fabs(axis.time_delay) + pulse->pulse_width;
  const PulseLanes lanes(*pulse);
  if (!lanes.fits(longest) || !lanes.factors_last()) return nullptr;
  return function_on<Outermost<PulseLanes>>(chosen_vector_target());
}

Laned laned_for(const ExcitationFunction& signal, const TimeAxis& axis) {
  if (const Laned tone = laned<ToneBurstLanes>(signal, axis)) return tone;
  if (const Laned hanning = laned<HanningPulseLanes>(signal, axis)) return hanning;
  return laned<TCubedPulseLanes>(signal, axis);
}

}  // namespace

Decomposition::Decomposition(Transducer& element, const TimeAxis& axis, DecompositionForm form)
    : element_(element),
      signal_(*element.excitation),
      axis_(axis),
      form_(form),
      laned_(laned_for(signal_, axis)),
      complex_(form.complex_terms && laned_ == nullptr),
      terms_(signal_.number_of_tsd_terms() * (complex_ ? 2 : 1)),
      temporal_(table_size(axis.samples)),
      differences_(laned_ != nullptr ? widest * table_size(axis.samples + 1) : 0),
      spatial_(terms_),
      complex_spatial_(complex_ ? terms_ / 2 : 0),
      traces_(laned_ != nullptr ? 0 : axis.samples) {
  if (!complex_) {
    signal_.temporal_tsd(temporal_.data(), element.time_vector, axis.samples, axis.time_delay);
  } else {
    // Re(s T) = Re s Re T + Im s (-Im T): a complex term is two real ones.
    const std::size_t half = table_size(axis.samples) / 2;
    const ScratchArray<std::complex<double>> complex_terms(half);
    signal_.temporal_tsd(complex_terms.data(), element.time_vector, axis.samples, axis.time_delay);
    for (std::size_t i = 0; i < half; ++i) {
      temporal_[i] = complex_terms[i].real();
      temporal_[half + i] = -complex_terms[i].imag();
    }
  }
  if (laned_ != nullptr) std::fill_n(differences_.data(), widest * table_size(axis.samples + 1), 0.0);
}

void Decomposition::superpose(const RayBlock& block, bool cut_reference) {
  if (laned_ == nullptr) return superpose_ray_by_ray(block, cut_reference);
  Work w;
  w.block = &block;
  w.times = axis_.times.data(), w.temporal = temporal_.data(), w.samples = axis_.samples;
  w.start = axis_.start, w.per_sample = axis_.per_sample, w.time_delay = axis_.time_delay;
  w.pulse_width = signal_.get_pulse_width(), w.amplitude = element_.amplitude;
  w.cut_reference = cut_reference, w.float_traces = form_.float_traces;
  w.differences = differences_.data();
  w.buffer = element_.transient_pressure, w.points = element_.global_coordinate_grid->npoints;
  laned_(signal_, w);
}

void Decomposition::add_ray(double weight, double delay, double* trace) {
  if (!complex_) {
    signal_.spatial_tsd(spatial_.data(), delay);
  } else {
    signal_.spatial_tsd(complex_spatial_.data(), delay);
    const int half = terms_ / 2;
    for (int m = 0; m < half; ++m) {
      spatial_[m] = complex_spatial_[m].real();
      spatial_[half + m] = complex_spatial_[m].imag();
    }
  }
  const Span span = axis_.within_pulse(delay, signal_.get_pulse_width());
  for (int k = span.first; k < span.last; ++k) {
    double v = 0;
    for (int m = 0; m < terms_; ++m) v += spatial_[m] * weight * temporal_[std::ptrdiff_t{m} * axis_.samples + k];
    trace[k] += v;
  }
}

void Decomposition::superpose_ray_by_ray(const RayBlock& block, bool cut_reference) {
  const Span all = {0, axis_.samples};
  const double pulse_width = signal_.get_pulse_width();
  traces_.clear(block.count, all);
  for (int p = 0; p < block.count; ++p) {
    double* const trace = traces_.of(p);
    for (int j = 0; j < block.n; ++j) {
      add_ray(block.weight[RayBlock::capacity * j + p], block.delay[RayBlock::capacity * j + p], trace);
    }
    const Span span = cut_reference ? axis_.within_cut_pulse(block.first[p], block.reference[p], pulse_width)
                                    : axis_.within_pulse(block.reference[p], pulse_width);
    for (int k = span.first; k < span.last; ++k) {
      trace[k] -= signal_.at(axis_.times[k] - block.reference[p] - axis_.time_delay) * block.weight_sum[p];
    }
    for (int k = 0; k < axis_.samples; ++k) {
      trace[k] *= element_.amplitude;
      if (form_.float_traces) trace[k] = static_cast<double>(static_cast<float>(trace[k]));
    }
  }
  traces_.superpose(element_, block.index, block.count, all, 1);
}

}  // namespace kesto
