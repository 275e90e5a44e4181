// Fields of a flat disc, and of an annulus as a disc less another: what the circular piston and the flat annulus share.
//
// The face lies in z = 0 about the origin and radiates towards +z; points with z < 0 get nothing unless said otherwise.
// Each function returns 0 and adds to the element's complex pressure, those in time to its transient pressure.
#pragma once

class Transducer;

namespace kesto {

struct DiscFace {
  double outer;      // m
  double inner = 0;  // m; 0 for a full disc
};

// p = (rho c a w / pi) int_0^pi (r cos psi - a) / (r^2 + a^2 - 2 a r cos psi) [E(R) - E(z)] dpsi, with
// R^2 = z^2 + r^2 + a^2 - 2 a r cos psi and E(d) = e^{-(alpha + jk) d}: the fast nearest method of McGough, Samulski
// and Kelly (2004). Remaps the element's rule to [0, pi].
int disc_fnm_cw(Transducer& element, DiscFace face);

// The same for a velocity that falls off towards the rim (piston_apodization_index), as an integral over discs. The
// radial variable runs to pi a and the angular weights carry a further pi: callers rely on it.
int disc_fnm_cw_apodized(Transducer& element, DiscFace face);

// In single precision, four abscissas at a time; those beyond a multiple of four are left out. No default for an unset
// f0, and no gate for small amplitudes.
int disc_fnm_cw_sse(Transducer& element, DiscFace face);

// The Rayleigh integral over polar cells: n rings by n sectors of the half disc, n the number of the rule's nodes. The
// attenuation factor is e^{+alpha R}: callers rely on it.
int disc_rayleigh_cw(Transducer& element, DiscFace face);

// The same weighted by the apodization, with e^{-alpha R}; no default for an unset sound speed.
int disc_rayleigh_cw_apodized(Transducer& element, DiscFace face);

// In single precision, four sectors at a time; those beyond a multiple of four are left out. Otherwise like the
// apodized form with a uniform velocity.
int disc_rayleigh_cw_sse(Transducer& element, DiscFace face);

// The earliest and the latest time at which a grid point hears the disc of the outer radius, with the element's delay.
// An empty grid leaves the window as it is.
int disc_impulse_begin_and_end_times(Transducer& element, DiscFace face);

// The velocity potential's impulse response at the sample times less the delay, times the amplitude, in closed form: an
// arc of the disc over pi, times c. Points behind the face get theirs too.
int disc_impulse_response(Transducer& element, DiscFace face);

// p = (rho c a / pi) amplitude int_0^pi (r cos psi - a) / (...) [v(t - R/c - delay) - v(t - z/c - delay)] dpsi: the rim
// integral of disc_fnm_cw with the excitation v for its waves. Remaps the element's rule to [0, pi].
int disc_fnm_transient(Transducer& element, DiscFace face);

// The same by time-space decomposition. Beside the disc, the reference v(t - z/c) starts with the rim's first arrival:
// callers rely on it.
int disc_fnm_tsd(Transducer& element, DiscFace face);
int disc_fnm_fdtsd(Transducer& element, DiscFace face);  // through the signal's complex factors
// Geometry in single precision, and samples rounded to it.
int disc_fnm_tsd_low_precision(Transducer& element, DiscFace face);
// All of it in single precision, four rays at a time. The factors of a t-cubed pulse pass what a float holds from
// A0 e^{B t} = 3e38 on.
int disc_fnm_tsd_sse(Transducer& element, DiscFace face);

// The Rayleigh integral in time over the cells of disc_rayleigh_cw, with the excitation's derivative.
int disc_rayleigh_transient(Transducer& element, DiscFace face);

}  // namespace kesto
