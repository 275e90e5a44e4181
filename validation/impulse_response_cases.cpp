// Transient fields against the impulse response in closed form, and the impulse response against static sums: closed
// forms, rim integrals and sums over the face have nothing in common but the physics.
#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "excitation/hanning_pulse.h"
#include "validation/arrivals.h"
#include "validation/cases.h"
#include "validation/gauss_legendre.h"
#include "validation/transient_computation.h"

namespace kesto::validation {

namespace {

const HanningPulse pulse(1, 1e6, 3e-6, 0, 2);

// Between its jumps and bends the impulse response begins and ends like a square root, which t = sin x smooths.
std::vector<GaussNode> smoothed_rule(int n) {
  std::vector<GaussNode> rule = gauss_legendre(n);
  for (GaussNode& node : rule) {
    const double x = pi / 2 * node.x;
    node = {std::sin(x), node.weight * pi / 2 * std::cos(x)};
  }
  return rule;
}

// The integral of h(t) f(t) from `begin` to `end`, in panels between the arrivals.
class WeightedPanels {
 public:
  explicit WeightedPanels(const Geometry& geometry, const Point& point)
      : geometry_(geometry), point_(point), breaks_(arrivals(geometry, point)) {}

  // The nodes come first: h is computed at all of them in one call.
  template <class F>
  void add(double begin, double end, F f) {
    static const std::vector<GaussNode> rule = smoothed_rule(32);
    starts_.push_back(times_.size());
    std::vector<double> bounds = {begin};
    for (const double t : breaks_) {
      if (t > begin && t < end) bounds.push_back(t);
    }
    bounds.push_back(end);
    for (std::size_t i = 1; i < bounds.size(); ++i) {
      const double middle = (bounds[i] + bounds[i - 1]) / 2, half = (bounds[i] - bounds[i - 1]) / 2;
      for (const GaussNode& node : rule) {
        times_.push_back(middle + half * node.x);
        weights_.push_back(half * node.weight * f(times_.back()));
      }
    }
  }

  // One for each add.
  std::vector<double> integrals() {
    TransientComputation computation(geometry_, {point_});
    computation.sample_at(times_);
    const Trace h = computation.traces(&Transducer::impulse_response).front();
    std::vector<double> result;
    for (std::size_t n = 0; n < starts_.size(); ++n) {
      const std::size_t end = n + 1 < starts_.size() ? starts_[n + 1] : h.size();
      double sum = 0;
      for (std::size_t i = starts_[n]; i < end; ++i) sum += weights_[i] * h[i];
      result.push_back(sum);
    }
    return result;
  }

 private:
  const Geometry& geometry_;
  Point point_;
  std::vector<double> breaks_, times_, weights_;
  std::vector<std::size_t> starts_;
};

// p = rho h * v', exact to rounding; 0 where v' does not meet h.
Trace convolution(const Geometry& geometry, const Point& point, const Times& times) {
  WeightedPanels panels(geometry, point);
  for (const double t : times) {
    panels.add(t - pulse.pulse_width, t, [&](double tau) { return water.density * pulse.derivative(t - tau); });
  }
  return panels.integrals();
}

// The same as a plain sum over samples of h.
Trace sampled_convolution(const Geometry& geometry, const Point& point, const Times& times, double step) {
  const std::vector<double> breaks = arrivals(geometry, point);
  const double first = breaks.front() - step / 3;
  const Sampling sampling = {first, step, static_cast<int>((breaks.back() - first) / step) + 2};
  TransientComputation computation(geometry, {point});
  computation.sample(sampling);
  const Trace h = computation.traces(&Transducer::impulse_response).front();
  Trace result;
  for (const double t : times) {
    double sum = 0;
    const int from = std::max(static_cast<int>((t - pulse.pulse_width - first) / step), 0);
    const int to = std::min(static_cast<int>(std::max(t - first, 0.0) / step) + 1, sampling.count);
    for (int k = from; k < to; ++k) sum += h[static_cast<std::size_t>(k)] * pulse.derivative(t - sampling.at(k));
    result.push_back(water.density * step * sum);
  }
  return result;
}

void compare_convolution(Report& report, Table& table, Table& traces, const Geometry& geometry) {
  const Points points = points_in_time(geometry);
  const Sampling sampling = report.quick ? Sampling{0.1e-6, 0.37e-6, 130} : Sampling{0.1e-6, 0.111e-6, 430};
  const auto nearest = [&](int n) {
    return library_traces(geometry, points, sampling, &Transducer::fnm_transient, pulse, n);
  };
  const Traces fields = nearest(1000);
  Traces exact;
  for (const Point& p : points) exact.push_back(convolution(geometry, p, sampling.times()));
  report.add({geometry.name + ", fnm_transient, 1000 abscissas, and the convolution", error_of(fields, exact), 1e-7});
  for (std::size_t i = 0; i < points.size(); ++i) {
    const auto begun = std::find_if(exact[i].begin(), exact[i].end(),
                                    [&](double p) { return std::abs(p) > 1e-6 * largest(exact[i]); });
    const double beginning = sampling.at(static_cast<int>(begun - exact[i].begin()));
    for (int k = 0; k < sampling.count; ++k) {
      const auto at = static_cast<std::size_t>(k);
      traces.row("%s,%zu,%.6g,%.6g,%.9g,%.9g", geometry.name.c_str(), i, sampling.at(k) * 1e6,
                 (sampling.at(k) - beginning) * 1e6, fields[i][at], exact[i][at]);
    }
  }

  // A jump of h between two samples is misplaced by up to half a step, v' by the phase that the step makes.
  const double coarsest = 16e-9, finest = report.quick ? 4e-9 : 0.5e-9;
  double at_coarsest = 0, error = 0;
  for (double step = coarsest; step > finest * 0.99; step /= 2) {
    Traces sums;
    for (const Point& p : points) sums.push_back(sampled_convolution(geometry, p, sampling.times(), step));
    error = error_of(sums, fields);
    if (step == coarsest) at_coarsest = error;
    table.row("%s,step_ns,%.6g,%.4g", geometry.name.c_str(), step * 1e9, error);
  }
  char name[100];
  std::snprintf(name, sizeof name, "%s, fnm_transient and a sum over samples of h, every %g ns", geometry.name.c_str(),
                finest * 1e9);
  report.add({name, error, 2 * pulse.omega * finest});
  report.add({geometry.name + ", order of that sum in the step, less 1",
              std::abs(std::log(at_coarsest / error) / std::log(coarsest / finest) - 1), 0.3});

  // The phase along the rim at the centre frequency, and half as much for the pulse's band.
  const int resolving = static_cast<int>(std::ceil(1.5 * (water.k() * geometry.radius + 10)));
  report.add({geometry.name + ", fnm_transient, " + std::to_string(resolving) + " abscissas, 1.5 (k a + 10)",
              error_of(nearest(resolving), exact), 1e-3});
  for (double n = 8; n < 1025; n *= std::sqrt(2)) {
    const int abscissas = static_cast<int>(std::lround(n));
    table.row("%s,abscissas,%d,%.4g", geometry.name.c_str(), abscissas, error_of(nearest(abscissas), exact));
  }
}

// int h dt = (1 / 2 pi) int dS / R: the Rayleigh sum without waves.
void compare_integral(Report& report, const Geometry& geometry) {
  const Fluid still = {1, water.soundspeed, 1, 0, 0};  // p = j int dS / R
  double worst = 0;
  for (const Point& p : points_in_time(geometry)) {
    const double reference = rayleigh_sum(*geometry.face, still, {p}).front().imag() / (2 * pi);
    WeightedPanels panels(geometry, p);
    const std::vector<double> breaks = arrivals(geometry, p);
    panels.add(breaks.front() - 1e-6, breaks.back() + 1e-6, [](double) { return 1.0; });
    worst = std::fmax(worst, std::abs(panels.integrals().front() / reference - 1));
  }
  report.add({geometry.name + ", integral of the impulse response and the static sum", worst, 1e-9});
}

// At the centre of curvature all of the face is heard in one sample, which holds the whole integral.
void compare_focal_impulse(Report& report, const Geometry& geometry) {
  const double arrival = geometry.roc / water.soundspeed, step = 1e-9;
  TransientComputation computation(geometry, {{0, 0, geometry.roc}}, 0);
  computation.sample_at({arrival - step, arrival, arrival + step});
  const Trace h = computation.traces(&Transducer::impulse_response).front();
  const double depth = depth_of(geometry, geometry.radius) - depth_of(geometry, geometry.hole);
  const double beside = std::abs(h[0]) + std::abs(h[2]);
  report.add(
      {geometry.name + ", impulse at the focus and its depth", std::abs((h[1] + beside) * step / depth - 1), 1e-10});
}

}  // namespace

void impulse_response_cases(Report& report) {
  report.heading("G  in time: a Hanning pulse as rho times the impulse response's convolution; its integral");
  Table table(report.path("transient_convergence.csv"), "geometry,quantity,value,error");
  Table traces(report.path("traces.csv"), "geometry,point,microseconds,since_beginning,fnm_transient,convolution");
  for (const Geometry& geometry : geometries()) {
    compare_convolution(report, table, traces, geometry);
    compare_integral(report, geometry);
    if (geometry.roc > 0) compare_focal_impulse(report, geometry);
  }
  table.close();
  traces.close();
}

}  // namespace kesto::validation
