// The fluid, as the references see it.
#pragma once

#include <cmath>
#include <complex>

namespace kesto::validation {

using Complex = std::complex<double>;

constexpr double pi = 3.14159265358979323846;

// Time dependence e^{+jwt}: an outgoing wave is e^{-gamma R}, gamma = alpha + jk.
struct Fluid {
  double frequency = 1e6;    // Hz
  double soundspeed = 1500;  // m/s
  double density = 1000;     // kg/m^3
  double attenuation = 0;    // dB/(cm MHz)
  double turn = 2 * pi;      // rad, in the wavenumber

  double wavelength() const { return soundspeed / frequency; }
  double k() const { return turn / wavelength(); }                                             // rad/m
  double alpha() const { return attenuation * 100 * frequency * 1e-6 * std::log(10.0) / 20; }  // Np/m
  Complex gamma() const { return {alpha(), k()}; }
  Complex outgoing(double distance) const { return std::exp(-gamma() * distance); }

  // rho c times a velocity is the pressure of a plane wave.
  double impedance() const { return density * soundspeed; }

  // What the fast nearest method carries beyond the Rayleigh integral, rho c gamma in place of j rho c k: 1 without
  // attenuation.
  Complex nearest_over_rayleigh() const { return 1.0 - Complex(0, 1) * alpha() / k(); }
};

constexpr Fluid water = {1e6, 1500, 1000, 0};
constexpr Fluid lossy = {1e6, 1500, 1000, 1.0};

// The core writes pi with 15 digits: its phases kR are off by this part of themselves.
constexpr double turn_of_core = 6.28318530717958;
constexpr double phase_error_of_core = 1.03e-15;

}  // namespace kesto::validation
