// The Rayleigh integral of a face by another road than the library's, for points anywhere, on the face included.
//
// The points of a face at a distance R from an observation point lie on circles, of which the face holds an arc of
// angle Omega(R) in closed form; dS / R = Omega dR over a plane and (d / rho) Omega dR over a sphere of radius d whose
// centre is rho away. So p / (rho c v) = (jk / 2 pi) int Omega e^{-(alpha + jk) R} dR, a regular integral whose only
// singularities are at the ends of its pieces.
#pragma once

#include <complex>

#include "kesto/engine/engine.h"

namespace kesto::validation {

// p / (rho c v) at a point in the face's own coordinates (m), to some 1e-15 (1 + distance / wavelength / 1e3); where a
// flat face has it behind, too.
std::complex<double> arc_integral(const Face& face, long double k, long double attenuation, long double x,
                                  long double y, long double z);

}  // namespace kesto::validation
