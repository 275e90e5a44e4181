#include "examples/tissue_heating.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <stdexcept>
#include <utility>

#include "host/embedded_host.h"

namespace kesto::example {

const Tissue liver = {1586, 1079, 0.5, 1.0, 4.4, 3540, 0.52, 860, 1050, 3617};

double Tissue::absorption(double frequency) const {
  const double nepers_per_decibel = std::log(10.0) / 20;
  const double decibels_per_metre = attenuation * 100 * std::pow(frequency * 1e-6, power_law_exponent);
  return nepers_per_decibel * decibels_per_metre;
}

double Tissue::perfusion_mass_rate() const {
  const double blood_volume = perfusion * 1e-6 / 60;  // m^3 per second and kg of tissue
  return blood_volume * blood_density * density;
}

namespace {

host::Array medium_structure(const Tissue& tissue, double frequency) {
  // The module takes "attenuationdBcmMHz", in spite of its name, as the absorption coefficient alpha of
  // Q = alpha |p|^2 / (rho c): Np/m at the frequency of the field. It reads the specific heat, the nonlinearity
  // parameter and the power-law exponent too, but the steady rise does not depend on them.
  const std::pair<const char*, double> fields[] = {
      {"soundspeed", tissue.soundspeed},
      {"density", tissue.density},
      {"attenuationdBcmMHz", tissue.absorption(frequency)},
      {"bloodperfusion", tissue.perfusion_mass_rate()},
      {"specificheat", tissue.specific_heat},
      {"specificheatofblood", tissue.blood_specific_heat},
      {"thermalconductivity", tissue.conductivity},
      {"nonlinearityparameter", tissue.nonlinearity},
      {"powerlawexponent", tissue.power_law_exponent},
  };
  std::vector<const char*> names;
  for (const auto& field : fields) names.push_back(field.first);
  host::Array medium(mxCreateStructMatrix(1, 1, static_cast<int>(names.size()), names.data()));
  for (const auto& field : fields) mxSetField(medium.get(), 0, field.first, mxCreateDoubleScalar(field.second));
  return medium;
}

host::Array pressure_array(const Grid& grid, const std::vector<std::complex<double>>& pressure) {
  host::Array array(mxCreateNumericArray(3, grid.points.data(), mxDOUBLE_CLASS, mxCOMPLEX));
  std::transform(pressure.begin(), pressure.end(), mxGetComplexDoubles(array.get()), [](std::complex<double> p) {
    return mxComplexDouble{p.real(), p.imag()};
  });
  return array;
}

// A NaN, once there, stays.
double larger(double a, double b) { return b <= a || std::isnan(a) ? a : b; }

}  // namespace

Heating heat(const std::string& module_file, const Grid& grid, const std::vector<std::complex<double>>& pressure,
             const Tissue& tissue, double frequency, int sweeps) {
  const host::Module steady_bioheat(module_file);
  const host::Array p = pressure_array(grid, pressure);
  const host::Array medium = medium_structure(tissue, frequency);
  const host::Array spacing(mxCreateDoubleScalar(grid.spacing));
  const host::Array count(mxCreateDoubleScalar(sweeps));

  std::vector<host::Array> outputs;
  const auto start = std::chrono::steady_clock::now();
  const host::Report report = steady_bioheat.call(
      1, {p.get(), medium.get(), spacing.get(), spacing.get(), spacing.get(), count.get()}, &outputs);
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;

  for (const std::string& warning : report.warnings) std::fprintf(stderr, "steady_bioheat: %s\n", warning.c_str());
  if (report.failed) throw std::runtime_error("steady_bioheat: " + report.error);
  if (!report.clean()) throw std::runtime_error("steady_bioheat: memory left behind or freed wrongly");
  const double* const rise = mxGetPr(outputs.front().get());
  return {std::vector<double>(rise, rise + grid.size()), elapsed.count()};
}

double relative_residual(const Grid& grid, const std::vector<std::complex<double>>& pressure, const Tissue& tissue,
                         double frequency, const std::vector<double>& temperature) {
  const double absorbed = tissue.absorption(frequency) / (tissue.density * tissue.soundspeed);
  const double carried_off = tissue.perfusion_mass_rate() * tissue.blood_specific_heat;
  const double conducted = tissue.conductivity / (grid.spacing * grid.spacing);
  const std::size_t row = grid.points[0], plane = grid.points[0] * grid.points[1];
  double largest_residual = 0, largest_source = 0;
  for (std::size_t k = 1; k + 1 < grid.points[2]; ++k) {
    for (std::size_t j = 1; j + 1 < grid.points[1]; ++j) {
      for (std::size_t i = 1; i + 1 < grid.points[0]; ++i) {
        const std::size_t n = grid.index(i, j, k);
        const double* const t = &temperature[n];
        const double neighbours = t[1] + *(t - 1) + t[row] + *(t - row) + t[plane] + *(t - plane);
        const double source = absorbed * std::norm(pressure[n]);
        const double residual = conducted * (neighbours - 6 * *t) - carried_off * *t + source;
        largest_residual = larger(largest_residual, std::abs(residual));
        largest_source = larger(largest_source, source);
      }
    }
  }
  return largest_residual / largest_source;
}

}  // namespace kesto::example
