// A flat annulus.
#pragma once

#include "transducers/axisymmetric_transducer.h"

// A circular piston less a smaller one; with an inner radius of 0 its fields are the piston's to the bit. Placed and
// declining like CircularTransducer.
class RingTransducer : public kesto::AxisymmetricTransducer {
 public:
  RingTransducer() = default;
  RingTransducer(double inner_radius, double outer_radius);
  RingTransducer(double inner_radius, double outer_radius, double time_delay);
  RingTransducer(double inner_radius, double outer_radius, double amplitude, double phase);

  void debug(int) override;
  void mex_debug(int) override;

  int fnm_cw() override;
  int fnm_cw_apodized() override;  // each of the two pistons with the profile of its own radius
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

  double inner_radius = 0;  // m
  double outer_radius = 0;  // m
};
