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

// The rim integral of McGough and Kelly's fast nearest method for a shell; at the centre of curvature its limit,
// j 2 pi rho f0 (depth) e^{-(alpha + jk) roc} w with f0 as stored.
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

}  // namespace kesto
