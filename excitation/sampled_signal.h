#pragma once

#include "excitation/excitation_function.h"

// A signal that was measured: n >= 2 samples over [0, W], W / (n - 1) apart, as a discrete Fourier series of period
// n W / (n - 1). Bins whose magnitude is below clip_threshold (0 to 1) times the largest are dropped; with threshold 0
// the series passes through the samples. The value is the kept series within [0, W], both ends included, and 0 outside,
// and the derivative is the series' own.
//
// The record holds the kept bins, one-sided and in ascending order: angular frequencies and the coefficients of
// v(t) = sum Re(X e^{j omega t}). dc_index and nyquist_index are places in these arrays, -1 where the bin is dropped or
// n is odd. nxtimesamples is n; A0 is the largest magnitude of a sample and f0 the frequency of the largest bin but dc.
//
// Decomposition: one real term for dc, spatial 1, temporal X; two for every other bin, spatial cos(omega d) and
// sin(omega d), temporal Re(X e^{j omega tau}) and Im(X e^{j omega tau}). The complex terms are as many: spatial
// e^{-+j omega d}, temporal X e^{j omega tau} / 2 and its conjugate.
class SampledSignal final : public ExcitationFunction {
 public:
  static constexpr int type_code = 4;

  // Errors: fewer than two samples, no positive width, a threshold outside 0 to 1, a sample that is no number.
  // Consecutive samples lie `stride` apart.
  SampledSignal(const double* samples, int n, double width, double clip_threshold, int stride = 1);
  ~SampledSignal();
  SampledSignal(const SampledSignal&) = delete;
  SampledSignal& operator=(const SampledSignal&) = delete;

  using ExcitationFunction::spatial_tsd;
  using ExcitationFunction::temporal_tsd;
  void spatial_tsd(double* out, double const& d) override;
  void spatial_tsd(std::complex<double>* out, double const& d) override;
  void temporal_tsd(double* out, TimeSamples const* ts, int const& n, double const& shift) override;
  void temporal_tsd(std::complex<double>* out, TimeSamples const* ts, int const& n, double const& shift) override;
  double at(double const& t) const override;
  double derivative(double const& t) const override;
  int number_of_tsd_terms() const override;

  int kept_bins() const { return bins_; }

 private:
  bool has_dc() const { return dc_index >= 0; }

  int bins_ = 0;
};
