// The nonlinear beams of pistons, annuli and shells: their faces as sources of the march, their points and their
// output.
#include <chrono>
#include <cmath>
#include <memory>

#include "core/internal/host.h"
#include "core/numerical_integration.h"
#include "fields/context.h"
#include "fields/point_road.h"
#include "fields/time_axis.h"
#include "kzk/beam.h"
#include "kzk/routines.h"
#include "transducers/cap_transducer.h"
#include "transducers/disc_transducer.h"

namespace kesto {

namespace {

// The grid's points in the element's frame.
struct BeamGrid {
  ScratchArray<double> r, z;
  std::size_t count;

  explicit BeamGrid(Transducer& element)
      : r(element.global_coordinate_grid->npoints),
        z(element.global_coordinate_grid->npoints),
        count(static_cast<std::size_t>(element.global_coordinate_grid->npoints)) {
    for_each_local_point(element, [&](int i, const CartesianCoordinate& p) {
      r[i] = std::hypot(p.x, p.y);
      z[i] = p.z;
    });
  }
  BeamPoints points() const { return {count, r.data(), z.data()}; }
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

template <class Base>
void BeamingTransducer<Base>::Tridiag(int n, const double* lower, const double* diagonal, const double* upper,
                                      double* x, double* scratch) {
  solve_tridiagonal(n, lower, diagonal, upper, x, scratch);
}

template <class Base>
void BeamingTransducer<Base>::TRIDIA(int n, const Complex* lower, const Complex* diagonal, const Complex* upper,
                                     Complex* x, Complex* scratch) {
  solve_tridiagonal(n, lower, diagonal, upper, x, scratch);
}

template <class Base>
void BeamingTransducer<Base>::COEFF(int n, double dr, double wavenumber, double rayleigh, double half_step,
                                    Complex* lower, Complex* diagonal, Complex* upper) {
  RadialGrid grid;
  grid.dr = dr, grid.nodes = n;
  tridiagonal_coefficients(grid, wavenumber, rayleigh, half_step, lower, diagonal, upper);
}

template <class Base>
void BeamingTransducer<Base>::NONLIN(int harmonics, double strength, Complex* p, Complex* scratch) {
  nonlinear_step(harmonics, strength, p, scratch);
}

template <class Base>
void BeamingTransducer<Base>::INIT(int n, double dr, double* share) {
  RadialGrid grid;
  grid.dr = dr, grid.nodes = n;
  source_plane(beam_source(), grid, share);
}

template <class Base>
int BeamingTransducer<Base>::kzk_cw() {
  require_complex_output(*this);
  if (is_silent(*this)) return 0;
  const NumericalIntegration& rule = *this->integral;
  if (rule.kzk_output_harmonic < 0) fail("The harmonic asked of a nonlinear beam must not be negative.\n");
  HarmonicSteps steps;
  steps.dz = rule.kzk_dz, steps.dr = rule.kzk_dr, steps.rmax = rule.kzk_rmax;
  steps.harmonics = rule.kzk_harmonics;
  const int harmonic = rule.kzk_output_harmonic > 0 ? rule.kzk_output_harmonic : 1;
  const BeamGrid grid(*this);
  const ScratchArray<Complex> pressure(grid.count);
  std::uninitialized_fill_n(pressure.data(), grid.count, Complex());
  march_harmonics(beam_source(), this->complex_weight, *this->medium, steps, grid.points(), harmonic, harmonic,
                  pressure.data(), printed_progress());
  for (std::size_t i = 0; i < grid.count; ++i) {
    if (grid.z[i] > 0) this->superpose_complex_pressure(static_cast<int>(i), pressure[i]);
  }
  return 0;
}

template <class Base>
int BeamingTransducer<Base>::kzk_transient() {
  require_excited_output(*this);
  if (is_silent(*this)) return 0;
  const NumericalIntegration& rule = *this->integral;
  PulseSteps steps;
  steps.dz = rule.kzk_dz, steps.dr = rule.kzk_dr, steps.rmax = rule.kzk_rmax;
  steps.dtau = rule.kzk_dtau, steps.length = rule.kzk_tau_length;
  const BeamGrid grid(*this);
  const TimeAxis axis(*this);
  march_pulse(
      beam_source(), *this->excitation, this->amplitude, this->time_delay, *this->medium, steps, grid.points(),
      axis.times.data(), axis.samples,
      [&](std::size_t i, const double* trace) { this->superpose_transient_pressure(static_cast<int>(i), trace); },
      printed_progress());
  return 0;
}

template class BeamingTransducer<AxisymmetricTransducer::WithoutFarField>;
template class BeamingTransducer<AxisymmetricTransducer::WithFarField>;

BeamSource DiscTransducer::beam_source() const { return {face().outer, face().inner}; }
BeamSource CapTransducer::beam_source() const { return {face().outer, face().inner, face().roc}; }

}  // namespace kesto
