#include "fields/context.h"

#include <cmath>

#include "core/constants.h"
#include "core/internal/host.h"

namespace kesto {

const Medium& medium_of(const Transducer& element) {
  if (element.medium == nullptr) fail("The transducer has no medium.\n");
  return *element.medium;
}

double frequency_of_wavelength(const Medium& medium, NanFrequency nan) {
  const double f0 = medium._f0;
  const bool unset = f0 <= 1e-10 || (nan == NanFrequency::is_unset && std::isnan(f0));
  if (!unset) return f0;
  warn("f0 not set; using default of 1 MHz to calculate wavelength.");
  return 1e6;
}

double attenuation_of(const Medium& medium) { return medium._dBcmMHz * 100 * medium._f0 / 1e6 / decibels_per_neper; }

Wave wave_or_default(const Medium& medium, NanFrequency nan) {
  return {two_pi / (medium._soundspeed / frequency_of_wavelength(medium, nan)), attenuation_of(medium)};
}

Wave stored_wave(const Medium& medium) { return {two_pi / (medium._soundspeed / medium._f0), attenuation_of(medium)}; }

bool is_silent(const Transducer& element) { return std::fabs(element.amplitude) <= 1e-10; }

void require_grid_and_medium(const Transducer& element) {
  medium_of(element);
  if (element.global_coordinate_grid == nullptr) fail("The transducer has no coordinate grid.\n");
}

void require_grid_and_rule(const Transducer& element) {
  require_grid_and_medium(element);
  if (element.integral == nullptr) fail("The transducer has no quadrature rule.\n");
}

void require_complex_output(const Transducer& element) {
  require_grid_and_rule(element);
  const bool has_buffers = element.complex_pressure_real != nullptr && element.complex_pressure_imag != nullptr;
  if (!has_buffers && element.global_coordinate_grid->npoints > 0)
    fail("The transducer has no complex pressure to add to.\n");
}

void require_transient_output(const Transducer& element) {
  require_grid_and_medium(element);
  if (element.time_vector == nullptr) fail("The transducer has no time vector.\n");
  if (element.transient_pressure == nullptr && element.global_coordinate_grid->npoints > 0) {
    fail("The transducer has no transient pressure to add to.\n");
  }
}

void require_excited_output(const Transducer& element) {
  require_transient_output(element);
  require_grid_and_rule(element);
  if (element.excitation == nullptr) fail("The transducer has no excitation.\n");
}

}  // namespace kesto
