// A flat annulus.
#pragma once

#include "transducers/disc_transducer.h"

// A circular piston less a smaller one; with an inner radius of 0 its fields are the piston's to the bit. They are
// documented at DiscTransducer.
class RingTransducer : public kesto::DiscTransducer {
 public:
  RingTransducer() = default;
  RingTransducer(double inner_radius, double outer_radius);
  RingTransducer(double inner_radius, double outer_radius, double time_delay);
  RingTransducer(double inner_radius, double outer_radius, double amplitude, double phase);

  void debug(int) override;
  void mex_debug(int) override;
  kesto::DiscFace face() const override { return {outer_radius, inner_radius}; }

  double inner_radius = 0;  // m
  double outer_radius = 0;  // m
};
