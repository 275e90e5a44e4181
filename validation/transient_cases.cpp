// Transient fields against closed forms on the axis and at the focus, against continuous waves, and against each other.
#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "excitation/hanning_pulse.h"
#include "excitation/t_cubed_pulse.h"
#include "excitation/tone_burst.h"
#include "validation/arrivals.h"
#include "validation/cases.h"
#include "validation/transient_computation.h"

namespace kesto::validation {

namespace {

constexpr Method direct = &Transducer::fnm_transient;

struct Signal {
  const char* name;
  const ExcitationFunction& v;
};

// Three cycles; an amplitude of 1, because the Hanning pulse's decomposition carries it twice and the t-cubed pulse's
// derivative in part only.
const ToneBurst tone(1, 1e6, 3e-6, 0, 1);
const HanningPulse hanning(1, 1e6, 3e-6, 0, 2);
const TCubedPulse t_cubed(1, 1e6, 3e-6, 0.5e6, 3), growing(1, 1e6, 3e-6, -0.5e6, 3);
const Signal signals[] = {
    {"tone burst", tone}, {"Hanning pulse", hanning}, {"t-cubed pulse", t_cubed}, {"growing t-cubed pulse", growing}};

constexpr Sampling fine = {0.11e-6, 0.0173e-6, 2800}, coarse = {0.11e-6, 0.0973e-6, 500};

Sampling sampling_of(const Report& report) { return report.quick ? coarse : fine; }

bool is_rectangle(const Geometry& geometry) { return geometry.name == "rectangle"; }

class TransientCases {
 public:
  TransientCases(Report& report, Table& table, const Geometry& geometry)
      : report_(report), table_(table), geometry_(geometry), sampling_(sampling_of(report)) {}

  // From each rim, or the apex, all sound arrives on the axis at once, a shell's with the factor 1 / (1 - z / roc):
  // p = rho c [v(t - R_inner / c) - v(t - R_outer / c)] / (1 - z / roc).
  void compare_axis() {
    const std::vector<double> z = geometry_.roc > 0 ? std::vector<double>{1e-3, 5e-3, 15e-3, 24e-3, 26e-3, 45e-3}
                                                    : std::vector<double>{0, 1e-3, 5e-3, 12e-3, 30e-3, 60e-3};
    for (const Signal& signal : signals) {
      Traces closed;
      for (const double height : z) {
        const double c = water.soundspeed, curvature = geometry_.roc > 0 ? 1 / geometry_.roc : 0;
        const double inner = geometry_.hole > 0 ? to_rim_from_axis(geometry_, geometry_.hole, height) : height;
        const double outer = to_rim_from_axis(geometry_, geometry_.radius, height);
        closed.push_back(trace_of([&](double t) {
          return water.impedance() * (signal.v.at(t - inner / c) - signal.v.at(t - outer / c)) /
                 (1 - curvature * height);
        }));
      }
      compare(std::string("on the axis, ") + signal.name, traces(on_axis(z), direct, signal.v, 64), closed, 1e-12);
    }
  }

  // p = rho depth v'(t - roc / c).
  void compare_focus() {
    const double depth = depth_of(geometry_, geometry_.radius) - depth_of(geometry_, geometry_.hole);
    const auto closed = [&](const ExcitationFunction& v) {
      return Traces{trace_of(
          [&](double t) { return water.density * depth * v.derivative(t - geometry_.roc / water.soundspeed); })};
    };
    for (const Method method : {direct, &Transducer::fnm_tsd}) {
      const std::string name = method == direct ? "fnm_transient" : "fnm_tsd";
      for (const Signal& signal : signals) {
        compare(name + " at the focus, " + signal.name, traces({{0, 0, geometry_.roc}}, method, signal.v, 64),
                closed(signal.v), 1e-12);
      }
      // Beside it no limit is taken: off by the square of a phase, 2 pi r sin(aperture) / wavelength.
      const Points beside = {{2e-6, -1e-6, geometry_.roc}};
      compare(name + " 2 um beside the focus, Hanning pulse", traces(beside, method, hanning, 64), closed(hanning),
              1e-4);
    }
  }

  // Between the last arrival of a burst's beginning and the first of its end the field is that of a continuous wave:
  // trace = Im(p e^{jwt}), and a quarter of a period later Re(p e^{jwt}).
  void compare_burst() {
    const ToneBurst burst(1, water.frequency, 60e-6, 0, 1);
    const Sampling samples = {5.03e-6, 0.05e-6, 2000};  // 20 a period
    constexpr int quarter = 5, nodes = 256;
    const Points points = points_in_time(geometry_);
    const Traces found = library_traces(geometry_, points, samples, direct, burst, nodes);
    Field steady, nearest, sum;
    const Field by_nearest = library_field(geometry_, water, points, nodes, &Transducer::fnm_cw);
    const Field by_sum = rayleigh_sum(*geometry_.face, water, points);
    for (std::size_t i = 0; i < points.size(); ++i) {
      const std::vector<double> heard = arrivals(geometry_, points[i]);
      for (int k = 0; k + quarter < samples.count; k += 40) {
        if (samples.at(k) < heard.back() || samples.at(k + quarter) > heard.front() + burst.pulse_width) continue;
        const auto at = static_cast<std::size_t>(k);
        const Complex turned(found[i][at + quarter], found[i][at]);
        steady.push_back(turned * std::polar(1.0, -2 * pi * water.frequency * samples.at(k)));
        nearest.push_back(by_nearest[i]);
        sum.push_back(by_sum[i]);
      }
    }
    add("steady part of a burst and fnm_cw", error_of(steady, nearest), 2e-12);
    add("steady part of a burst and the fine Rayleigh sum", error_of(steady, sum), 2e-12);
  }

  // Cells by their midpoints: the error falls with the square of their size.
  void compare_cells() {
    const Points points = {{0, 0, 15e-3}, {3e-3, 2e-3, 10e-3}, {9e-3, 5e-3, 8e-3}, {2e-3, -3e-3, 30e-3}};
    const Sampling samples = {5.013e-6, 0.273e-6, 110};
    const Traces rim = library_traces(geometry_, points, samples, direct, hanning, 1000);
    double previous = 0, order = 0, error = 0;
    const int finest = report_.quick ? 80 : 320;
    for (int n = 20; n <= finest; n *= 2) {
      error = error_of(library_traces(geometry_, points, samples, &Transducer::rayleigh_transient, hanning, n), rim);
      table_.row("%s,cells,%d,%.4g", geometry_.name.c_str(), n, error);
      order = std::log2(previous / error);
      previous = error;
    }
    const std::string cells = std::to_string(finest);
    add("rayleigh_transient, " + cells + " x " + cells + " cells", error, report_.quick ? 2e-2 : 2e-3);
    add("rayleigh_transient: order less 2", std::abs(order - 2), 0.1);
  }

  // Both sum the same rays: the decomposition factors each. `low_precision` is whose field that form computes.
  void compare_decompositions(const Geometry& low_precision) {
    const Points points = points_in_time(geometry_);
    for (const Signal& signal : signals) {
      const auto against_direct = [&](const std::string& name, Method method, const Geometry& reference, double limit) {
        compare(name + ", " + signal.name, traces(points, method, signal.v, 100),
                library_traces(reference, points, sampling_, direct, signal.v, 100), limit);
      };
      against_direct("fnm_tsd", &Transducer::fnm_tsd, geometry_, 1e-10);
      against_direct("fnm_fdtsd", &Transducer::fnm_fdtsd, geometry_, 1e-10);
      against_direct("fnm_tsd_low_precision", &Transducer::fnm_tsd_low_precision, low_precision, 1e-4);
      // Eight terms that cancel, the largest as the cube of the travel time over the pulse's width.
      const double limit = signal.v.get_type() == t_cubed.type ? 1e-2 : 1e-4;
      if (geometry_.roc == 0 && !is_rectangle(geometry_))
        against_direct("fnm_tsd_sse", &Transducer::fnm_tsd_sse, geometry_, limit);
    }
  }

 private:
  Trace trace_of(const std::function<double(double t)>& p) const {
    Trace trace;
    for (const double t : sampling_.times()) trace.push_back(p(t));
    return trace;
  }

  Traces traces(const Points& points, Method method, const ExcitationFunction& signal, int nodes) const {
    return library_traces(geometry_, points, sampling_, method, signal, nodes);
  }

  void compare(const std::string& what, const Traces& found, const Traces& reference, double limit) {
    add(what, error_of(found, reference), limit);
  }
  void add(const std::string& what, double error, double limit) {
    table_.row("%s,\"%s\",,%.4g", geometry_.name.c_str(), what.c_str(), error);
    report_.add({geometry_.name + ", " + what, error, limit});
  }

  Report& report_;
  Table& table_;
  const Geometry& geometry_;
  Sampling sampling_;
};

}  // namespace

void transient_cases(Report& report) {
  report.heading("G  in time: closed forms on the axis, continuous waves, decompositions");
  Table table(report.path("transients.csv"), "geometry,case,cells,error");
  const std::vector<Geometry> bodies = bodies_of_revolution();
  for (const Geometry& geometry : bodies) {
    TransientCases cases(report, table, geometry);
    cases.compare_axis();
    if (geometry.roc > 0) cases.compare_focus();
    cases.compare_burst();
    if (geometry.roc == 0) cases.compare_cells();
    // A spherical annulus computes the shell without the hole in low precision.
    const bool is_spherical_annulus = geometry.roc > 0 && geometry.hole > 0;
    cases.compare_decompositions(is_spherical_annulus ? bodies[2] : geometry);
  }
  for (const Geometry& geometry : geometries()) {
    if (!is_rectangle(geometry)) continue;
    TransientCases cases(report, table, geometry);
    cases.compare_burst();
    cases.compare_decompositions(geometry);
  }
  table.close();
}

}  // namespace kesto::validation
