// A spherical annulus.
#pragma once

#include "transducers/axisymmetric_transducer.h"

// A spherical shell less a smaller one of the same curvature, placed like SphericalTransducer; with an inner radius of
// 0 its fields are the shell's to the bit. Each of the two by itself sends nothing behind its own rim plane and outside
// the sphere. Computations not listed here answer 1, but for the three stages of a decomposition, which are errors.
class SphericalRingTransducer : public kesto::AxisymmetricTransducer {
 public:
  SphericalRingTransducer() = default;
  SphericalRingTransducer(double inner_radius, double outer_radius, double focal_distance);
  SphericalRingTransducer(double inner_radius, double outer_radius, double focal_distance, double time_delay);
  SphericalRingTransducer(double inner_radius, double outer_radius, double focal_distance, double amplitude,
                          double phase);

  void debug(int) override;
  void mex_debug(int) override;

  int fnm_cw() override;
  int rayleigh_cw() override;
  virtual int farfield_cw_lossless() { return 1; }

  int impulse_begin_and_end_times() override;
  int impulse_response() override;
  int fnm_transient() override;
  int fnm_fdtsd() override;
  int fnm_tsd() override;
  int fnm_tsd_low_precision() override;  // of the shell without the hole: callers rely on it

  double inner_radius = 0;    // of the aperture, m
  double outer_radius = 0;    // m
  double focal_distance = 0;  // radius of curvature, m
};
