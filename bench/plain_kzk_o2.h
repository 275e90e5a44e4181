// The plain march of harmonics, compiled by itself.
#pragma once

#include <complex>
#include <memory>

#include "kzk/harmonic_plan.h"

class PlainMarchO2 {
 public:
  PlainMarchO2(const kesto::BeamPlan& plan, const kesto::BeamSource& source, std::complex<double> pressure);
  ~PlainMarchO2();
  void step();
  std::complex<double> value(int node, int harmonic) const;

 private:
  struct March;
  std::unique_ptr<March> march_;
};
