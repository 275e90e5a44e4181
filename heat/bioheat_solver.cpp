#include "heat/bioheat_solver.h"

#include <algorithm>
#include <cstddef>

#include "core/internal/host.h"
#include "heat/internal/bioheat_kernels.h"
#include "heat/internal/diagonal_order.h"

namespace kesto {

namespace {

// Sweeps that follow each other through the planes while these are in cache. Each works on a plane right after the one
// before it has done the next plane, which is the earliest that the order of the plain loops allows.
constexpr int sweeps_in_flight = 15;

// Of these, so many take turns, a diagonal each, each in its own plane. A diagonal reads what the one before it in the
// same plane has just written, shifted by one, which the processor cannot forward from its store queue; the turns of
// the others give the values time to reach the cache. More would crowd it.
constexpr int sweeps_in_turn = 3;

struct Grid {
  DiagonalOrder order;
  int planes;

  std::ptrdiff_t plane_points() const { return order.points(); }
};

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

// Heat source over kappa, W/m^3 / (W/(m K)), from column-major pressures into diagonal order.
void fill_source(const Grid& grid, const BioheatProblem& p, const double* real, const double* imag, double* source,
                 double* plane) {
  const double absorbed = p.absorption / p.impedance;
  const double inverse_conductivity = 1.0 / p.conductivity;
  const std::ptrdiff_t points = grid.plane_points();
  for (int k = 0; k < grid.planes; ++k, real += points, imag += points, source += points) {
    for (std::ptrdiff_t n = 0; n < points; ++n) {
      const double heat = (imag[n] * imag[n] + real[n] * real[n]) * absorbed;
      plane[n] = heat * inverse_conductivity;
    }
    grid.order.for_each_point(
        [=](std::ptrdiff_t diagonal, std::ptrdiff_t column_major) { source[diagonal] = plane[column_major]; });
  }
}

void to_column_major(const Grid& grid, double* t, double* plane) {
  const std::ptrdiff_t points = grid.plane_points();
  for (int k = 0; k < grid.planes; ++k, t += points) {
    std::copy(t, t + points, plane);
    grid.order.for_each_point(
        [=](std::ptrdiff_t diagonal, std::ptrdiff_t column_major) { t[column_major] = plane[diagonal]; });
  }
}

// One sweep each of `count` planes, from t and source downwards, each one sweep behind the plane above it.
void relax_planes(const Grid& grid, double* t, const double* source, int count, const RelaxationWeights& weights,
                  RelaxDiagonals relax) {
  const int last = grid.order.diagonals() - 3;  // the last one with an interior point
  for (int d = 2; d <= last; ++d) {
    const int first = grid.order.first_interior(d);
    DiagonalRun run;
    run.own = grid.order.origin(d) + first;
    run.next = grid.order.origin(d + 1) + first;
    run.previous = grid.order.origin(d - 1) + first;
    run.plane = grid.plane_points();
    run.length = grid.order.last_interior(d) - first + 1;
    run.planes = count;
    relax(t, source, run, weights);
  }
}

void sweep(const Grid& grid, double* t, const double* source, const RelaxationWeights& weights, int sweeps,
           RelaxDiagonals relax) {
  const int last_plane = grid.planes - 2;
  for (int left = sweeps; left > 0; left -= sweeps_in_flight) {
    const int in_flight = std::min(sweeps_in_flight, left);
    // Sweep s of those in flight works s planes behind the leading one.
    for (int leading = 1; leading <= last_plane + in_flight - 1; ++leading) {
      const int end = std::min(in_flight, leading);
      for (int s = std::max(0, leading - last_plane); s < end; s += sweeps_in_turn) {
        const std::ptrdiff_t plane = (leading - s) * grid.plane_points();
        relax_planes(grid, t + plane, source + plane, std::min(sweeps_in_turn, end - s), weights, relax);
      }
    }
  }
}

}  // namespace

void solve_steady_bioheat(const BioheatProblem& problem, const double* pressure_real, const double* pressure_imag,
                          double* heat_source, double* temperature, VectorTarget target) {
  const Grid grid = {DiagonalOrder(problem.n0, problem.n1), problem.n2};
  std::fill_n(temperature, grid.plane_points() * grid.planes, 0.0);
  if (problem.n0 < 3 || problem.n1 < 3 || problem.n2 < 3) return;
  const ScratchArray<double> plane(static_cast<std::size_t>(grid.plane_points()));
  fill_source(grid, problem, pressure_real, pressure_imag, heat_source, plane.data());
  sweep(grid, temperature, heat_source, weights_of(problem), problem.sweeps, relax_diagonals(target));
  to_column_major(grid, temperature, plane.data());
}

}  // namespace kesto
