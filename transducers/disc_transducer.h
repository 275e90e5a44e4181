// Fields of a flat disc, and of an annulus as a disc less another: what circular piston and flat annulus share.
#pragma once

#include "transducers/axisymmetric_transducer.h"

namespace kesto {

struct DiscFace {
  double outer;      // m
  double inner = 0;  // m; 0 for a full disc
};

// The face lies in the local plane z = 0 about the origin and radiates towards +z; points behind it (z < 0) get nothing
// unless said otherwise. core/transducer.h says what an element needs before a computation. Computations not listed
// here answer 1, but for the three stages of a decomposition, which are errors. The rule is mapped to [0, pi] whatever
// it was on, and left there.
//
// Continuous waves are silent until the weight is set; transients go by the amplitude, which starts at 1, and are
// lossless whatever the medium attenuates, but for the nonlinear ones.
class DiscTransducer : public BeamingTransducer<AxisymmetricTransducer::WithoutFarField> {
 public:
  // p = (rho c a w / pi) int_0^pi (r cos psi - a) / (r^2 + a^2 - 2 a r cos psi) [E(R) - E(z)] dpsi, with
  // R^2 = z^2 + r^2 + a^2 - 2 a r cos psi and E(d) = e^{-(alpha + jk) d}: the fast nearest method of McGough, Samulski
  // and Kelly (2004). Without f0: a warning, and the wavelength of 1 MHz.
  int fnm_cw() override;

  // The same for a velocity that falls off towards the rim (piston_apodization_index), as an integral over discs; of an
  // annulus, each of the two discs with the profile of its own radius. No default for an unset f0. KEPT: the radial
  // variable runs to pi a and the angular weights carry a further pi.
  int fnm_cw_apodized() override;

  // In single precision, four abscissas at a time. KEPT: abscissas beyond a multiple of four are left out, an unset f0
  // has no default, and the smallest amplitudes are computed.
  int fnm_cw_sse() override;

  // The Rayleigh integral over polar cells: n rings by n sectors of the half disc, n the number of the rule's nodes.
  // Without a sound speed: a warning, and 1500 m/s. KEPT: the attenuation factor is e^{+alpha R}, which grows.
  int rayleigh_cw() override;

  // The same weighted by the apodization, with e^{-alpha R}; no default for an unset sound speed.
  int rayleigh_cw_apodized() override;

  // In single precision, four sectors at a time; those beyond a multiple of four are left out. Otherwise like the
  // apodized form with a uniform velocity.
  int rayleigh_cw_sse() override;

  // The earliest and the latest time at which a grid point hears the disc of the outer radius, with the element's
  // delay. An empty grid leaves the window as it is.
  int impulse_begin_and_end_times() override;

  // The velocity potential's impulse response at the sample times less the delay, times the amplitude, in closed form:
  // an arc of the disc over pi, times c. Points behind the face get theirs too.
  int impulse_response() override;

  // p = (rho c a / pi) amplitude int_0^pi (r cos psi - a) / (...) [v(t - R/c - delay) - v(t - z/c - delay)] dpsi: the
  // rim integral of fnm_cw with the excitation v for its waves.
  int fnm_transient() override;

  // The same by time-space decomposition. KEPT: beside the disc, the reference v(t - z/c) starts with the rim's first
  // arrival.
  int fnm_tsd() override;
  int fnm_fdtsd() override;              // through the signal's complex factors
  int fnm_tsd_low_precision() override;  // geometry in single precision, and samples rounded to it
  // All of it in single precision, four rays at a time. The factors of a t-cubed pulse pass what a float holds from
  // A0 e^{B t} = 3e38 on.
  int fnm_tsd_sse() override;

  // The Rayleigh integral in time over the cells of rayleigh_cw, with the excitation's derivative.
  int rayleigh_transient() override;

  virtual DiscFace face() const = 0;

 protected:
  BeamSource beam_source() const override;
};

}  // namespace kesto
