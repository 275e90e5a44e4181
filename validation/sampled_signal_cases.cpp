// Sampled signals: fields of pulses that were sampled against those of the pulses, and what clipping costs.
#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "excitation/hanning_pulse.h"
#include "excitation/sampled_signal.h"
#include "excitation/t_cubed_pulse.h"
#include "excitation/tone_burst.h"
#include "validation/arrivals.h"
#include "validation/cases.h"
#include "validation/transient_computation.h"

namespace kesto::validation {

namespace {

const ToneBurst tone(1, 1e6, 3e-6, 0, 1);
const HanningPulse hanning(1, 1e6, 3e-6, 0, 2);
constexpr int nodes = 64;
constexpr Sampling sampling = {0.11e-6, 0.0373e-6, 1300};

std::vector<double> samples_of(const ExcitationFunction& pulse, int n) {
  std::vector<double> samples;
  for (int i = 0; i < n; ++i) samples.push_back(pulse.at(pulse.pulse_width * i / (n - 1)));
  return samples;
}

Traces traces(const Geometry& geometry, Method method, const ExcitationFunction& signal) {
  return library_traces(geometry, points_in_time(geometry), sampling, method, signal, nodes);
}

// A tone burst ends and begins again with a bend where the series' period adds a sample: errors fall with the spacing,
// those of a Hanning pulse, whose ends are smooth, with its third power.
void compare_pulses(Report& report, Table& table, const Geometry& geometry) {
  const struct {
    const char* name;
    const ExcitationFunction& pulse;
    double limit;
  } pulses[] = {{"tone burst", tone, 2e-2}, {"Hanning pulse", hanning, 1e-5}};
  for (const auto& p : pulses) {
    const Traces reference = traces(geometry, &Transducer::fnm_transient, p.pulse);
    double error = 0;
    for (int n = 65; n <= 1025; n = 2 * n - 1) {
      const SampledSignal sampled(samples_of(p.pulse, n).data(), n, p.pulse.pulse_width, 0);
      error = error_of(traces(geometry, &Transducer::fnm_transient, sampled), reference);
      table.row("%s,%s,%d,%.4g", geometry.name.c_str(), p.name, n, error);
    }
    report.add({geometry.name + ", sampled " + p.name + ", 1025 samples, and the pulse itself", error, p.limit});
  }
}

// A ringing pulse, as transducers measure: its bins fall off slowly, so that every threshold drops some.
void compare_clipping(Report& report, const Geometry& geometry) {
  constexpr int n = 257;
  const TCubedPulse ringing(1e18, 1e6, 6e-6, 2e6, 3);
  const std::vector<double> samples = samples_of(ringing, n);
  const SampledSignal whole(samples.data(), n, ringing.pulse_width, 0);
  const Traces reference = traces(geometry, &Transducer::fnm_transient, whole);
  Table table(report.path("clipping.csv"), "clip_threshold,kept_bins,signal_error,field_error");
  double previous = 0, decomposed = 0, last = 0;
  bool falls = true;
  for (double threshold = 1e-6; threshold < 0.5; threshold *= std::sqrt(10.0)) {
    const SampledSignal clipped(samples.data(), n, ringing.pulse_width, threshold);
    double largest_sample = 0, signal_error = 0;
    for (int i = 0; i < n; ++i) {
      const double t = ringing.pulse_width * i / (n - 1), sample = samples[static_cast<std::size_t>(i)];
      largest_sample = std::max(largest_sample, std::abs(sample));
      signal_error = std::max(signal_error, std::abs(clipped.at(t) - sample));
    }
    const Traces field = traces(geometry, &Transducer::fnm_transient, clipped);
    last = error_of(field, reference);
    falls = falls && last >= 0.5 * previous;
    previous = std::max(previous, last);
    decomposed = std::max(decomposed, error_of(traces(geometry, &Transducer::fnm_tsd, clipped), field));
    table.row("%.4g,%d,%.4g,%.4g", threshold, clipped.kept_bins(), signal_error / largest_sample, last);
  }
  table.close();
  report.add({geometry.name + ", the clipping error falls with the threshold (0: it does)", falls ? 0.0 : 1.0, 0});
  report.add({geometry.name + ", fnm_tsd of clipped signals and fnm_transient", decomposed, 1e-12});
}

}  // namespace

void sampled_signal_cases(Report& report) {
  report.heading("H  sampled signals: pulses that were sampled, and clipping");
  Table table(report.path("sampled.csv"), "geometry,pulse,samples,error");
  for (const Geometry& geometry : geometries()) {
    if (report.quick && geometry.name != "rectangle") continue;
    compare_pulses(report, table, geometry);
    if (geometry.name == "rectangle") compare_clipping(report, geometry);
  }
  table.close();
}

}  // namespace kesto::validation
