#include "transducers/direct_transient.h"

#include <algorithm>

#include "core/kernels/vector_target.h"
#include "excitation/pulse_lanes.h"

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

// Beyond a window's last sample, where vectors overhang, the pulse is 0 or the trace is not looked at.
template <class PulseLanes, SignalForm form, class T>
KESTO_INLINE void add_rays(const PulseLanes pulse, const DirectSum::Work w) {
  for (int j = 0; j < w.n; ++j) {
    const double weight = w.weight[std::ptrdiff_t{w.stride} * j], delay = w.delay[std::ptrdiff_t{w.stride} * j];
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
  using Function = void (*)(const ExcitationFunction&, const DirectSum::Work&);
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
  static Function on(VectorTarget target) {
    switch (target) {
#if KESTO_X86_64
      case VectorTarget::avx2: return avx2;
      case VectorTarget::avx512: return avx512;
#endif
      default: return baseline;
    }
  }
};

// The lane function of a signal, null where it is no pulse of that class or its phases are beyond the vector functions.
template <class PulseLanes>
auto laned(const ExcitationFunction& signal, SignalForm form) {
  typename Outermost<PulseLanes, SignalForm::value>::Function function = nullptr;
  const auto* const pulse = dynamic_cast<const typename PulseLanes::Pulse*>(&signal);
  if (pulse == nullptr || !PulseLanes(*pulse).fits(pulse->pulse_width)) return function;
  const VectorTarget target = chosen_vector_target();
  function = form == SignalForm::value ? Outermost<PulseLanes, SignalForm::value>::on(target)
                                       : Outermost<PulseLanes, SignalForm::derivative>::on(target);
  return function;
}

}  // namespace

DirectSum::DirectSum(const ExcitationFunction& signal, SignalForm form, const TimeAxis& axis, bool time_delay_first)
    : signal_(signal),
      form_(form),
      axis_(axis),
      then_subtracted_(time_delay_first ? 0 : axis.time_delay),
      times_(axis.samples + sample_padding),
      laned_(laned<ToneBurstLanes>(signal, form)) {
  for (int k = 0; k < axis.samples + sample_padding; ++k) {
    times_[k] = time_delay_first ? axis.times[k] - axis.time_delay : axis.times[k];
  }
  if (laned_ == nullptr) laned_ = laned<HanningPulseLanes>(signal, form);
  if (laned_ == nullptr) laned_ = laned<TCubedPulseLanes>(signal, form);
}

Span DirectSum::reach(const RayBlock& block) const {
  if (laned_ == nullptr || !axis_.regular) return {0, axis_.samples};
  double earliest = block.reference[0], latest = earliest;
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

void DirectSum::add(const double* weight, const double* delay, int stride, int n, Span window, double* trace) const {
  if (window.first >= window.last) return;
  if (laned_ != nullptr) {
    laned_(signal_, {weight, delay, stride, n, times_.data(), then_subtracted_, trace, window,
                     axis_.start - axis_.time_delay, axis_.per_sample, signal_.get_pulse_width(), axis_.regular});
    return;
  }
  for (int j = 0; j < n; ++j) {
    const double w = weight[std::ptrdiff_t{stride} * j], travel_time = delay[std::ptrdiff_t{stride} * j];
    for (int k = window.first; k < window.last; ++k) {
      const double t = times_[k] - travel_time - then_subtracted_;
      trace[k] += w * (form_ == SignalForm::value ? signal_.at(t) : signal_.derivative(t));
    }
  }
}

}  // namespace kesto
