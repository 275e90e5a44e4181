#include "excitation/excitation_function.h"

#include <algorithm>
#include <cstddef>

#include "core/constants.h"

ExcitationFunction::ExcitationFunction(double amplitude, double frequency, double width, double decay, int type_code)
    : type(type_code),
      A0(amplitude),
      f0(frequency),
      B(decay),
      pulse_width(width),
      omega(kesto::two_pi * frequency),
      omega_w(kesto::two_pi / width) {}

void ExcitationFunction::spatial_tsd(double*, double const&) {}
void ExcitationFunction::spatial_tsd(float*, float const&) {}
void ExcitationFunction::temporal_tsd(double*, TimeSamples const*, int const&, double const&) {}
void ExcitationFunction::temporal_tsd(float*, TimeSamples const*, int const&, float const&) {}
double ExcitationFunction::at(double const&) const { return 0; }
double ExcitationFunction::derivative(double const&) const { return 0; }
int ExcitationFunction::number_of_tsd_terms() const { return 0; }

int ExcitationFunction::get_nxtimesamples() const { return nxtimesamples; }
double ExcitationFunction::get_pulse_width() const { return pulse_width; }
double ExcitationFunction::get_A0() const { return A0; }
double ExcitationFunction::get_f0() const { return f0; }
double ExcitationFunction::get_B() const { return B; }
int ExcitationFunction::get_type() const { return type; }
int ExcitationFunction::get_dc_index() const { return dc_index; }
int ExcitationFunction::get_nyquist_index() const { return nyquist_index; }
double* ExcitationFunction::get_omega_array() const { return omega_array; }
double* ExcitationFunction::get_frequency_domain_input_signal_real() const {
  return frequency_domain_input_signal_real;
}
double* ExcitationFunction::get_frequency_domain_input_signal_imag() const {
  return frequency_domain_input_signal_imag;
}

void ExcitationFunction::spatial_tsd(Float4*, Float4) {}

namespace {

// Spreads the doubles in the upper half of `out` over the whole, from the front: each is read before its place is used.
void widen(std::complex<double>* out, std::ptrdiff_t count) {
  const double* const narrow = reinterpret_cast<const double*>(out) + count;
  for (std::ptrdiff_t m = 0; m < count; ++m) out[m] = {narrow[m], 0.0};
}

}  // namespace

void ExcitationFunction::spatial_tsd(std::complex<double>* out, double const& d) {
  const std::ptrdiff_t count = number_of_tsd_terms();
  spatial_tsd(reinterpret_cast<double*>(out) + count, d);
  widen(out, count);
}

void ExcitationFunction::temporal_tsd(std::complex<double>* out, TimeSamples const* ts, int const& n,
                                      double const& shift) {
  const std::ptrdiff_t count = std::ptrdiff_t{std::max(n, 0)} * number_of_tsd_terms();
  temporal_tsd(reinterpret_cast<double*>(out) + count, ts, n, shift);
  widen(out, count);
}
