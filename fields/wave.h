#pragma once

namespace kesto {

// e^{-(attenuation + j wavenumber) R}; either may be negative.
struct Wave {
  double wavenumber = 0;   // rad/m
  double attenuation = 0;  // Np/m
};

}  // namespace kesto
