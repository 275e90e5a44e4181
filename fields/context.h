// What a computation asks of its element before it starts: the wave in its medium, the gate for silent elements, and
// everything that it reads and writes.
#pragma once

#include <complex>

#include "core/medium.h"
#include "core/transducer.h"
#include "fields/wave.h"

namespace kesto {

using Complex = std::complex<double>;

// An error when the element has none.
const Medium& medium_of(const Transducer& element);

// An f0 of up to 1e-10 Hz is unset. KEPT: to a disc's fnm_cw a NaN is unset too; elsewhere it stands, and with it the
// field is NaN.
enum class NanFrequency { stands, is_unset };

// The medium's centre frequency. Where it is unset: a warning, and 1 MHz, which is for the wavelength alone.
double frequency_of_wavelength(const Medium& medium, NanFrequency nan = NanFrequency::stands);

// Np/m at the medium's centre frequency. KEPT: at f0 as it is stored, so that a medium without one is lossless at any
// wavelength.
double attenuation_of(const Medium& medium);

// The wave in the medium, with the default of frequency_of_wavelength and its warning.
Wave wave_or_default(const Medium& medium, NanFrequency nan = NanFrequency::stands);

// The wave with f0 as it is stored: without one, no waves at all, and neither default nor warning.
Wave stored_wave(const Medium& medium);

// Too small an amplitude to compute anything for.
bool is_silent(const Transducer& element);

// Each is an error unless the element has what it says; outputs are asked for only where there are points.
void require_grid_and_medium(const Transducer& element);
void require_grid_and_rule(const Transducer& element);
void require_complex_output(const Transducer& element);    // grid, medium, rule, complex pressure
void require_transient_output(const Transducer& element);  // grid, medium, time vector, transient pressure
void require_excited_output(const Transducer& element);    // these, a rule and an excitation

}  // namespace kesto
