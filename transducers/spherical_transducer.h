// A spherical shell.
#pragma once

#include "transducers/axisymmetric_transducer.h"

// A concave cap with its apex at the local origin, which radiates to its centre of curvature at (0, 0, roc); roc
// exceeds the radius. core/transducer.h says what an element needs before a computation, transducers/cap/cap.h
// what each computes. Those not
// listed here answer 1, but for the three stages of a decomposition, which are errors.
//
// Continuous waves are silent until the weight is set, by the last constructor or later; transients go by the
// amplitude, which starts at 1.
class SphericalTransducer : public kesto::AxisymmetricTransducer {
 public:
  SphericalTransducer() = default;
  SphericalTransducer(double radius, double roc);
  SphericalTransducer(double radius, double roc, double time_delay);
  SphericalTransducer(double radius, double roc, double amplitude, double phase);

  void debug(int) override;
  void mex_debug(int) override;  // the radius alone: callers rely on it

  int fnm_cw() override;
  int fnm_cw_sse() override;
  int rayleigh_cw() override;
  int rayleigh_cw_sse() override;
  virtual int farfield_cw_lossless() { return 1; }

  int impulse_begin_and_end_times() override;
  int impulse_response() override;
  int fnm_transient() override;
  int fnm_fdtsd() override;
  int fnm_tsd() override;
  int fnm_transient_behind_source() override;  // points behind the shell too
  int fnm_tsd_behind_source() override;
  int fnm_tsd_low_precision() override;

  double radius = 0;  // of the aperture, m
  double roc = 0;     // radius of curvature, m
};
