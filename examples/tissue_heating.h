// The steady temperature rise of perfused tissue, by the steady_bioheat module.
#pragma once

#include <complex>
#include <string>
#include <vector>

#include "examples/grid.h"

namespace kesto::example {

struct Tissue {
  double soundspeed;           // m/s
  double density;              // kg/m^3
  double attenuation;          // dB/(cm MHz)
  double power_law_exponent;   // of the attenuation over frequency
  double nonlinearity;         // beta = 1 + B / 2A
  double specific_heat;        // J/(kg K)
  double conductivity;         // W/(m K)
  double perfusion;            // mL of blood per minute and kg of tissue
  double blood_density;        // kg/m^3
  double blood_specific_heat;  // J/(kg K)

  double absorption(double frequency) const;  // amplitude coefficient, Np/m, all attenuation taken for absorption
  double perfusion_mass_rate() const;         // wb: blood through a volume of tissue, kg/(m^3 s)
};

// Sound speed, density, thermal properties and perfusion: IT'IS Foundation tissue properties database, version 4.1.
// Attenuation and nonlinearity: Duck, Physical Properties of Tissue, Academic Press 1990, rounded.
extern const Tissue liver;

struct Heating {
  std::vector<double> temperature;  // rise, K
  double seconds;                   // in the module
};

// Calls `module_file` for the pressure (Pa) on the grid. Throws std::runtime_error when the module cannot be loaded,
// reports an error or leaves memory behind.
Heating heat(const std::string& module_file, const Grid& grid, const std::vector<std::complex<double>>& pressure,
             const Tissue& tissue, double frequency, int sweeps);

// The heat that the steady balance kappa lap(T) - wb cb T + Q, Q = alpha |p|^2 / (rho c), leaves over: largest absolute
// value at an interior point, relative to the largest Q.
double relative_residual(const Grid& grid, const std::vector<std::complex<double>>& pressure, const Tissue& tissue,
                         double frequency, const std::vector<double>& temperature);

}  // namespace kesto::example
