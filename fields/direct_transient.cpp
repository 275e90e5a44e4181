#include "fields/direct_transient.h"

#include <algorithm>

#include "excitation/lanes/pulse_lanes.h"

namespace kesto {

namespace {

// The samples that one ray can reach, a sample too many on either side: the pulse's own bounds decide.
inline Span reached_by(double delay, const DirectArguments& d) {
  if (!d.regular) return d.window;
  const double arrival = (delay - d.origin) * d.per_sample;
  const int first = clamped_index(arrival - 1, d.window.last);
  const int last = clamped_index(arrival + d.pulse_width * d.per_sample + 2, d.window.last);
  return {first > d.window.first ? first : d.window.first, last};
}

// Vectors overhang the window's last sample: what they leave there is not of the sum.
template <class PulseLanes, SignalForm form>
struct AddRays {
  using Signature = void(const ExcitationFunction& signal, const DirectArguments& arguments);

  template <class T>
  KESTO_INLINE static void run(const ExcitationFunction& signal, const DirectArguments& arguments) {
    const DirectArguments d = arguments;
    const PulseLanes pulse(static_cast<const typename PulseLanes::Pulse&>(signal));
    for (std::size_t j = 0; j < d.rays; ++j) {
      const double weight = d.weight[d.stride * j], delay = d.delay[d.stride * j];
      const Span reached = reached_by(delay, d);
      for (int k = reached.first; k < reached.last; k += T::width) {
        const Double<T> t = load<T::width>(d.times + k) - delay - d.then_subtracted;
        const Double<T> v = form == SignalForm::value ? pulse.template at<T>(t) : pulse.template derivative<T>(t);
        store<T::width>(d.trace + k, multiply_add<T>(broadcast<T>(weight), v, load<T::width>(d.trace + k)));
      }
    }
  }
};

using Laned = void (*)(const ExcitationFunction&, const DirectArguments&);

// Null where the signal is none of the analytic pulses or its phases are beyond the vector functions.
Laned laned_for(const ExcitationFunction& signal, SignalForm form) {
  return visit_pulse_lanes<Laned>(signal, [form](const auto& lanes) -> Laned {
    using PulseLanes = std::decay_t<decltype(lanes)>;
    if (!lanes.fits(lanes.width)) return nullptr;
    const VectorTarget target = chosen_vector_target();
    return form == SignalForm::value ? kernel_on<AddRays<PulseLanes, SignalForm::value>>(target)
                                     : kernel_on<AddRays<PulseLanes, SignalForm::derivative>>(target);
  });
}

}  // namespace

DirectSum::DirectSum(const ExcitationFunction& signal, SignalForm form, const TimeAxis& axis, DelayOrder order)
    : signal_(signal),
      form_(form),
      axis_(axis),
      then_subtracted_(order == DelayOrder::time_delay_first ? 0 : axis.time_delay),
      times_(padded(axis.samples)),
      laned_(laned_for(signal, form)) {
  for (std::size_t k = 0; k < padded(axis.samples); ++k) {
    times_[k] = order == DelayOrder::time_delay_first ? axis.times[k] - axis.time_delay : axis.times[k];
  }
  if (const auto* const sampled = dynamic_cast<const SampledSignal*>(&signal)) {
    if (InterpolatedSignal::serves(*sampled)) {
      interpolated_.emplace(*sampled, form, axis, times_.data(), then_subtracted_);
    }
  }
}

Span DirectSum::audible(const RayBlock& block, int p) const {
  if ((laned_ == nullptr && !interpolated_) || !axis_.regular) return {0, axis_.samples};
  double earliest = block.reference[p], latest = earliest;
  for (int j = 0; j < block.rays; ++j) {
    earliest = std::min(earliest, block.delay[RayBlock::capacity * j + p]);
    latest = std::max(latest, block.delay[RayBlock::capacity * j + p]);
  }
  const Span span = axis_.between(earliest, latest, pulse_width());
  return {std::max(span.first - 1, 0), std::min(span.last + 1, axis_.samples)};
}

void DirectSum::add(const RayBlock& block, int p, Span window, double* trace) const {
  const double minus_sum = -block.weight_sum[p];
  add(&block.weight[p], &block.delay[p], RayBlock::capacity, static_cast<std::size_t>(block.rays), window, trace);
  add(&minus_sum, &block.reference[p], 1, 1, window, trace);
}

void DirectSum::add(const double* weight, const double* delay, std::size_t stride, std::size_t n, Span window,
                    double* trace) const {
  if (window.empty()) return;
  if (interpolated_) return interpolated_->add(weight, delay, stride, n, window, trace);
  if (laned_ != nullptr) {
    DirectArguments d;
    d.weight = weight, d.delay = delay, d.stride = stride, d.rays = n;
    d.times = times_.data(), d.then_subtracted = then_subtracted_;
    d.trace = trace, d.window = window;
    d.origin = axis_.start - axis_.time_delay, d.per_sample = axis_.per_sample;
    d.pulse_width = pulse_width(), d.regular = axis_.regular;
    laned_(signal_, d);
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

Span DirectForm::window_of(const RayBlock& block, int p) const {
  if (window_ == DirectWindow::every_sample) return sum_.audible(block, p);
  if (window_ == DirectWindow::of_arrivals_where_regular && !axis_.regular) return {0, axis_.samples};
  return axis_.between(block.arrivals[p].first, block.arrivals[p].last, sum_.pulse_width());
}

void DirectForm::superpose(const RayBlock& block) {
  Span windows[RayBlock::capacity], all = {axis_.samples, 0};
  for (int p = 0; p < block.count; ++p) {
    windows[p] = window_of(block, p);
    all = union_of(all, windows[p]);
  }
  traces_.clear(block.count, all);
  for (int p = 0; p < block.count; ++p) sum_.add(block, p, windows[p], traces_.of(p));
  traces_.superpose(element_, block.index, block.count, all, element_.amplitude);
}

}  // namespace kesto
