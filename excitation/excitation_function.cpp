#include "excitation/excitation_function.h"

#include <algorithm>
#include <cstddef>

#include "core/constants.h"
#include "core/internal/host.h"

ExcitationFunction::ExcitationFunction(double amplitude, double frequency, double width, double decay, int type_code)
    : type(type_code),
      A0(amplitude),
      f0(frequency),
      B(decay),
      pulse_width(width),
      omega(kesto::two_pi * frequency),
      omega_w(kesto::two_pi / width) {}

void ExcitationFunction::spatial_tsd(double*, double const&) {}
void ExcitationFunction::temporal_tsd(double*, TimeSamples const*, int const&, double const&) {}
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

void ExcitationFunction::spatial_tsd(float* out, float const& d) {
  const int count = number_of_tsd_terms();
  const kesto::ScratchArray<double> wide(count);
  spatial_tsd(wide.data(), static_cast<double>(d));
  for (int m = 0; m < count; ++m) out[m] = static_cast<float>(wide[m]);
}

void ExcitationFunction::temporal_tsd(float* out, TimeSamples const* ts, int const& n, float const& shift) {
  const std::size_t count = static_cast<std::size_t>(std::max(n, 0)) * static_cast<std::size_t>(number_of_tsd_terms());
  const kesto::ScratchArray<double> wide(count);
  temporal_tsd(wide.data(), ts, n, static_cast<double>(shift));
  for (std::size_t i = 0; i < count; ++i) out[i] = static_cast<float>(wide[i]);
}

void ExcitationFunction::spatial_tsd(Float4* out, Float4 d) {
  const int count = number_of_tsd_terms();
  const kesto::ScratchArray<float> of_lane(count);
  for (int lane = 0; lane < 4; ++lane) {
    spatial_tsd(of_lane.data(), d[lane]);
    for (int m = 0; m < count; ++m) out[m][lane] = of_lane[m];
  }
}

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
