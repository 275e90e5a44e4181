// A flat circular piston.
#pragma once

#include "transducers/axisymmetric_transducer.h"

// The face lies in the local plane z = 0 about the origin; points behind it (z < 0) get nothing. core/transducer.h says
// what an element needs before a computation, transducers/disc/disc.h what each computes. Those not
// listed here answer 1, but for the three stages of a decomposition, which are errors.
//
// Continuous waves are silent until the weight is set, by the last constructor or later; transients go by the
// amplitude, which starts at 1.
class CircularTransducer : public kesto::AxisymmetricTransducer {
 public:
  CircularTransducer() = default;
  explicit CircularTransducer(double radius);
  CircularTransducer(double radius, double time_delay);
  CircularTransducer(double radius, double amplitude, double phase);

  void debug(int) override;
  void mex_debug(int) override;

  int fnm_cw() override;
  int fnm_cw_apodized() override;
  int fnm_cw_sse() override;
  int rayleigh_cw() override;
  int rayleigh_cw_apodized() override;
  int rayleigh_cw_sse() override;

  int impulse_begin_and_end_times() override;
  int impulse_response() override;
  int fnm_transient() override;
  int fnm_fdtsd() override;
  int fnm_tsd() override;
  int fnm_tsd_low_precision() override;
  int fnm_tsd_sse() override;
  int rayleigh_transient() override;

  double radius = 0;  // m
};
