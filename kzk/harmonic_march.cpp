#include "kzk/harmonic_march.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <vector>

#include "core/constants.h"
#include "core/internal/host.h"
#include "core/medium.h"
#include "kzk/plane_reader.h"

namespace kesto {

namespace {

using Complex = std::complex<double>;

std::size_t product(int a, int b) { return static_cast<std::size_t>(a) * static_cast<std::size_t>(b); }

// Vectors no wider than the harmonics fill.
KzkKernels kernels_for(int harmonics) {
  const VectorTarget target = chosen_vector_target();
  return kzk_kernels(target == VectorTarget::avx512 && harmonics <= 4 ? VectorTarget::avx2 : target);
}

int rounded_up(int n, int to) { return (n + to - 1) / to * to; }

}  // namespace

HarmonicMarch::HarmonicMarch(const BeamPlan& plan, const BeamSource& source, Complex pressure, int direct_up_to)
    : plan_(plan),
      kernels_(kernels_for(plan.harmonics)),
      padded_(rounded_up(plan.harmonics, kernels_.width)),
      nodes_(rounded_up(plan.grid.nodes, 2 * kernels_.width)),
      transform_(plan.harmonics > direct_up_to ? transform_length(plan.harmonics) : 0),
      field_(product(nodes_, 2 * padded_)),
      pivots_(field_.size()),
      eliminated_(field_.size()),
      lower_(product(nodes_, 1)),
      upper_(lower_.size()),
      well_(lower_.size()),
      kept_(lower_.size()),
      number_(product(padded_, 1)),
      inverse_step_(number_.size()),
      factor_(number_.size()),
      roots_(product(2, std::max(transform_, 1))),
      scratch_(product(nonlinear_scratch(kernels_.width, plan.harmonics, transform_), 1)),
      plane_(plane_at(0)),
      before_(plane_),
      step_(plan.first_step) {
  source_plane(source, plan.grid, kept_.data());
  for (int i = 0; i < plan.grid.nodes; ++i) {
    field_[product(i, 2 * padded_)] = kept_[static_cast<std::size_t>(i)] * pressure.real();
    field_[product(i, 2 * padded_) + static_cast<std::size_t>(padded_)] =
        kept_[static_cast<std::size_t>(i)] * pressure.imag();
  }
  const double dr = plan.grid.dr;
  for (int i = 0; i < nodes_; ++i) {
    const std::size_t at = static_cast<std::size_t>(i);
    lower_[at] = plan.grid.lower(i);
    upper_[at] = plan.grid.upper(i);
    well_[at] = std::pow(plan.wave.k * i * dr / plan.frame.rayleigh * dr, 2);
  }
  for (int n = 1; n <= padded_; ++n) number_[static_cast<std::size_t>(n - 1)] = n;
  for (int i = 0; i < transform_; ++i) {
    roots_[static_cast<std::size_t>(i)] = std::cos(2 * std::acos(-1.0) * i / transform_);
    roots_[static_cast<std::size_t>(transform_ + i)] = std::sin(2 * std::acos(-1.0) * i / transform_);
  }
  make_table();
}

MarchPlane HarmonicMarch::plane_at(double zeta) const {
  MarchPlane plane;
  plane.zeta = zeta;
  const double farthest = plan_.frame.z_of(plan_.end);
  plane.z = std::min(plan_.frame.z_of(zeta), 4 * farthest);  // infinite at the end of the range
  plane.scale = plan_.frame.scale(plane.z);
  return plane;
}

void HarmonicMarch::make_table() {
  const double half = 0.5 * step_, dr = plan_.grid.dr;
  for (int n = 1; n <= padded_; ++n) {
    inverse_step_[static_cast<std::size_t>(n - 1)] = 2 * n * plan_.wave.k * dr * dr / half;
  }
  kernels_.factorise({nodes_, padded_, lower_.data(), upper_.data(), well_.data(), kept_.data(), number_.data(),
                      inverse_step_.data(), pivots_.data(), eliminated_.data()});
}

void HarmonicMarch::set_layer(double zeta) {
  // Behind a quarter turn of the frame waves come back that the well has turned.
  const double part = step_ / std::min(zeta, 1.5 * plan_.frame.rayleigh);
  if (std::fabs(part - layer_part_) < 0.02 * layer_part_) return;
  layer_part_ = part;
  for (int i = 0; i < nodes_; ++i) kept_[static_cast<std::size_t>(i)] = plan_.grid.kept(i, part);
}

void HarmonicMarch::nonlinear(double strength_length, double absorbing_length, AlignedScratch& field) const {
  const double strength = plan_.harmonics > 1 ? plan_.wave.nonlinearity / 4 * strength_length : 0;
  if (!(strength > 0) && !(plan_.wave.alpha > 0)) return;
  for (int n = 1; n <= plan_.harmonics; ++n) {
    factor_[static_cast<std::size_t>(n - 1)] = std::exp(-0.5 * plan_.wave.attenuation(n) * absorbing_length);
  }
  if (!(strength > 0)) {
    for (std::size_t i = 0; i < field.size(); i += static_cast<std::size_t>(padded_)) {
      for (std::size_t n = 0; n < static_cast<std::size_t>(padded_); ++n) field[i + n] *= factor_[n] * factor_[n];
    }
    return;
  }
  // In the absorbing layer there is nothing to distort.
  const int last = std::min(static_cast<int>(plan_.grid.rmax / plan_.grid.dr) + 1, nodes_);
  kernels_.nonlinear(
      {0, last, padded_, plan_.harmonics, strength, factor_.data(), transform_, roots_.data(), scratch_.data()},
      field.data());
}

void HarmonicMarch::step() {
  // Sharp edges, of all wavelengths, would ring on by Crank-Nicolson.
  if (planes_ > 0 && planes_ % plan_.planes_of_stage == 0 && step_ < plan_.step) {
    step_ = std::min(2 * step_, plan_.step);
    damped_until_ = planes_ + 1;
    make_table();
  }
  const MarchPlane next = plane_at(plane_.zeta + step_);
  nonlinear(0.5 * (taken_ + step_) * plane_.scale, 0.5 * (next.z - before_.z), field_);
  set_layer(0.5 * (plane_.zeta + next.zeta));
  const DiffractionWork work = {nodes_,       padded_,        lower_.data(),        upper_.data(),  well_.data(),
                                kept_.data(), number_.data(), inverse_step_.data(), pivots_.data(), eliminated_.data()};
  if (planes_ < damped_until_) {
    kernels_.backward_euler(work, field_.data());
  } else {
    kernels_.crank_nicolson(work, field_.data());
  }
  before_ = plane_;
  plane_ = next;
  taken_ = step_;
  ++planes_;
}

void HarmonicMarch::copy_finished(AlignedScratch& to) const {
  std::copy_n(field_.data(), field_.size(), to.data());
  nonlinear(0.5 * taken_ * plane_.scale, 0.5 * (plane_.z - before_.z), to);
}

std::size_t HarmonicMarch::bytes() const {
  return sizeof(double) * (3 * field_.size() + 4 * lower_.size() + scratch_.size() + roots_.size());
}

namespace {

// Whether the harmonics carry the waveforms: the energy of the last tenth of them beside that of all.
class ShockWatch {
 public:
  explicit ShockWatch(int harmonics) : harmonics_(harmonics), spectrum_(static_cast<std::size_t>(harmonics)) {}

  void look(const HarmonicMarch& march, int nodes) {
    if (harmonics_ < 2) return;
    double largest = 0;
    for (int i = 0; i < nodes; ++i) largest = std::max(largest, std::norm(march.value(march.field(), i, 1)));
    for (int i = 0; i < nodes; ++i) {
      if (std::norm(march.value(march.field(), i, 1)) < 0.1 * largest) continue;
      double all = 0, tail = 0;
      for (int n = 1; n <= harmonics_; ++n) {
        const double energy = std::norm(march.value(march.field(), i, n));
        all += energy;
        if (10 * n > 9 * harmonics_) tail += energy;
      }
      if (!(tail > worst_ * all)) continue;
      worst_ = tail / all;
      for (int n = 1; n <= harmonics_; ++n) {
        spectrum_[static_cast<std::size_t>(n - 1)] = std::norm(march.value(march.field(), i, n)) / all;
      }
    }
  }

  void warn_of_tail() const {
    if (!(worst_ > allowed)) return;
    char text[240];
    std::snprintf(text, sizeof text,
                  "The %d harmonics of the nonlinear beam do not carry its shock: the last tenth of them holds %.2g of "
                  "the energy where it is worst. About %d would.",
                  harmonics_, worst_, enough());
    warn(text);
  }

 private:
  static constexpr double allowed = 1e-4;

  // Takes n |p_n| to fall as e^{-b n}, as far as the lower half of the harmonics tells; a sawtooth has b = 0.
  int enough() const {
    const int from = std::max(harmonics_ / 4, 1), to = std::max(harmonics_ / 2, from + 1);
    const auto energy = [&](int n) { return n * n * spectrum_[static_cast<std::size_t>(n - 1)]; };
    const double fall = std::max(std::log(energy(from) / energy(to)) / (to - from), 0.0);  // 2 b
    int n = harmonics_ + 1;
    while (n < 1000 && energy(from) * std::exp(-fall * (n - from)) / (10.0 * n) > allowed) ++n;
    return n;
  }

  int harmonics_;
  double worst_ = 0;
  std::vector<double> spectrum_;
};

// The last four planes and the points between them.
class PlaneWindow {
 public:
  PlaneWindow(const HarmonicMarch& march, const BeamPlan& plan) : plan_(plan) {
    for (int k = 0; k < 4; ++k) fields_.emplace_back(new AlignedScratch(march.field_size()));
  }

  void add(const HarmonicMarch& march) {
    if (count_ == 4) {
      std::rotate(fields_.begin(), fields_.begin() + 1, fields_.end());
      std::rotate(zeta_, zeta_ + 1, zeta_ + 4);
      --count_;
    }
    march.copy_finished(*fields_[static_cast<std::size_t>(count_)]);
    zeta_[count_++] = march.plane().zeta;
  }
  void clear() { count_ = 0; }
  int count() const { return count_; }
  double last_but_one() const { return zeta_[count_ - 2]; }

  Complex value(const HarmonicMarch& march, double xi, double zeta, int harmonic) const {
    const RadialStencil at = radial_stencil(xi / plan_.grid.dr, plan_.grid.nodes);
    double weight[4];
    lagrange_weights(zeta_, count_, zeta, weight);
    Complex sum = 0;
    for (int k = 0; k < count_; ++k) {
      for (int i = 0; i < 4; ++i) {
        sum += weight[k] * at.weight[i] * march.value(*fields_[static_cast<std::size_t>(k)], at.node[i], harmonic);
      }
    }
    return sum;
  }

 private:
  const BeamPlan& plan_;
  std::vector<std::unique_ptr<AlignedScratch>> fields_;
  double zeta_[4] = {};
  int count_ = 0;
};

int checked_harmonics(const BeamSource& source, const HarmonicSteps& steps, const BeamWave& wave,
                      const BeamPoints& points, int first, int last) {
  constexpr int most = 2000;
  if (steps.harmonics < 0 || steps.harmonics > most) {
    fail("The number of harmonics of a nonlinear beam must lie between 0 (for a choice) and 2000.\n");
  }
  if (first < 1 || last < first) fail("The harmonics of a nonlinear beam are counted from 1.\n");
  if (last > (steps.harmonics > 0 ? steps.harmonics : most)) {
    fail("The harmonic asked for lies beyond the harmonics of the nonlinear beam.\n");
  }
  if (!(wave.nonlinearity > 0)) return 1;
  if (steps.harmonics > 0) return steps.harmonics;
  double farthest = 0;
  for (std::size_t i = 0; i < points.count; ++i) farthest = std::max(farthest, points.z[i]);
  return std::max(harmonics_for(source, wave, farthest), last > 1 ? last + last / 2 + 2 : 1);
}

}  // namespace

bool march_harmonics(const BeamSource& source, Complex velocity, const Medium& medium, const HarmonicSteps& steps,
                     const BeamPoints& points, int first, int last, Complex* pressure, const BeamProgress& progress,
                     BeamReport* report) {
  check_source(source);
  const BeamWave wave = wave_of(medium, std::abs(velocity));
  const int harmonics = checked_harmonics(source, steps, wave, points, first, last);
  BeamPlan plan = plan_beam(source, wave, steps.dz, steps.dr, steps.rmax, points, harmonic_resolution);
  plan.harmonics = harmonics;
  PointQueue queue(plan, points);
  HarmonicMarch march(plan, source, medium._rho_density * medium._soundspeed * velocity);
  if (steps.dz <= 0 || steps.dr <= 0 || steps.rmax <= 0 || (steps.harmonics == 0 && harmonics > 1)) {
    print("Nonlinear beam: %d harmonics, dz %.3g to %.3g mm, dr %.3g mm, radius %.3g mm at the source (%d nodes).\n",
          harmonics, 1e3 * plan.first_step, 1e3 * plan.step, 1e3 * plan.grid.dr, 1e3 * plan.grid.rmax, plan.grid.nodes);
  }
  warn_of_points_outside(plan);

  const std::size_t listed = static_cast<std::size_t>(last - first + 1);
  std::vector<Complex> results(listed * points.count);
  PlaneWindow window(march, plan);
  ShockWatch shock(harmonics);
  const auto read = [&](const PointQueue::Entry& entry) {
    const double z = points.z[entry.point], scale = plan.frame.scale(z);
    const double path = z + 0.5 * entry.xi * entry.xi * plan.frame.bend(z);
    for (int n = first; n <= std::min(last, harmonics); ++n) {
      const Complex q = window.value(march, entry.xi, entry.zeta, n);
      results[static_cast<std::size_t>(n - first) * points.count + entry.point] =
          q * std::polar(1 / scale, -n * wave.k * path);
    }
  };
  int planes = 0;
  const int inside = std::min(static_cast<int>(plan.grid.rmax / plan.grid.dr), plan.grid.nodes);
  for (; !queue.empty(); ++planes) {
    const MarchPlane& plane = march.plane();
    if (queue.front().zeta <= plane.zeta + 4.2 * march.next_step()) {
      window.add(march);
    } else {
      window.clear();
    }
    const bool done = plane.zeta >= plan.end && window.count() >= 3;
    while (!queue.empty() && (done || (window.count() == 4 && queue.front().zeta <= window.last_but_one()))) {
      read(queue.front());
      queue.pop();
    }
    if (planes % 16 == 0 || done) shock.look(march, inside);
    if (progress && planes % 16 == 0 && !progress(std::min(plane.zeta / plan.end, 1.0))) return false;
    if (!queue.empty()) march.step();
  }
  shock.warn_of_tail();
  std::copy(results.begin(), results.end(), pressure);
  if (report != nullptr) {
    report->dz = plan.step, report->dr = plan.grid.dr, report->rmax = plan.grid.rmax;
    report->planes = planes, report->nodes = plan.grid.nodes, report->harmonics = harmonics;
    report->bytes = march.bytes() + 4 * sizeof(double) * march.field_size();
  }
  return true;
}

void equivalent_pressure(const Medium& medium, int harmonics, std::size_t count, const Complex* pressure,
                         double* equivalent) {
  const double exponent = medium._b > 0 ? medium._b : 1;
  for (std::size_t i = 0; i < count; ++i) {
    double heat = 0;
    for (int n = 1; n <= harmonics; ++n) {
      heat += std::pow(n, exponent) * std::norm(pressure[static_cast<std::size_t>(n - 1) * count + i]);
    }
    equivalent[i] = std::sqrt(heat);
  }
}

}  // namespace kesto
