#include "fields/direct_transient.h"

#include <algorithm>
#include <limits>

#include "core/lanes/outermost.h"
#include "excitation/lanes/pulse_lanes.h"

namespace kesto {

namespace {

// The samples that one ray can reach, a sample too many on either side: the pulse's own bounds decide.
inline Span reach_of(double delay, const DirectSum::Work& w) {
  if (!w.regular) return w.window;
  const double arrival = (delay - w.origin) * w.per_sample;
  const int first = clamped_index(arrival - 1, w.window.last);
  const int last = clamped_index(arrival + w.pulse_width * w.per_sample + 2, w.window.last);
  return {first > w.window.first ? first : w.window.first, last};
}

// Vectors overhang the window's last sample: what they leave there is not of the sum.
template <class PulseLanes, SignalForm form, class T>
KESTO_INLINE void add_rays(const PulseLanes pulse, const DirectSum::Work w) {
  for (std::size_t j = 0; j < w.n; ++j) {
    const double weight = w.weight[w.stride * j], delay = w.delay[w.stride * j];
    const Span reach = reach_of(delay, w);
    for (int k = reach.first; k < reach.last; k += T::width) {
      const Double<T> t = load<T::width>(w.times + k) - delay - w.then_subtracted;
      const Double<T> v = form == SignalForm::value ? pulse.template at<T>(t) : pulse.template derivative<T>(t);
      store<T::width>(w.trace + k, multiply_add<T>(broadcast<T>(weight), v, load<T::width>(w.trace + k)));
    }
  }
}

template <class PulseLanes, SignalForm form>
struct Outermost {
  static PulseLanes lanes_of(const ExcitationFunction& signal) {
    return PulseLanes(static_cast<const typename PulseLanes::Pulse&>(signal));
  }
  static void baseline(const ExcitationFunction& signal, const DirectSum::Work& w) {
    add_rays<PulseLanes, form, Baseline>(lanes_of(signal), w);
  }
#if KESTO_X86_64
  KESTO_TARGET_AVX2_FMA static void avx2(const ExcitationFunction& signal, const DirectSum::Work& w) {
    add_rays<PulseLanes, form, Avx2Fma>(lanes_of(signal), w);
  }
  KESTO_TARGET_AVX512 static void avx512(const ExcitationFunction& signal, const DirectSum::Work& w) {
    add_rays<PulseLanes, form, Avx512>(lanes_of(signal), w);
  }
#endif
};

using Laned = void (*)(const ExcitationFunction&, const DirectSum::Work&);

// Null where the signal is no pulse of that class or its phases are beyond the vector functions.
template <class PulseLanes>
Laned laned(const ExcitationFunction& signal, SignalForm form) {
  const auto* const pulse = dynamic_cast<const typename PulseLanes::Pulse*>(&signal);
  if (pulse == nullptr || !PulseLanes(*pulse).fits(pulse->pulse_width)) return nullptr;
  const VectorTarget target = chosen_vector_target();
  return form == SignalForm::value ? function_on<Outermost<PulseLanes, SignalForm::value>>(target)
                                   : function_on<Outermost<PulseLanes, SignalForm::derivative>>(target);
}

Laned laned_for(const ExcitationFunction& signal, SignalForm form) {
  if (const Laned tone = laned<ToneBurstLanes>(signal, form)) return tone;
  if (const Laned hanning = laned<HanningPulseLanes>(signal, form)) return hanning;
  return laned<TCubedPulseLanes>(signal, form);
}

}  // namespace

DirectSum::DirectSum(const ExcitationFunction& signal, SignalForm form, const TimeAxis& axis, bool time_delay_first)
    : signal_(signal),
      form_(form),
      axis_(axis),
      then_subtracted_(time_delay_first ? 0 : axis.time_delay),
      times_(padded(axis.samples)),
      laned_(laned_for(signal, form)) {
  for (std::size_t k = 0; k < padded(axis.samples); ++k) {
    times_[k] = time_delay_first ? axis.times[k] - axis.time_delay : axis.times[k];
  }
}

Span DirectSum::reach(const RayBlock& block) const {
  if (laned_ == nullptr || !axis_.regular) return {0, axis_.samples};
  double earliest = std::numeric_limits<double>::infinity(), latest = -earliest;
  for (int p = 0; p < block.count; ++p) {
    earliest = std::min(earliest, block.reference[p]);
    latest = std::max(latest, block.reference[p]);
    for (int j = 0; j < block.n; ++j) {
      earliest = std::min(earliest, block.delay[RayBlock::capacity * j + p]);
      latest = std::max(latest, block.delay[RayBlock::capacity * j + p]);
    }
  }
  const Span span = axis_.between(earliest, latest, signal_.get_pulse_width());
  return {std::max(span.first - 1, 0), std::min(span.last + 1, axis_.samples)};
}

void DirectSum::add(const double* weight, const double* delay, std::size_t stride, std::size_t n, Span window,
                    double* trace) const {
  if (window.first >= window.last) return;
  if (laned_ != nullptr) {
    Work w;
    w.weight = weight, w.delay = delay, w.stride = stride, w.n = n;
    w.times = times_.data(), w.then_subtracted = then_subtracted_;
    w.trace = trace, w.window = window;
    w.origin = axis_.start - axis_.time_delay, w.per_sample = axis_.per_sample;
    w.pulse_width = signal_.get_pulse_width(), w.regular = axis_.regular;
    laned_(signal_, w);
    std::fill_n(trace + window.last, sample_padding, 0.0);
    return;
  }
  for (std::size_t j = 0; j < n; ++j) {
    const double w = weight[stride * j], travel_time = delay[stride * j];
    for (int k = window.first; k < window.last; ++k) {
      const double t = times_[k] - travel_time - then_subtracted_;
      trace[k] += w * (form_ == SignalForm::value ? signal_.at(t) : signal_.derivative(t));
    }
  }
}

}  // namespace kesto
