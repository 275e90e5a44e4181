// Fields of a spherical cap, and of a spherical annulus as a cap less another: what shell and annulus share.
#pragma once

#include "transducers/axisymmetric_transducer.h"

namespace kesto {

struct CapFace {
  double outer;      // aperture radius, m
  double roc;        // radius of curvature, m; exceeds the radii
  double inner = 0;  // aperture radius of the hole, m; 0 for a full cap
};

// A concave face with the apex of its sphere at the local origin, which radiates to its centre of curvature at (0, 0,
// roc). Points behind the rim plane and outside the sphere get nothing; of an annulus, each of the two caps by itself
// sends nothing behind its own rim plane. core/transducer.h says what an element needs before a computation.
// Computations not listed here answer 1, but for the three stages of a decomposition, which are errors. The rule is
// expected on [-1, 1].
//
// Continuous waves are silent until the weight is set; transients go by the amplitude, which starts at 1, and are
// lossless whatever the medium attenuates, but for the nonlinear ones.
class CapTransducer : public BeamingTransducer<AxisymmetricTransducer::WithFarField> {
 public:
  // The rim integral of McGough and Kelly's fast nearest method for a shell; at the centre of curvature its lossless
  // limit, j 2 pi rho f0 (depth) w, times e^{-(alpha + jk) roc}, with f0 as stored. Without f0: a warning, and the
  // wavelength of 1 MHz.
  int fnm_cw() override;

  // In single precision, four abscissas at a time; those beyond a multiple of four are left out.
  int fnm_cw_sse() override;

  // The Rayleigh integral over n by n cells of equal angles, n the number of the rule's nodes. No default for an unset
  // f0. KEPT: a point's offset from the axis enters the cross term by its x alone, so that the sum is the field only in
  // the local plane y = 0.
  int rayleigh_cw() override;

  // In single precision, four polar angles at a time; those beyond a multiple of four are left out. An unset f0 gets
  // its default within the sum.
  int rayleigh_cw_sse() override;

  // The earliest and the latest time at which a grid point hears the cap of the outer radius, with the element's delay.
  // An empty grid leaves the window as it is.
  int impulse_begin_and_end_times() override;

  // The velocity potential's impulse response at the sample times less the delay, times the amplitude, in closed form.
  // Points behind the cap get theirs too. KEPT: at the centre of curvature it is one sample, and only where a sample
  // lies at roc/c plus twice the delay.
  int impulse_response() override;

  // The rim integral of fnm_cw with the excitation for its waves; at the centre of curvature its limit,
  // rho depth amplitude v'(t - roc/c - delay).
  int fnm_transient() override;
  int fnm_transient_behind_source() override;  // points behind the cap too

  // The same by time-space decomposition.
  int fnm_tsd() override;
  int fnm_tsd_behind_source() override;  // points behind the cap too
  int fnm_fdtsd() override;              // through the signal's complex factors
  int fnm_tsd_low_precision() override;  // geometry in single precision

  virtual CapFace face() const = 0;

 protected:
  BeamSource beam_source() const override;
  int decompose_in_single_precision(CapFace face);
};

}  // namespace kesto
