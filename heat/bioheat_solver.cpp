#include "heat/bioheat_solver.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "core/internal/host.h"
#include "core/internal/huge_pages.h"
#include "heat/internal/skewed_layout.h"
#include "heat/internal/skewing.h"
#include "heat/internal/solve.h"
#include "heat/internal/sweeps.h"

namespace kesto {

namespace {

RelaxationWeights weights_of(const BioheatProblem& p) {
  constexpr double omega = 1.86;
  RelaxationWeights w;
  w.ax = 1.0 / (p.dx * p.dx);
  w.ay = 1.0 / (p.dy * p.dy);
  w.az = 1.0 / (p.dz * p.dz);
  w.f = (omega * p.conductivity) /
        (p.perfusion * p.specific_heat_of_blood + (w.ax + w.ay + w.az) * (p.conductivity + p.conductivity));
  w.r = -0.8600000000000001;  // 1 - omega
  return w;
}

// Temperature and source, uninitialised, on a boundary of a vector.
class SkewedFields {
 public:
  explicit SkewedFields(const SkewedLayout& layout)
      : field_(layout.field), doubles_(static_cast<std::size_t>(2 * layout.field + max_lanes)), block_(doubles_) {
    ask_for_huge_pages(block_.data(), doubles_ * sizeof(double));
  }

  double* temperature() const {
    constexpr std::uintptr_t vector = max_lanes * sizeof(double);
    const std::uintptr_t past = reinterpret_cast<std::uintptr_t>(block_.data()) % vector;
    return block_.data() + (vector - past) % vector / sizeof(double);
  }
  double* source() const { return temperature() + field_; }

 private:
  std::ptrdiff_t field_;
  std::size_t doubles_;
  ScratchArray<double> block_;
};

void zero_boundary(const BioheatProblem& p, double* field) {
  const std::ptrdiff_t n0 = p.n0, plane = n0 * p.n1;
  std::fill_n(field, plane, 0.0);
  for (int k = 1; k < p.n2 - 1; ++k) {
    double* const begin = field + k * plane;
    std::fill_n(begin, n0, 0.0);
    for (int j = 1; j < p.n1 - 1; ++j) begin[j * n0] = begin[j * n0 + n0 - 1] = 0;
    std::fill_n(begin + plane - n0, n0, 0.0);
  }
  std::fill_n(field + (p.n2 - 1) * plane, plane, 0.0);
}

void solve_plainly(const BioheatProblem& p, const double* real, const double* imag, double* source, double* t) {
  const std::ptrdiff_t row = p.n0, plane = row * p.n1, points = plane * p.n2;
  const double absorbed = p.absorption / p.impedance, inverse_conductivity = 1.0 / p.conductivity;
  const RelaxationWeights w = weights_of(p);
  for (std::ptrdiff_t n = 0; n < points; ++n) {
    source[n] = (imag[n] * imag[n] + real[n] * real[n]) * absorbed * inverse_conductivity;
  }
  std::fill_n(t, points, 0.0);
  for (int left = p.sweeps; left > 0; --left) {
    for (std::ptrdiff_t first = plane; first < points - plane; first += plane) {
      for (std::ptrdiff_t begin = first + row; begin < first + plane - row; begin += row) {
        for (std::ptrdiff_t n = begin + 1; n < begin + row - 1; ++n) {
          t[n] = relaxed(t[n], t[n + 1], t[n - 1], t[n + row], t[n - row], t[n + plane], t[n - plane], source[n], w);
        }
      }
    }
  }
}

}  // namespace

int fastest_lanes(const BioheatProblem& problem, VectorTarget widest) {
  // In cycles, on Emerald Rapids: a vector whose neighbours are in the caches, the same alone in its chain, what a
  // plane and a row take besides, and a point of the plain loops.
  constexpr struct {
    VectorTarget target;
    double vector, chain;
  } costs[] = {{VectorTarget::baseline, 4.2, 23}, {VectorTarget::avx2, 5.0, 23}, {VectorTarget::avx512, 6.6, 28}};
  constexpr double plane = 100, row = 4, plain_point = 21;
  int lanes = 1;
  double least = plain_point * (problem.n0 - 2) * (problem.n1 - 2);
  for (const auto& cost : costs) {
    if (cost.target > widest) break;
    const SkewedLayout layout(static_cast<int>(cost.target), problem.n0, problem.n1, problem.n2);
    const int turns = std::min({max_turns, layout.planes, layout.rows});
    const double cycles = plane + layout.rows * (row + layout.vectors * std::max(cost.vector, cost.chain / turns));
    if (cycles >= least) continue;
    least = cycles;
    lanes = layout.lanes;
  }
  return lanes;
}

void solve_in_lanes(VectorTarget target, const BioheatProblem& problem, const double* pressure_real,
                    const double* pressure_imag, double* temperature) {
  const SkewedLayout layout(static_cast<int>(target), problem.n0, problem.n1, problem.n2);
  const SkewedFields fields(layout);
  std::fill_n(fields.temperature(), layout.field, 0.0);
  const double absorbed = problem.absorption / problem.impedance, inverse_conductivity = 1.0 / problem.conductivity;
  const SkewSource skew_source = skew_source_on(target);
  for (int k = 1; k <= layout.planes; ++k) {
    skew_source(layout, k, {pressure_real, pressure_imag}, absorbed, inverse_conductivity, fields.source());
  }
  sweep(layout, weights_of(problem), problem.sweeps, target, fields.temperature(), fields.source());

  const std::size_t points = std::size_t(problem.n0) * std::size_t(problem.n1) * std::size_t(problem.n2);
  ask_for_huge_pages(temperature, points * sizeof(double));
  zero_boundary(problem, temperature);
  const Unskew unskew = unskew_on(target);
  for (int k = 1; k <= layout.planes; ++k) unskew(layout, k, fields.temperature(), temperature);
}

void solve_steady_bioheat(const BioheatProblem& problem, const double* pressure_real, const double* pressure_imag,
                          double* heat_source, double* temperature, VectorTarget target) {
  if (problem.n0 < 3 || problem.n1 < 3 || problem.n2 < 3) {
    std::fill_n(temperature, std::ptrdiff_t{problem.n0} * problem.n1 * problem.n2, 0.0);
    return;
  }
  const int lanes = fastest_lanes(problem, target);
  if (lanes == 1) {
    solve_plainly(problem, pressure_real, pressure_imag, heat_source, temperature);
  } else {
    solve_in_lanes(static_cast<VectorTarget>(lanes), problem, pressure_real, pressure_imag, temperature);
  }
}

}  // namespace kesto
