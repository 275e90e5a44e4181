// A spherical shell.
#pragma once

#include "transducers/cap_transducer.h"

// Its fields, and where its face lies, are documented at CapTransducer.
class SphericalTransducer : public kesto::CapTransducer {
 public:
  SphericalTransducer() = default;
  SphericalTransducer(double radius, double roc);
  SphericalTransducer(double radius, double roc, double time_delay);
  SphericalTransducer(double radius, double roc, double amplitude, double phase);

  void debug(int) override;
  void mex_debug(int) override;  // KEPT: prints the radius alone
  kesto::CapFace face() const override { return {radius, roc}; }

  double radius = 0;  // of the aperture, m
  double roc = 0;     // radius of curvature, m
};
