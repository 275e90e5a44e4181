// A spherical annulus.
#pragma once

#include "transducers/cap_transducer.h"

// A spherical shell less a smaller one of the same curvature; with an inner radius of 0 its fields are the shell's to
// the bit. They are documented at CapTransducer; single precision in continuous waves, the forms behind the source and
// the nonlinear beams answer 1.
class SphericalRingTransducer : public kesto::CapTransducer {
 public:
  SphericalRingTransducer() = default;
  SphericalRingTransducer(double inner_radius, double outer_radius, double focal_distance);
  SphericalRingTransducer(double inner_radius, double outer_radius, double focal_distance, double time_delay);
  SphericalRingTransducer(double inner_radius, double outer_radius, double focal_distance, double amplitude,
                          double phase);

  void debug(int) override;
  void mex_debug(int) override;
  kesto::CapFace face() const override { return {outer_radius, focal_distance, inner_radius}; }

  int fnm_cw_sse() override { return 1; }
  int rayleigh_cw_sse() override { return 1; }
  int fnm_transient_behind_source() override { return 1; }
  int fnm_tsd_behind_source() override { return 1; }
  int kzk_cw() override { return 1; }
  int kzk_transient() override { return 1; }
  int fnm_tsd_low_precision() override;  // KEPT: of the shell without the hole

  double inner_radius = 0;    // of the aperture, m
  double outer_radius = 0;    // m
  double focal_distance = 0;  // radius of curvature, m
};
