// A flat circular piston.
#pragma once

#include "transducers/disc_transducer.h"

// Its fields, and where its face lies, are documented at DiscTransducer.
class CircularTransducer : public kesto::DiscTransducer {
 public:
  CircularTransducer() = default;
  explicit CircularTransducer(double radius);
  CircularTransducer(double radius, double time_delay);  // KEPT: its continuous waves are silent
  CircularTransducer(double radius, double amplitude, double phase);

  void debug(int) override;
  void mex_debug(int) override;
  kesto::DiscFace face() const override { return {radius}; }

  double radius = 0;  // m
};
