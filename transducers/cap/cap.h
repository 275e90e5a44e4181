// Fields of a spherical cap, and of a spherical annulus as a cap less another: what shell and annulus share.
//
// The apex of the sphere lies at the origin, the centre of curvature at (0, 0, roc), where the face radiates to; roc
// exceeds the radii. Points behind the rim plane and outside the sphere get nothing. Each function adds to the
// element's complex pressure and returns 0. The rule is expected on [-1, 1].
#pragma once

class Transducer;

namespace kesto {

struct CapFace {
  double outer;      // aperture radius, m
  double roc;        // radius of curvature, m
  double inner = 0;  // aperture radius of the hole, m; 0 for a full cap
};

// The rim integral of McGough and Kelly's fast nearest method for a shell; at the centre of curvature its lossless
// limit, j 2 pi rho f0 (depth) w, times e^{-(alpha + jk) roc}, with f0 as stored.
int cap_fnm_cw(Transducer& element, CapFace face);

// In single precision, four abscissas at a time; those beyond a multiple of four are left out.
int cap_fnm_cw_sse(Transducer& element, CapFace face);

// The Rayleigh integral over n by n cells of equal angles, n the number of the rule's nodes. No default for an unset
// f0. A point's offset from the axis enters the cross term by its x alone, so that the sum is exact in the local plane
// y = 0: callers rely on it.
int cap_rayleigh_cw(Transducer& element, CapFace face);

// In single precision, four polar angles at a time; those beyond a multiple of four are left out. An unset f0 gets its
// default within the sum.
int cap_rayleigh_cw_sse(Transducer& element, CapFace face);

// The earliest and the latest time at which a grid point hears the cap of the outer radius, with the element's delay.
// An empty grid leaves the window as it is.
int cap_impulse_begin_and_end_times(Transducer& element, CapFace face);

// The velocity potential's impulse response at the sample times less the delay, times the amplitude, in closed form.
// Points behind the cap get theirs too. At the centre of curvature it is one sample, and only where a sample lies at
// roc/c plus twice the delay: callers rely on it.
int cap_impulse_response(Transducer& element, CapFace face);

enum class BehindCap { skipped, computed };

// The rim integral of cap_fnm_cw with the excitation for its waves; at the centre of curvature its limit,
// rho depth amplitude v'(t - roc/c - delay).
int cap_fnm_transient(Transducer& element, CapFace face, BehindCap behind = BehindCap::skipped);

// The same by time-space decomposition.
int cap_fnm_tsd(Transducer& element, CapFace face, BehindCap behind = BehindCap::skipped);
int cap_fnm_fdtsd(Transducer& element, CapFace face);              // through the signal's complex factors
int cap_fnm_tsd_low_precision(Transducer& element, CapFace face);  // geometry in single precision

}  // namespace kesto
