// What every continuous-wave computation begins with: the wave in the medium, the defaults and their warnings, the
// gate.
#pragma once

#include <complex>

#include "core/medium.h"
#include "core/transducer.h"
#include "fields/wave_sum.h"

namespace kesto {

using Complex = std::complex<double>;

// An error when the element has none.
const Medium& medium_of(const Transducer& element);

// The medium's centre frequency. Without one (NaN included): a warning, and 1 MHz, which is for the wavelength alone.
double frequency_of_wavelength(const Medium& medium);

// Np/m at the medium's centre frequency as it is stored: a medium without one is lossless at any wavelength. Callers
// rely on it.
double attenuation_of(const Medium& medium);

// The wave in the medium, with the default of frequency_of_wavelength and its warning.
Wave wave_or_default(const Medium& medium);

// The wave with f0 as it is stored: without one, no waves at all, and neither default nor warning.
Wave stored_wave(const Medium& medium);

// Too small an amplitude to compute anything for.
bool is_silent(const Transducer& element);

// An error unless the element has both.
void require_grid_and_medium(const Transducer& element);
void require_grid_and_rule(const Transducer& element);

// An error unless the element has grid and rule and, where there are points, somewhere to add their pressures to.
void require_complex_output(const Transducer& element);

}  // namespace kesto
