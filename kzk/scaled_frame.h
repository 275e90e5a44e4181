// The coordinates in which a beam is marched: they shrink towards a focus and widen behind it and in the far field.
//
// With s(z)^2 = (1 - z/d)^2 + (z/z0)^2, radius xi = r / s and range zeta = z0 theta, theta = arg(1 - z/d + j z/z0), the
// field p_n = q_n / s exp(-j n k xi^2 s s' / 2) obeys
//   dq_n/dzeta = -(j / 2nk) [lap_xi - (n k xi / z0)^2] q_n,
// the parabolic equation with a well that keeps the beam together. The phase taken out is that of the converging or
// diverging wave, e^{jnkr^2/2d} at the source, and it is the same for all terms p_m p_{n-m} of a harmonic. A uniform
// step in zeta is a step s^2 as long in z.
#pragma once

#include <cmath>

namespace kesto {

struct ScaledFrame {
  double inverse_curvature = 0;  // 1/d, 0 for a flat source
  double rayleigh = 1;           // z0 (m)

  double scale(double z) const { return std::hypot(1 - z * inverse_curvature, z / rayleigh); }
  double bend(double z) const {  // s s', so that xi^2 s s' / 2 is the path that is taken out (m)
    return z * (inverse_curvature * inverse_curvature + 1 / (rayleigh * rayleigh)) - inverse_curvature;
  }
  double zeta_of(double z) const { return rayleigh * std::atan2(z / rayleigh, 1 - z * inverse_curvature); }
  double z_of(double zeta) const {  // infinite at the end of the range
    const double sine = std::sin(zeta / rayleigh), cosine = std::cos(zeta / rayleigh);
    const double divisor = cosine / rayleigh + sine * inverse_curvature;
    return divisor > 0 ? sine / divisor : HUGE_VAL;
  }
};

}  // namespace kesto
