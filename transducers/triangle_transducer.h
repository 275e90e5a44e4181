// The place of a flat triangular piston among the geometries.
#pragma once

#include "core/transducer.h"

// Abstract: it has no vertices and computes no field. Five computations are left to whoever gives it a geometry; the
// others answer 1.
class TriangleTransducer : public kesto::DecliningTransducer {
 public:
  TriangleTransducer() = default;

  // Prints the element and takes every grid point into local coordinates; adds nothing. Warns without f0. Answers 0.
  int fnm_cw() override;

  int init_fnm_tsd() override = 0;
  int call_fnm_tsd() override = 0;
  int free_fnm_tsd() override = 0;
  int kzk_transient() override = 0;
  int kzk_cw() override = 0;

  int fnm_cw_cuda(int) { return 0; }
  int fnm_transient_cuda(int) { return 1; }
  int kzk_nonlinear() { return 1; }
};
