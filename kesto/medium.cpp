#include "kesto/medium.h"

#include <cmath>
#include <cstddef>
#include <ostream>

#include "core/constants.h"
#include "kesto/internal/checks.h"

namespace kesto {

namespace {

// Values at even steps of temperature from 0 degrees on, interpolated by straight lines.
template <std::size_t count>
double interpolated(const double (&values)[count], double step, double temperature) {
  const std::size_t i = std::min(static_cast<std::size_t>(temperature / step), count - 2);
  const double part = temperature / step - static_cast<double>(i);
  return values[i] + part * (values[i + 1] - values[i]);
}

template <std::size_t count>
double polynomial(const double (&coefficients)[count], double t) {
  double sum = 0;
  for (std::size_t i = count; i-- > 0;) sum = sum * t + coefficients[i];
  return sum;
}

}  // namespace

double Medium::nepers_per_metre(double frequency) const {
  return 100 * attenuation * std::pow(frequency / 1e6, exponent) / decibels_per_neper;
}

Medium water(double temperature) {
  Checks checks;
  checks.finite("temperature", temperature);
  if (temperature < 0 || temperature > 95) {
    refuse(text_of("temperature is %g: liquid water between 0 and 95 degrees Celsius is expected", temperature));
  }
  const double t = temperature;
  constexpr double speed[] = {1402.385,    5.038813,     -5.799136e-2,
                              3.287156e-4, -1.398845e-6, 2.787860e-9};  // Marczak 1997
  constexpr double mass[] = {999.83952,     16.945176,    -7.9870401e-3,
                             -46.170461e-6, 105.56302e-9, -280.54253e-12};  // Kell 1975
  // alpha / f^2 in 1e-15 Np s^2/m every 10 degrees (Pinkerton 1949).
  constexpr double absorption[] = {56.9, 36.1, 25.3, 19.1, 14.6, 12.0, 10.2, 8.7, 7.9, 7.2, 6.9};
  constexpr double b_over_a[] = {4.16, 4.96, 5.38, 5.67, 5.96, 6.11};  // every 20 degrees (Beyer 1960)
  constexpr double heat[] = {4217.6, 4192.1, 4181.8, 4178.4, 4178.5, 4180.6,
                             4184.3, 4189.5, 4196.3, 4205.0, 4215.9};  // every 10 degrees (CRC Handbook)
  constexpr double conduction[] = {0.5610, 0.5800, 0.5984, 0.6154, 0.6305, 0.6435,
                                   0.6543, 0.6631, 0.6700, 0.6753, 0.6791};  // likewise
  Medium medium;
  medium.sound_speed = polynomial(speed, t);
  medium.density = polynomial(mass, t) / (1 + 16.879850e-3 * t);
  medium.attenuation = interpolated(absorption, 10, t) * 1e-15 * 1e12 * decibels_per_neper / 100;
  medium.exponent = 2;
  medium.nonlinearity = 1 + interpolated(b_over_a, 20, t) / 2;
  medium.specific_heat = interpolated(heat, 10, t);
  medium.conductivity = interpolated(conduction, 10, t);
  medium.name = text_of("water at %g degrees Celsius", t);
  medium.literature =
      "sound speed: Marczak, J. Acoust. Soc. Am. 102:2776 (1997); density: Kell, J. Chem. Eng. Data 20:97 (1975); "
      "absorption: Pinkerton, Proc. Phys. Soc. B 62:129 (1949); B/A: Beyer, J. Acoust. Soc. Am. 32:719 (1960); "
      "specific heat and conductivity: CRC Handbook of Chemistry and Physics";
  return medium;
}

Medium tissue(const std::string& name) {
  // Acoustics: Culjat et al. 2010. B/A: Duck 2002. Heat: Hasgall et al. 2018, perfusion in mL/(min kg) of tissue. The
  // exponents are rounded from the ranges of Duck 1990.
  struct Row {
    const char* name;
    double sound_speed, density, attenuation, exponent, b_over_a, specific_heat, conductivity, blood_flow;
  };
  static constexpr Row rows[] = {
      {"blood", 1584, 1060, 0.20, 1.2, 6.1, 3617, 0.52, 0},   {"brain", 1560, 1040, 0.60, 1.1, 6.6, 3630, 0.51, 559},
      {"fat", 1478, 950, 0.48, 1.1, 10.0, 2348, 0.21, 33},    {"liver", 1595, 1060, 0.50, 1.1, 6.8, 3540, 0.52, 860},
      {"muscle", 1547, 1050, 1.09, 1.1, 7.4, 3421, 0.49, 37},
  };
  constexpr double blood_density = 1060;
  for (const Row& row : rows) {
    if (name != row.name) continue;
    Medium medium;
    medium.sound_speed = row.sound_speed, medium.density = row.density;
    medium.attenuation = row.attenuation, medium.exponent = row.exponent;
    medium.nonlinearity = 1 + row.b_over_a / 2;
    medium.specific_heat = row.specific_heat, medium.conductivity = row.conductivity;
    medium.perfusion = row.blood_flow * 1e-6 / 60 * row.density * blood_density;
    medium.blood_specific_heat = 3617;
    medium.name = row.name;
    medium.literature =
        "sound speed, density and attenuation at 1 MHz: Culjat et al., Ultrasound Med. Biol. 36:861 (2010); exponent: "
        "rounded from Duck, Physical Properties of Tissue (1990); B/A: Duck, Ultrasound Med. Biol. 28:1 (2002); "
        "specific heat, conductivity and perfusion: Hasgall et al., IT'IS database, version 4.0 (2018)";
    return medium;
  }
  refuse("name is \"" + name + "\": blood, brain, fat, liver or muscle is expected");
}

std::ostream& operator<<(std::ostream& out, const Medium& medium) {
  out << (medium.name.empty() ? "medium" : medium.name)
      << text_of(": %.5g m/s, %.5g kg/m^3, %.3g dB/(cm MHz^%g)", medium.sound_speed, medium.density, medium.attenuation,
                 medium.exponent);
  if (medium.nonlinearity > 0) out << text_of(", nonlinearity %.3g", medium.nonlinearity);
  if (medium.specific_heat > 0) {
    out << text_of("; heat %.4g J/(kg K), %.3g W/(m K)", medium.specific_heat, medium.conductivity);
  }
  if (medium.perfusion > 0) out << text_of(", perfusion %.3g kg/(m^3 s)", medium.perfusion);
  return out;
}

}  // namespace kesto
