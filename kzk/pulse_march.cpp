// The march of the waveforms of a pulse.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

#include "core/internal/host.h"
#include "core/medium.h"
#include "excitation/excitation_function.h"
#include "kzk/aligned_scratch.h"
#include "kzk/harmonic_plan.h"
#include "kzk/kernels.h"
#include "kzk/plane_reader.h"

namespace kesto {

namespace {

std::size_t product(int a, int b) { return static_cast<std::size_t>(a) * static_cast<std::size_t>(b); }

// The retarded times at which waveforms are kept: means over the samples' length about start + m dtau.
struct RetardedTime {
  double start = 0, dtau = 0;
  int samples = 0;
};

RetardedTime retarded_time(const ExcitationFunction& signal, double frequency, const PulseSteps& steps) {
  if (!(steps.dtau >= 0) || !(steps.length >= 0) || steps.length > 1e9) {
    fail("The time step and the time length of a nonlinear beam must not be negative.\n");
  }
  // In the beam's coordinates waves off the axis run ahead. The rim's wave follows behind the pulse.
  constexpr double ahead = 5, behind = 3, samples_of_period = 150;  // in periods
  const double width = signal.get_pulse_width();
  RetardedTime time;
  time.dtau = steps.dtau > 0 ? steps.dtau : 1 / (samples_of_period * frequency);
  const double length = steps.length > 0 ? steps.length : std::max(width, 0.0) + (ahead + behind) / frequency;
  if (!(time.dtau < length)) fail("The time step of a nonlinear beam is longer than its time.\n");
  if (length / time.dtau > 1e6) fail("The time step of a nonlinear beam is too fine for its time.\n");
  time.samples = static_cast<int>(length / time.dtau) + 1;
  time.start = -std::min(ahead / frequency, 0.6 * length);
  return time;
}

double mean_over_sample(const ExcitationFunction& signal, double t, double dtau) {  // by Boole's rule
  return (7 * (signal.at(t - dtau / 2) + signal.at(t + dtau / 2)) +
          32 * (signal.at(t - dtau / 4) + signal.at(t + dtau / 4)) + 12 * signal.at(t)) /
         90;
}

class PulseMarch {
 public:
  PulseMarch(const BeamPlan& plan, const BeamSource& source, const ExcitationFunction& signal, double pressure_of_unit,
             const RetardedTime& time, double speed)
      : plan_(plan),
        kernels_(kzk_kernels(chosen_vector_target())),
        lanes_(kernels_.width),
        run_((plan.grid.nodes + lanes_ - 1) / lanes_),
        time_(time),
        speed_(speed),
        transform_(plan.wave.alpha > 0 ? transform_of(time.samples + time.samples / 8) : 0),
        field_(product(time.samples, run_ * lanes_)),
        pivots_(product(run_, lanes_)),
        lower_(pivots_.size()),
        upper_(pivots_.size()),
        left_(pivots_.size()),
        right_(pivots_.size()),
        kept_(pivots_.size()),
        history_(pivots_.size()),
        solution_(pivots_.size()),
        shift_(pivots_.size()),
        ends_(product(2 * lanes_, 2 * lanes_)),
        roots_(product(2, std::max(transform_, 1))),
        factor_(product(1, transform_ / 2 + 1)),
        scratch_(product(pulse_scratch(lanes_, time.samples, transform_), 1)) {
    std::vector<double> share(pivots_.size());
    RadialGrid all = plan.grid;
    all.nodes = run_ * lanes_;
    source_plane(source, all, share.data());
    for (int m = 0; m < time.samples; ++m) {
      const double p = pressure_of_unit * mean_over_sample(signal, time.start + m * time.dtau, time.dtau);
      for (int i = 0; i < all.nodes; ++i) field_[place(m, i)] = share[static_cast<std::size_t>(i)] * p;
    }
    for (int i = 0; i < transform_; ++i) {
      roots_[static_cast<std::size_t>(i)] = std::cos(2 * std::acos(-1.0) * i / transform_);
      roots_[static_cast<std::size_t>(transform_ + i)] = std::sin(2 * std::acos(-1.0) * i / transform_);
    }
    make_table();
  }

  void step() {
    constexpr int damped_planes = 4;
    const double z = plane_z(planes_), next = plane_z(planes_ + 1), before = planes_ > 0 ? plane_z(planes_ - 1) : z;
    const double length = planes_ > 0 ? plan_.step : 0.5 * plan_.step;
    for (int i = 0; i < run_ * lanes_; ++i) shift_[radial(i)] = shift_of(i * plan_.grid.dr, length);
    distort(length * plan_.frame.scale(z), 0.5 * (next - before), run_, shift_.data(), field_.data());
    const double part = plan_.step / std::min((planes_ + 0.5) * plan_.step, 1.5 * plan_.frame.rayleigh);
    for (int i = 0; i < run_ * lanes_; ++i) kept_[radial(i)] = plan_.grid.kept(i, part);
    const PulseDiffractionWork work = {time_.samples,   run_,          pivots_.data(), lower_.data(), upper_.data(),
                                       left_.data(),    right_.data(), ends_.data(),   kept_.data(),  history_.data(),
                                       solution_.data()};
    if (planes_ < damped_planes) {
      kernels_.pulse_backward_euler(work, field_.data());
    } else {
      kernels_.pulse_crank_nicolson(work, field_.data());
    }
    ++planes_;
  }

  int plane() const { return planes_; }
  int lanes() const { return lanes_; }
  int nodes() const { return run_ * lanes_; }

  // The waveforms of this plane at as many radii as there are lanes: traces[sample][lane].
  void read(const double* xi, double* traces) const {
    ScratchArray<double> shift(lanes_);
    const double length = planes_ > 0 ? 0.5 * plan_.step : 0;  // the half step that the field lacks
    for (int l = 0; l < lanes_; ++l) {
      const RadialStencil at = radial_stencil(xi[l] / plan_.grid.dr, plan_.grid.nodes);
      shift[l] = shift_of(xi[l], length);
      for (int m = 0; m < time_.samples; ++m) {
        double sum = 0;
        for (int i = 0; i < 4; ++i) sum += at.weight[i] * field_[place(m, at.node[i])];
        traces[m * lanes_ + l] = sum;
      }
    }
    if (planes_ == 0) return;
    const double z = plane_z(planes_);
    distort(length * plan_.frame.scale(z), 0.5 * (z - plane_z(planes_ - 1)), 1, shift.data(), traces);
  }

  std::size_t bytes() const { return sizeof(double) * (field_.size() + 9 * pivots_.size() + scratch_.size()); }

 private:
  std::size_t radial(int node) const { return product(node % run_, lanes_) + static_cast<std::size_t>(node / run_); }
  std::size_t place(int sample, int node) const { return product(sample, run_ * lanes_) + radial(node); }
  double plane_z(int plane) const {
    return std::min(plan_.frame.z_of(plane * plan_.step), 4 * plan_.frame.z_of(plan_.end));
  }
  // In samples: what the frame's well does to waveforms.
  double shift_of(double xi, double length) const {
    return xi * xi * length / (2 * speed_ * plan_.frame.rayleigh * plan_.frame.rayleigh * time_.dtau);
  }

  void distort(double strength_length, double absorbing_length, int run, const double* shift, double* field) const {
    if (transform_ > 0) {
      for (int k = 0; k <= transform_ / 2; ++k) {
        const double of_fundamental = k / (transform_ * time_.dtau * plan_.wave.frequency);
        factor_[static_cast<std::size_t>(k)] =
            std::exp(-plan_.wave.alpha * std::pow(of_fundamental, plan_.wave.exponent) * absorbing_length);
      }
    }
    const double omega = plan_.wave.k * speed_;
    // What comes first changes from plane to plane, so that the order does not matter to second order.
    kernels_.distort({time_.samples, run, plan_.wave.nonlinearity / omega * strength_length / time_.dtau, shift,
                      planes_ % 2 == 1, transform_, roots_.data(), factor_.data(), scratch_.data()},
                     field);
  }

  void make_table();

  const BeamPlan plan_;
  const KzkKernels kernels_;
  const int lanes_, run_;
  const RetardedTime time_;
  const double speed_;
  const int transform_;
  AlignedScratch field_, pivots_, lower_, upper_, left_, right_, kept_, history_, solution_, shift_;
  AlignedScratch ends_, roots_, factor_, scratch_;
  int planes_ = 0;
};

// Inverts a of n x n in place by elimination with row exchanges.
void invert(int n, std::vector<double>& a) {
  const std::size_t size = static_cast<std::size_t>(n);
  std::vector<double> inverse(size * size);
  for (std::size_t i = 0; i < size; ++i) inverse[i * size + i] = 1;
  for (std::size_t k = 0; k < size; ++k) {
    std::size_t pivot = k;
    for (std::size_t i = k; i < size; ++i) {
      if (std::fabs(a[i * size + k]) > std::fabs(a[pivot * size + k])) pivot = i;
    }
    for (std::size_t j = 0; j < size; ++j) {
      std::swap(a[k * size + j], a[pivot * size + j]);
      std::swap(inverse[k * size + j], inverse[pivot * size + j]);
    }
    const double scale = 1 / a[k * size + k];
    for (std::size_t j = 0; j < size; ++j) a[k * size + j] *= scale, inverse[k * size + j] *= scale;
    for (std::size_t i = 0; i < size; ++i) {
      const double times = i == k ? 0 : a[i * size + k];
      if (times == 0) continue;
      for (std::size_t j = 0; j < size; ++j) {
        a[i * size + j] -= times * a[k * size + j], inverse[i * size + j] -= times * inverse[k * size + j];
      }
    }
  }
  a = inverse;
}

void PulseMarch::make_table() {
  const double dr = plan_.grid.dr, eps = speed_ * plan_.step * time_.dtau / 8 / (dr * dr);
  const std::size_t run = static_cast<std::size_t>(run_), lanes = static_cast<std::size_t>(lanes_);
  std::vector<double> lower(run), diagonal(run), upper(run), x(run), scratch(run);
  for (int l = 0; l < lanes_; ++l) {
    double link = 0;
    for (int j = 0; j < run_; ++j) {
      const int node = l * run_ + j;
      const std::size_t k = static_cast<std::size_t>(j), at = product(j, lanes_) + static_cast<std::size_t>(l);
      lower[k] = -eps * plan_.grid.lower(node), upper[k] = -eps * plan_.grid.upper(node);
      diagonal[k] = 1 - lower[k] - upper[k];
      const double pivot = 1 / (diagonal[k] - lower[k] * link);
      link = upper[k] * pivot;
      pivots_[at] = pivot, lower_[at] = j > 0 ? -lower[k] * pivot : 0, upper_[at] = -link;
    }
    const auto respond = [&](std::size_t where, double push, AlignedScratch& to) {
      std::fill(x.begin(), x.end(), 0.0);
      x[where] = push;
      solve_tridiagonal(run_, lower.data(), diagonal.data(), upper.data(), x.data(), scratch.data());
      for (std::size_t j = 0; j < run; ++j) to[j * lanes + static_cast<std::size_t>(l)] = x[j];
    };
    respond(0, l > 0 ? -lower[0] : 0, left_);
    respond(run - 1, l + 1 < lanes_ ? -upper[run - 1] : 0, right_);
  }
  // first_l = y_first + left(0) last_{l-1} + right(0) first_{l+1}, and likewise the last: (1 - K) ends = y.
  const std::size_t size = 2 * lanes;
  std::vector<double> matrix(size * size);
  for (std::size_t l = 0; l < lanes; ++l) {
    for (std::size_t end = 0; end < 2; ++end) {
      const std::size_t row = l + end * lanes, at = (end == 0 ? 0 : run - 1) * lanes + l;
      matrix[row * size + row] = 1;
      if (l > 0) matrix[row * size + lanes + l - 1] -= left_[at];
      if (l + 1 < lanes) matrix[row * size + l + 1] -= right_[at];
    }
  }
  invert(2 * lanes_, matrix);
  for (std::size_t from = 0; from < size; ++from) {
    for (std::size_t l = 0; l < lanes; ++l) {
      ends_[from * size + l] = l > 0 ? matrix[(lanes + l - 1) * size + from] : 0;
      ends_[from * size + lanes + l] = l + 1 < lanes ? matrix[(l + 1) * size + from] : 0;
    }
  }
}

// A point whose waveform is being put together from the planes about it.
struct PendingTrace {
  PointQueue::Entry entry;
  int first_plane;
  double weight[4];
  std::vector<double> samples;
};

// Values of the trace at the times, 0 outside it.
void sample_trace(const std::vector<double>& means, const RetardedTime& time, double offset, double scale,
                  const double* times, int count, double* to) {
  const int n = time.samples;
  const auto mean = [&](int i) { return i < 0 || i >= n ? 0 : means[static_cast<std::size_t>(i)]; };
  const auto value = [&](int m) {  // at the sample's middle
    return mean(m) - (mean(m + 1) - 2 * mean(m) + mean(m - 1)) / 24;
  };
  for (int k = 0; k < count; ++k) {
    const double x = (times[k] - offset - time.start) / time.dtau;
    if (!(x > -1 && x < n)) {
      to[k] = 0;
      continue;
    }
    const int m = static_cast<int>(std::floor(x));
    const double t = x - m;
    const double cubic = -t * (t - 1) * (t - 2) / 6 * value(m - 1) + (t + 1) * (t - 1) * (t - 2) / 2 * value(m) -
                         (t + 1) * t * (t - 2) / 2 * value(m + 1) + (t + 1) * t * (t - 1) / 6 * value(m + 2);
    // Beyond its neighbours only as far as a smooth crest takes it, which spares shocks.
    const double a = mean(m - 1), b = mean(m), c = mean(m + 1), d = mean(m + 2);
    const double room = 0.5 * std::min(std::fabs(b - a), std::fabs(d - c));
    to[k] = scale * std::min(std::max(cubic, std::min(b, c) - room), std::max(b, c) + room);
  }
}

}  // namespace

bool march_pulse(const BeamSource& source, const ExcitationFunction& velocity, double amplitude, double delay,
                 const Medium& medium, const PulseSteps& steps, const BeamPoints& points, const double* times,
                 int samples, const std::function<void(std::size_t point, const double* trace)>& deliver,
                 const BeamProgress& progress, BeamReport* report) {
  check_source(source);
  BeamWave wave = wave_of(medium, std::fabs(amplitude));
  const double speed = medium._soundspeed, impedance = medium._rho_density * speed;
  if (velocity.get_f0() > 0) {  // the beam is that of the signal's frequency
    const double ratio = velocity.get_f0() / wave.frequency;
    wave.alpha *= std::pow(ratio, wave.exponent);
    wave.frequency *= ratio, wave.k *= ratio, wave.nonlinearity *= ratio;
  }
  const RetardedTime time = retarded_time(velocity, wave.frequency, steps);
  const BeamPlan plan = plan_beam(source, wave, steps.dz, steps.dr, steps.rmax, points, pulse_resolution);
  if (static_cast<double>(plan.grid.nodes) * time.samples > 1e9) {
    fail("The steps of a nonlinear beam are too fine for its domain and time: more than 8 GB of waveforms.\n");
  }
  PointQueue queue(plan, points);
  PulseMarch march(plan, source, velocity, impedance * amplitude, time, speed);
  if (steps.dz <= 0 || steps.dr <= 0 || steps.rmax <= 0 || steps.dtau <= 0 || steps.length <= 0) {
    print("Nonlinear pulse: dz %.3g mm, dr %.3g mm, radius %.3g mm at the source (%d nodes), dtau %.3g ns (%d).\n",
          1e3 * plan.step, 1e3 * plan.grid.dr, 1e3 * plan.grid.rmax, plan.grid.nodes, 1e9 * time.dtau, time.samples);
  }
  warn_of_points_outside(plan);

  const int lanes = march.lanes();
  std::vector<PendingTrace> pending;
  std::vector<double> xi(static_cast<std::size_t>(lanes)), traces(product(time.samples, lanes));
  std::vector<double> out(static_cast<std::size_t>(std::max(samples, 0)));
  const int last_plane = static_cast<int>(plan.end / plan.step) + 2;
  for (;; march.step()) {
    const int plane = march.plane();
    if (progress && plane % 8 == 0 && !progress(std::min(1.0 * plane / last_plane, 1.0))) return false;
    while (!queue.empty()) {
      const PointQueue::Entry& entry = queue.front();
      PendingTrace next = {entry, std::max(static_cast<int>(entry.zeta / plan.step) - 1, 0), {}, {}};
      if (next.first_plane > plane) break;
      const double at[] = {0, 1, 2, 3};
      lagrange_weights(at, 4, entry.zeta / plan.step - next.first_plane, next.weight);
      next.samples.resize(static_cast<std::size_t>(time.samples));
      pending.push_back(std::move(next));
      queue.pop();
    }
    for (std::size_t first = 0; first < pending.size(); first += static_cast<std::size_t>(lanes)) {
      const std::size_t count = std::min(pending.size() - first, static_cast<std::size_t>(lanes));
      for (std::size_t l = 0; l < xi.size(); ++l) xi[l] = pending[first + std::min(l, count - 1)].entry.xi;
      march.read(xi.data(), traces.data());
      for (std::size_t l = 0; l < count; ++l) {
        PendingTrace& to = pending[first + l];
        const double weight = to.weight[plane - to.first_plane];
        for (std::size_t m = 0; m < to.samples.size(); ++m) to.samples[m] += weight * traces[m * xi.size() + l];
      }
    }
    const auto complete = [&](const PendingTrace& p) { return plane - p.first_plane == 3; };
    for (const PendingTrace& p : pending) {
      if (!complete(p)) continue;
      const double z = points.z[p.entry.point];
      const double path = z + 0.5 * p.entry.xi * p.entry.xi * plan.frame.bend(z);
      sample_trace(p.samples, time, delay + path / speed, 1 / plan.frame.scale(z), times, samples, out.data());
      deliver(p.entry.point, out.data());
    }
    pending.erase(std::remove_if(pending.begin(), pending.end(), complete), pending.end());
    if (queue.empty() && pending.empty()) break;
  }
  if (report != nullptr) {
    report->dz = plan.step, report->dr = plan.grid.dr, report->rmax = plan.grid.rmax, report->dtau = time.dtau;
    report->planes = march.plane(), report->nodes = march.nodes(), report->samples = time.samples;
    report->bytes = march.bytes();
  }
  return true;
}

}  // namespace kesto
