#include "excitation/sampled_signal.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "core/internal/host.h"
#include "core/internal/pending_array.h"

using kesto::fail;
using kesto::PendingArray;
using kesto::ScratchArray;

namespace {

using Complex = std::complex<double>;

// All its digits, unlike kesto::two_pi: the angles of a transform are to close the circle n / 2 times.
constexpr double full_turn = 6.283185307179586;

// The coefficients X of sum Re(X e^{2 pi j m i / n}), m = 0 ... n / 2, that passes through sample i of n.
void fill_series(const double* samples, int n, int stride, Complex* series) {
  const ScratchArray<Complex> turns(n);  // e^{-2 pi j i / n}, each from its own angle
  for (int i = 0; i < n; ++i) turns[i] = std::polar(1.0, -full_turn * i / n);
  for (std::ptrdiff_t m = 0; m <= n / 2; ++m) {
    double re = 0, im = 0;
    for (std::ptrdiff_t i = 0, turn = 0; i < n; ++i, turn = (turn + m) % n) {
      const double sample = samples[i * stride];
      re += sample * turns[turn].real();
      im += sample * turns[turn].imag();
    }
    const bool single = m == 0 || 2 * m == n;  // dc and Nyquist stand for themselves, others for two bins
    series[m] = single ? Complex(re / n, 0) : Complex(2 * re / n, 2 * im / n);
  }
}

}  // namespace

SampledSignal::SampledSignal(const double* samples, int n, double width, double clip_threshold, int stride)
    : ExcitationFunction(0, 0, width, 0, type_code) {
  if (n < 2) fail("A sampled signal needs two samples or more.\n");
  if (!(width > 0 && std::isfinite(width))) fail("The pulse_width of a sampled signal must be positive.\n");
  if (!(clip_threshold >= 0 && clip_threshold <= 1)) fail("clip_threshold must be between 0 and 1.\n");
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    if (!std::isfinite(samples[i * stride])) fail("The samples of a signal must be finite.\n");
    A0 = std::max(A0, std::fabs(samples[i * stride]));
  }
  const int all_bins = n / 2 + 1;
  const ScratchArray<Complex> series(all_bins);
  fill_series(samples, n, stride, series.data());
  // Magnitudes of the two-sided bins, half of what a pair of them adds up to.
  const auto magnitude = [&](int m) { return std::abs(series[m]) * (m == 0 || 2 * m == n ? 1 : 0.5); };
  double largest = 0;
  for (int m = 0; m < all_bins; ++m) largest = std::max(largest, magnitude(m));
  const auto kept = [&](int m) { return !(magnitude(m) < clip_threshold * largest); };
  int count = 0;
  for (int m = 0; m < all_bins; ++m) count += kept(m) ? 1 : 0;
  PendingArray frequencies = PendingArray::zeros(count), real = PendingArray::zeros(count),
               imag = PendingArray::zeros(count);
  const double base = full_turn * (n - 1) / (n * width);
  dc_index = nyquist_index = -1;
  double strongest = 0;
  for (int m = 0; m < all_bins; ++m) {
    if (!kept(m)) continue;
    if (m == 0) dc_index = bins_;
    if (2 * m == n) nyquist_index = bins_;
    frequencies.data()[bins_] = m * base;
    real.data()[bins_] = series[m].real();
    imag.data()[bins_] = series[m].imag();
    ++bins_;
    if (m > 0 && magnitude(m) > strongest) strongest = magnitude(m), f0 = m * (n - 1) / (n * width);
  }
  omega = full_turn * f0;
  nxtimesamples = n;
  frequencies.replace(omega_array);
  real.replace(frequency_domain_input_signal_real);
  imag.replace(frequency_domain_input_signal_imag);
}

SampledSignal::~SampledSignal() {
  kesto::release(omega_array);
  kesto::release(frequency_domain_input_signal_real);
  kesto::release(frequency_domain_input_signal_imag);
}

double SampledSignal::at(double const& t) const {
  if (!(t >= 0 && t <= pulse_width)) return 0;
  double sum = 0;
  for (int m = 0; m < bins_; ++m) {
    const double angle = omega_array[m] * t;
    sum += frequency_domain_input_signal_real[m] * std::cos(angle) -
           frequency_domain_input_signal_imag[m] * std::sin(angle);
  }
  return sum;
}

double SampledSignal::derivative(double const& t) const {
  if (!(t >= 0 && t <= pulse_width)) return 0;
  double sum = 0;
  for (int m = 0; m < bins_; ++m) {
    const double angle = omega_array[m] * t;
    sum -= omega_array[m] * (frequency_domain_input_signal_real[m] * std::sin(angle) +
                             frequency_domain_input_signal_imag[m] * std::cos(angle));
  }
  return sum;
}

int SampledSignal::number_of_tsd_terms() const { return 2 * bins_ - (has_dc() ? 1 : 0); }

void SampledSignal::spatial_tsd(double* out, double const& d) {
  if (has_dc()) *out++ = 1;
  for (int m = has_dc() ? 1 : 0; m < bins_; ++m) {
    *out++ = std::cos(omega_array[m] * d);
    *out++ = std::sin(omega_array[m] * d);
  }
}

void SampledSignal::spatial_tsd(Complex* out, double const& d) {
  if (has_dc()) *out++ = 1;
  for (int m = has_dc() ? 1 : 0; m < bins_; ++m) {
    const Complex turn = std::polar(1.0, -omega_array[m] * d);
    *out++ = turn;
    *out++ = std::conj(turn);
  }
}

void SampledSignal::temporal_tsd(double* out, TimeSamples const* ts, int const& n, double const& shift) {
  for (int m = 0; m < bins_; ++m) {
    const double re = frequency_domain_input_signal_real[m], im = frequency_domain_input_signal_imag[m];
    for (int k = 0; k < n; ++k) {
      const double angle = omega_array[m] * (ts->time_index_value(k) - shift);
      out[k] = re * std::cos(angle) - im * std::sin(angle);
      if (m != dc_index) out[std::ptrdiff_t{n} + k] = re * std::sin(angle) + im * std::cos(angle);
    }
    out += (m == dc_index ? 1 : 2) * std::ptrdiff_t{std::max(n, 0)};
  }
}

void SampledSignal::temporal_tsd(Complex* out, TimeSamples const* ts, int const& n, double const& shift) {
  for (int m = 0; m < bins_; ++m) {
    const Complex series(frequency_domain_input_signal_real[m], frequency_domain_input_signal_imag[m]);
    for (int k = 0; k < n; ++k) {
      const Complex term = series * std::polar(1.0, omega_array[m] * (ts->time_index_value(k) - shift));
      out[k] = m == dc_index ? term : 0.5 * term;
      if (m != dc_index) out[std::ptrdiff_t{n} + k] = std::conj(out[k]);
    }
    out += (m == dc_index ? 1 : 2) * std::ptrdiff_t{std::max(n, 0)};
  }
}
