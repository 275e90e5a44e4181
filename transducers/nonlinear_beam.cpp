// The nonlinear beams of pistons, annuli and shells: their faces as sources of the march, their points and their
// output.
#include <chrono>
#include <cmath>
#include <vector>

#include "core/internal/host.h"
#include "core/numerical_integration.h"
#include "fields/context.h"
#include "fields/point_road.h"
#include "kzk/beam.h"
#include "kzk/routines.h"
#include "transducers/cap_transducer.h"
#include "transducers/disc_transducer.h"

namespace kesto {

namespace {

// The grid's points in the element's frame.
struct BeamGrid {
  std::vector<double> r, z;

  explicit BeamGrid(Transducer& element) {
    for_each_local_point(element, [&](int, const CartesianCoordinate& p) {
      r.push_back(std::hypot(p.x, p.y));
      z.push_back(p.z);
    });
  }
  BeamPoints points() const { return {r.size(), r.data(), z.data()}; }
};

// Prints how far a run of more than a few seconds has come. The host may end the computation there.
BeamProgress printed_progress() {
  using Clock = std::chrono::steady_clock;
  return [last = Clock::now()](double done) mutable {
    constexpr std::chrono::seconds interval(3);
    if (Clock::now() - last > interval) {
      print("Nonlinear beam: %.0f %% done.\n", 100 * done);
      last = Clock::now();
    }
    return true;
  };
}

}  // namespace

void AxisymmetricTransducer::Tridiag(int n, const double* lower, const double* diagonal, const double* upper, double* x,
                                     double* scratch) {
  solve_tridiagonal(n, lower, diagonal, upper, x, scratch);
}

void AxisymmetricTransducer::TRIDIA(int n, const Complex* lower, const Complex* diagonal, const Complex* upper,
                                    Complex* x, Complex* scratch) {
  solve_tridiagonal(n, lower, diagonal, upper, x, scratch);
}

void AxisymmetricTransducer::COEFF(int n, double dr, double wavenumber, double rayleigh, double half_step,
                                   Complex* lower, Complex* diagonal, Complex* upper) {
  RadialGrid grid;
  grid.dr = dr, grid.nodes = n;
  tridiagonal_coefficients(grid, wavenumber, rayleigh, half_step, lower, diagonal, upper);
}

void AxisymmetricTransducer::NONLIN(int harmonics, double strength, Complex* p, Complex* scratch) {
  nonlinear_step(harmonics, strength, p, scratch);
}

void AxisymmetricTransducer::INIT(int n, double dr, double* share) {
  RadialGrid grid;
  grid.dr = dr, grid.nodes = n;
  source_plane(beam_source(), grid, share);
}

int AxisymmetricTransducer::march_kzk_cw() {
  require_complex_output(*this);
  if (is_silent(*this)) return 0;
  const BeamGrid grid(*this);
  HarmonicSteps steps;
  steps.dz = integral->kzk_dz, steps.dr = integral->kzk_dr, steps.rmax = integral->kzk_rmax;
  steps.harmonics = integral->kzk_harmonics;
  if (integral->kzk_output_harmonic < 0) fail("The harmonic asked of a nonlinear beam must not be negative.\n");
  const int harmonic = integral->kzk_output_harmonic > 0 ? integral->kzk_output_harmonic : 1;
  std::vector<Complex> pressure(grid.r.size());
  march_harmonics(beam_source(), complex_weight, *medium, steps, grid.points(), harmonic, harmonic, pressure.data(),
                  printed_progress());
  for (std::size_t i = 0; i < pressure.size(); ++i) {
    if (grid.z[i] > 0) superpose_complex_pressure(static_cast<int>(i), pressure[i]);
  }
  return 0;
}

int AxisymmetricTransducer::march_kzk_transient() {
  require_excited_output(*this);
  if (is_silent(*this)) return 0;
  const BeamGrid grid(*this);
  PulseSteps steps;
  steps.dz = integral->kzk_dz, steps.dr = integral->kzk_dr, steps.rmax = integral->kzk_rmax;
  steps.dtau = integral->kzk_dtau, steps.length = integral->kzk_tau_length;
  std::vector<double> times;
  for (int k = 0; k < time_vector->nt; ++k) times.push_back(time_vector->time_index_value(k));
  march_pulse(
      beam_source(), *excitation, amplitude, time_delay, *medium, steps, grid.points(), times.data(), time_vector->nt,
      [&](std::size_t i, const double* trace) { superpose_transient_pressure(static_cast<int>(i), trace); },
      printed_progress());
  return 0;
}

BeamSource DiscTransducer::beam_source() const { return {face().outer, face().inner}; }
int DiscTransducer::kzk_cw() { return march_kzk_cw(); }
int DiscTransducer::kzk_transient() { return march_kzk_transient(); }

BeamSource CapTransducer::beam_source() const { return {face().outer, face().inner, face().roc}; }
int CapTransducer::kzk_cw() { return march_kzk_cw(); }
int CapTransducer::kzk_transient() { return march_kzk_transient(); }

}  // namespace kesto
