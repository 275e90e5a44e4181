// The march of harmonics, one node and one harmonic at a time: what the vectors are compared with and timed against.
#pragma once

#include <cmath>
#include <complex>
#include <vector>

#include "kzk/harmonic_plan.h"

namespace kesto::test {

class PlainMarch {
 public:
  PlainMarch(const BeamPlan& plan, const BeamSource& source, std::complex<double> pressure)
      : plan_(plan), nodes_(static_cast<std::size_t>(plan.grid.nodes)), step_(plan.first_step) {
    std::vector<double> share(nodes_);
    source_plane(source, plan.grid, share.data());
    field.assign(static_cast<std::size_t>(plan.harmonics), std::vector<std::complex<double>>(nodes_));
    for (std::size_t i = 0; i < nodes_; ++i) field[0][i] = share[i] * pressure;
    for (int n = 1; n <= plan.harmonics; ++n) {
      Rows rows = {Line(nodes_), Line(nodes_), Line(nodes_)};
      tridiagonal_coefficients(plan.grid, n * plan.wave.k, plan.frame.rayleigh, 0.5 * step_, rows.lower.data(),
                               rows.diagonal.data(), rows.upper.data());
      rows_.push_back(rows);
    }
    scratch_.resize(std::max(nodes_, field.size() * 3));
  }

  // Steps that do not grow, with the nonlinear part of a half step behind the first plane and whole ones after it.
  void step() {
    const double here = z_of(zeta_), next = z_of(zeta_ + step_);
    distort(0.5 * (taken_ + step_) * plan_.frame.scale(here), 0.5 * (next - before_));
    const double middle = std::min(zeta_ + 0.5 * step_, 1.5 * plan_.frame.rayleigh);
    for (std::size_t n = 0; n < field.size(); ++n) {
      for (int solve = 0; solve < (planes_ < 4 ? 2 : 1); ++solve) {
        Line& q = field[n];
        Line x = q;
        solve_tridiagonal(plan_.grid.nodes, rows_[n].lower.data(), rows_[n].diagonal.data(), rows_[n].upper.data(),
                          x.data(), scratch_.data());
        for (std::size_t i = 0; i < nodes_; ++i) {
          q[i] = plan_.grid.kept(static_cast<int>(i), step_ / middle) * (planes_ < 4 ? x[i] : 2.0 * x[i] - q[i]);
        }
      }
    }
    before_ = here, taken_ = step_, zeta_ += step_;
    ++planes_;
  }

  std::vector<std::vector<std::complex<double>>> field;  // [harmonic][node]

 private:
  using Line = std::vector<std::complex<double>>;
  struct Rows {
    Line lower, diagonal, upper;
  };

  double z_of(double zeta) const { return std::fmin(plan_.frame.z_of(zeta), 4 * plan_.frame.z_of(plan_.end)); }

  void distort(double strength_length, double absorbing_length) {
    const int last = static_cast<int>(plan_.grid.rmax / plan_.grid.dr) + 1, harmonics = plan_.harmonics;
    std::complex<double>* const p = scratch_.data();
    std::vector<double> factor(field.size());
    for (int n = 1; n <= harmonics; ++n) {
      factor[static_cast<std::size_t>(n - 1)] = std::exp(-0.5 * plan_.wave.attenuation(n) * absorbing_length);
    }
    for (std::size_t i = 0; i < static_cast<std::size_t>(last); ++i) {
      for (std::size_t n = 0; n < field.size(); ++n) p[n] = factor[n] * field[n][i];
      nonlinear_step(harmonics, plan_.wave.nonlinearity / 4 * strength_length, p, p + harmonics);
      for (std::size_t n = 0; n < field.size(); ++n) field[n][i] = factor[n] * p[n];
    }
  }

  const BeamPlan plan_;
  std::size_t nodes_;
  std::vector<Rows> rows_;
  Line scratch_;
  double step_, taken_ = 0, zeta_ = 0, before_ = 0;
  int planes_ = 0;
};

}  // namespace kesto::test
