#include "fields/interpolated_signal.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/lanes/lane_math.h"

namespace kesto {

namespace {

constexpr int most_powers = 12;
constexpr double longest_cell = 0.5;  // radians of the highest frequency

struct Series {
  const double *omega, *re, *im;
  int bins;
  SignalForm form;
};

// The Taylor coefficients of every cell's middle, for places from -1 to 1.
struct FillCells {
  using Signature = void(const Series& series, const InterpolationTables& tables);

  template <class T>
  KESTO_INLINE static void run(const Series& series_of_caller, const InterpolationTables& tables) {
    const Series series = series_of_caller;
    const InterpolationTables t = tables;
    const Double<T> lane = __builtin_convertvector(Lanes<T::width>::index, Double<T>);
    const double half_cell = 0.5 * t.step / t.parts;
    for (int part = 0; part < t.parts; ++part) {
      double* const of_part =
          t.coefficients + t.stride * static_cast<std::size_t>(part) * static_cast<std::size_t>(t.powers);
      const double middle = (part + 0.5) / t.parts;
      for (std::size_t row = 0; row < t.stride; row += T::width) {
        const Double<T> time = (lane + (static_cast<double>(row) + middle)) * t.step;
        Double<T> sum[most_powers] = {};
        for (int m = 0; m < series.bins; ++m) {
          const double omega = series.omega[m];
          const SinCos<T> w = sincos<T>(omega * time);
          Double<T> re = series.re[m] * w.cos - series.im[m] * w.sin, im = series.re[m] * w.sin + series.im[m] * w.cos;
          if (series.form == SignalForm::derivative) {
            const Double<T> value = re;
            re = -omega * im, im = omega * value;
          }
          const Double<T> turns[4] = {re, -im, -re, im};  // of X e^{j omega t} (j omega)^p
          double factor = 1;
          for (int p = 0; p < most_powers; ++p) {
            sum[p] = multiply_add<T>(turns[p % 4], broadcast<T>(factor), sum[p]);
            factor *= half_cell * omega / (p + 1);
          }
        }
        for (int p = 0; p < most_powers; ++p) {
          if (p < t.powers) store<T::width>(of_part + t.stride * static_cast<std::size_t>(p) + row, sum[p]);
        }
      }
    }
  }
};

// One ray through `samples` samples, which lie in rows from `first_row` on. Vectors overhang the last one.
struct AddInStep {
  using Signature = void(const InterpolationTables& tables, double weight, int first_row, int part, double place,
                         double* trace, int samples);

  template <class T>
  KESTO_INLINE static void run(const InterpolationTables& t, double weight, int first_row, int part, double place,
                               double* trace, int samples) {
    const Double<T> lane = __builtin_convertvector(Lanes<T::width>::index, Double<T>);
    const std::size_t stride = t.stride;
    const int powers = t.powers;
    const double* const cells =
        t.coefficients + stride * static_cast<std::size_t>(part) * static_cast<std::size_t>(powers) + first_row;
    const Double<T> y = broadcast<T>(place);
    for (int k = 0; k < samples; k += T::width) {
      const double* at = cells + k + stride * static_cast<std::size_t>(powers - 1);
      Double<T> v = load<T::width>(at);
      for (int p = powers - 2; p >= 0; --p) v = multiply_add<T>(v, y, load<T::width>(at -= stride));
      if (k + T::width > samples) v = where_top_bit<T>(bits_of<T>(lane + static_cast<double>(k - samples)), v);
      store<T::width>(trace + k, multiply_add<T>(broadcast<T>(weight), v, load<T::width>(trace + k)));
    }
  }
};

// Whether sample k lies where start and step say, but for rounding.
bool is_in_step(const TimeAxis& axis) {
  const double slack = 4 * std::numeric_limits<double>::epsilon() * axis.longest();
  for (int k = 0; k < axis.samples; ++k) {
    if (!(std::fabs(axis.start + k / axis.per_sample - axis.times[k]) <= slack)) return false;
  }
  return true;
}

InterpolationTables cells_for(const SampledSignal& signal, const TimeAxis& axis) {
  constexpr double most_coefficients = 1 << 22;
  const double width = signal.pulse_width;
  const double highest = signal.kept_bins() > 0 ? signal.omega_array[signal.kept_bins() - 1] : 0;
  InterpolationTables t = {};
  t.step = 1 / axis.per_sample, t.per_step = axis.per_sample;
  double rows = width * t.per_step + 2, parts = std::max(1.0, std::ceil(highest * t.step / longest_cell));
  t.in_step = is_in_step(axis) && rows * parts * most_powers <= most_coefficients;
  if (!t.in_step) {
    rows = std::max(1.0, std::ceil(highest * width / longest_cell)), parts = 1;
    t.step = width / rows, t.per_step = rows / width;
  }
  t.rows = static_cast<int>(rows), t.parts = static_cast<int>(parts);
  t.stride = (static_cast<std::size_t>(t.rows) / widest_target + 2) * widest_target;
  t.powers = 1;
  const double reach = 0.5 * highest * t.step / t.parts;
  for (double bound = reach; bound > 2e-16 && t.powers < most_powers; bound *= reach / t.powers) ++t.powers;
  return t;
}

}  // namespace

bool InterpolatedSignal::serves(const SampledSignal& signal) {
  const int bins = signal.kept_bins();
  return bins == 0 || signal.omega_array[bins - 1] * signal.pulse_width < 0.5 * sincos_range;
}

InterpolatedSignal::InterpolatedSignal(const SampledSignal& signal, SignalForm form, const TimeAxis& axis,
                                       const double* times, double then_subtracted)
    : width_(signal.pulse_width),
      times_(times),
      then_subtracted_(then_subtracted),
      samples_(axis.samples),
      origin_(axis.start - axis.time_delay),
      tables_(cells_for(signal, axis)),
      coefficients_(tables_.stride * static_cast<std::size_t>(tables_.parts) *
                    static_cast<std::size_t>(tables_.powers)),
      add_in_step_(kernel_on<AddInStep>(chosen_vector_target())) {
  tables_.coefficients = coefficients_.data();
  kernel_on<FillCells>(chosen_vector_target())({signal.omega_array, signal.frequency_domain_input_signal_real,
                                                signal.frequency_domain_input_signal_imag, signal.kept_bins(), form},
                                               tables_);
}

double InterpolatedSignal::value_at(double t) const {
  if (!(t >= 0 && t <= width_)) return 0;
  const double position = t * tables_.per_step;
  const int row = std::min(static_cast<int>(position), tables_.rows - 1);
  const double y = 2 * (position - row) - 1;
  const double* const cell = tables_.coefficients + row;
  double v = 0;
  for (int p = tables_.powers - 1; p >= 0; --p) v = v * y + cell[tables_.stride * static_cast<std::size_t>(p)];
  return v;
}

void InterpolatedSignal::add(const double* weight, const double* delay, std::size_t stride, std::size_t n, Span window,
                             double* trace) const {
  for (std::size_t j = 0; j < n; ++j) {
    const double w = weight[stride * j], d = delay[stride * j];
    if (!tables_.in_step) {
      for (int k = window.first; k < window.last; ++k) trace[k] += w * value_at(time_along(d, k));
      continue;
    }
    // The samples from the pulse's arrival to its end: which of those beside its bounds are within, their times decide.
    const double arrival = (d - origin_) * tables_.per_step, end = arrival + width_ * tables_.per_step;
    if (!(arrival < samples_ && end > -1)) continue;
    double first = std::ceil(arrival);
    if (first >= 0) {
      const int k = static_cast<int>(first);
      if (k > 0 && time_along(d, k - 1) >= 0) {
        first -= 1;
      } else if (k < samples_ && time_along(d, k) < 0) {
        first += 1;
      }
    }
    int last = clamped_index(std::floor(end) + 1, samples_);
    if (last > 0 && time_along(d, last - 1) > width_) {
      --last;
    } else if (last < samples_ && time_along(d, last) <= width_) {
      ++last;
    }
    const double offset = (first - arrival) * tables_.parts;
    const int part = clamped_index(offset, tables_.parts - 1);
    const int from = std::max(clamped_index(first, samples_), window.first), to = std::min(last, window.last);
    if (from >= to) continue;
    add_in_step_(tables_, w, static_cast<int>(from - first), part, 2 * (offset - part) - 1, trace + from, to - from);
  }
}

}  // namespace kesto
