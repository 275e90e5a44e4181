// The march of the harmonics of a continuous wave.
#pragma once

#include <complex>

#include "kzk/aligned_scratch.h"
#include "kzk/harmonic_plan.h"
#include "kzk/kernels.h"

namespace kesto {

// The planes zeta_k of a march, with z and s there.
struct MarchPlane {
  double zeta = 0, z = 0, scale = 1;
};

// The field q_n on one plane and what takes it to the next. Each step is diffraction over the whole step, with half of
// the nonlinear and absorbing step before and half after it; the halves of neighbouring steps are done at once, so
// that the field lacks the latter half until `finish` adds it to a copy.
class HarmonicMarch {
 public:
  // direct_up_to: harmonics up to which the quadratic sums are direct and beyond which they go through a transform.
  HarmonicMarch(const BeamPlan& plan, const BeamSource& source, std::complex<double> pressure,
                int direct_up_to = direct_harmonics);

  void step();  // to the next plane
  const MarchPlane& plane() const { return plane_; }
  double next_step() const { return step_; }
  void copy_finished(AlignedScratch& to) const;  // the field of this plane

  // Of a field laid out as this one's.
  std::complex<double> value(const AlignedScratch& field, int node, int harmonic) const {
    const std::size_t at =
        static_cast<std::size_t>(node) * static_cast<std::size_t>(2 * padded_) + static_cast<std::size_t>(harmonic - 1);
    return {field[at], field[at + static_cast<std::size_t>(padded_)]};
  }
  const AlignedScratch& field() const { return field_; }
  std::size_t field_size() const { return field_.size(); }
  std::size_t bytes() const;

  static constexpr int direct_harmonics = 64;

 private:
  MarchPlane plane_at(double zeta) const;
  void make_table();
  void set_layer(double zeta);
  void nonlinear(double strength_length, double absorbing_length, AlignedScratch& field) const;

  const BeamPlan plan_;
  const KzkKernels kernels_;
  const int padded_, nodes_;
  const int transform_;
  AlignedScratch field_, pivots_, eliminated_;
  AlignedScratch lower_, upper_, well_, kept_, number_, inverse_step_, factor_, roots_, scratch_;
  MarchPlane plane_, before_;
  double step_, taken_ = 0, layer_part_ = 0;
  int planes_ = 0, damped_until_ = 4;
};

}  // namespace kesto
