// The acoustic and thermal properties of the propagation medium.
#pragma once

#include "core/mx_array.h"

class Medium {
 public:
  // All zero.
  Medium() = default;

  // Reads the first element of the structure in slot *s: "soundspeed" (m/s), "density" (kg/m^3), "attenuationdBcmMHz",
  // "bloodperfusion" (kg/(m^3 s)), "specificheat" and "specificheatofblood" (J/(kg K)), "thermalconductivity" (W/(m
  // K)), "nonlinearityparameter" and "powerlawexponent". Error: "Medium object is not structured correctly. ..." when a
  // field is missing or holds nothing. Values are not checked.
  explicit Medium(const mxArray** s);

  // Prints every field but _cb on the host's console.
  void mexDebug() const;

  double _f0 = 0;             // centre frequency, Hz; set by the caller
  double _fs = 0;             // sampling frequency, Hz; set by the caller
  double _soundspeed = 0;     // m/s
  double _dBcmMHz = 0;        // attenuation: dB/(cm MHz) to the field core, taken as it stands by the bioheat solver
  double _powerlawcoeff = 0;  // power-law attenuation coefficient; set by the caller
  double _rho_density = 0;    // kg/m^3
  double _ct = 0;             // specific heat of the tissue, J/(kg K)
  double _cb = 0;             // specific heat of blood, J/(kg K)
  double _wb = 0;             // blood perfusion, kg/(m^3 s)
  double _b = 0;              // power-law exponent
  double _kappa = 0;          // thermal conductivity, W/(m K)
  double _beta = 0;           // nonlinearity parameter
};
