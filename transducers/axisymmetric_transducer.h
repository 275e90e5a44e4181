// What pistons, annuli and shells have and refuse alike.
#pragma once

#include <complex>

#include "core/transducer.h"

namespace kesto {

struct BeamSource;

// The stages of a decomposition are for the shapes that keep tables between them: an error here.
class AxisymmetricTransducer : public DecliningTransducer {
 public:
  int init_fnm_tsd() override;
  int call_fnm_tsd() override;
  int free_fnm_tsd() override;

  // A shell has a slot more than a piston before those of the nonlinear beam.
  struct WithoutFarField;
  class WithFarField;
};

struct AxisymmetricTransducer::WithoutFarField : AxisymmetricTransducer {};
class AxisymmetricTransducer::WithFarField : public AxisymmetricTransducer {
 public:
  virtual int farfield_cw_lossless() { return 1; }
};

// The nonlinear beam of an axisymmetric face, by the KZK equation.
template <class Base>
class BeamingTransducer : public Base {
 public:
  using Complex = std::complex<double>;

  // The parts of a step of the beam in plain form (kzk/routines.h says more): tridiagonal solves, which overwrite the
  // right side x and take scratch of n values; their coefficients at nodes i dr for a half step in the beam's range;
  // the nonlinear step of harmonics p, which takes scratch of twice as many; the source plane, the share of each ring
  // that the face covers. The marches of kzk_cw and kzk_transient do the same in vectors.
  virtual void Tridiag(int n, const double* lower, const double* diagonal, const double* upper, double* x,
                       double* scratch);
  virtual void TRIDIA(int n, const Complex* lower, const Complex* diagonal, const Complex* upper, Complex* x,
                      Complex* scratch);
  virtual void COEFF(int n, double dr, double wavenumber, double rayleigh, double half_step, Complex* lower,
                     Complex* diagonal, Complex* upper);
  virtual void NONLIN(int harmonics, double strength, Complex* p, Complex* scratch);
  virtual void INIT(int n, double dr, double* share);

  // Marched from the face outward (kzk/beam.h): the rule's KZK parameters give steps, radius and harmonics, 0 leaving
  // the choice to the solver, and which harmonic is superposed (0: the first). Points with z <= 0 get nothing. The
  // rule's nodes are not used.
  int kzk_cw() override;

  // The same of a pulse, with the excitation at the time samples; it attenuates.
  int kzk_transient() override;

 protected:
  virtual BeamSource beam_source() const = 0;
};

extern template class BeamingTransducer<AxisymmetricTransducer::WithoutFarField>;
extern template class BeamingTransducer<AxisymmetricTransducer::WithFarField>;

}  // namespace kesto
