// What pistons, annuli and shells have and refuse alike.
#pragma once

#include <complex>

#include "core/transducer.h"
#include "kzk/beam.h"

namespace kesto {

// The stages of a decomposition are for the shapes that keep tables between them: an error here.
class AxisymmetricTransducer : public DecliningTransducer {
 public:
  int init_fnm_tsd() override;
  int call_fnm_tsd() override;
  int free_fnm_tsd() override;

  // The parts of a step of the nonlinear beam in plain form (kzk/routines.h says more): tridiagonal solves, which
  // overwrite the right side x and take scratch of n values; their coefficients at nodes i dr for a half step in the
  // beam's range; the nonlinear step of harmonics p, which takes scratch of twice as many; the source plane, the share
  // of each ring that the face covers. The marches of kzk_cw and kzk_transient do the same in vectors.
  virtual void Tridiag(int n, const double* lower, const double* diagonal, const double* upper, double* x,
                       double* scratch);
  virtual void TRIDIA(int n, const std::complex<double>* lower, const std::complex<double>* diagonal,
                      const std::complex<double>* upper, std::complex<double>* x, std::complex<double>* scratch);
  virtual void COEFF(int n, double dr, double wavenumber, double rayleigh, double half_step,
                     std::complex<double>* lower, std::complex<double>* diagonal, std::complex<double>* upper);
  virtual void NONLIN(int harmonics, double strength, std::complex<double>* p, std::complex<double>* scratch);
  virtual void INIT(int n, double dr, double* share);

 protected:
  virtual BeamSource beam_source() const = 0;

  int march_kzk_cw();
  int march_kzk_transient();
};

}  // namespace kesto
