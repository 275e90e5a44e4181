// The input signal of the transient computations: a normal velocity over time.
#pragma once

#include <complex>

#include "core/mx_array.h"
#include "core/time_samples.h"
#include "core/vector_math.h"

class ExcitationVector;

// The interface, and the record that all signals share.
//
// Time-space decomposition writes the signal that is delayed by d as a sum of M terms, v(tau - d) =
// sum_m spatial_m(d) temporal_m(tau). spatial_tsd fills M factors for a travel time d (s). temporal_tsd fills M blocks
// of n factors: block m, sample k at out[m n + k], for tau = time sample k less `shift`. Nothing is windowed: the
// caller keeps to the samples inside the pulse (Kelly & McGough, IEEE Trans. Ultrason. Ferroelectr. Freq. Control
// 53(9), 2006).
//
// A signal of one's own defines at, derivative, number_of_tsd_terms and the two forms in double precision; the others
// follow from these unless it has better ones. An ExcitationFunction by itself is silent and has no terms. It owns
// nothing, and its destructor is not virtual: do not delete a pulse through it.
class ExcitationFunction {
 public:
  ExcitationFunction() = default;
  ExcitationFunction(double amplitude, double frequency, double width, double decay, int type_code);

  // The signals of an array of elements from the structure of set_excitation_function.m: "signal", with one row for all
  // elements or one to an element; "type"; for sampled signals "pulse_width" and "clip_threshold". Types: 1 tone burst,
  // 2 Hanning pulse, 3 t-cubed pulse, whose rows hold A0, f0, W, B; 4 sampled signal, whose rows hold the samples. The
  // result owns the signals (excitation/excitation_vector.h).
  static ExcitationVector excitation_vector(const mxArray** structure, int elements);

  virtual void spatial_tsd(double* out, double const& d);
  virtual void spatial_tsd(float* out, float const& d);  // single precision follows from double
  virtual void temporal_tsd(double* out, TimeSamples const* ts, int const& n, double const& shift);
  virtual void temporal_tsd(float* out, TimeSamples const* ts, int const& n, float const& shift);
  virtual double at(double const& t) const;
  virtual double derivative(double const& t) const;
  virtual int number_of_tsd_terms() const;

  virtual int get_nxtimesamples() const;
  virtual double get_pulse_width() const;
  virtual double get_A0() const;
  virtual double get_f0() const;
  virtual double get_B() const;
  virtual int get_type() const;
  virtual int get_dc_index() const;
  virtual int get_nyquist_index() const;
  virtual double* get_omega_array() const;
  virtual double* get_frequency_domain_input_signal_real() const;
  virtual double* get_frequency_domain_input_signal_imag() const;

  // Four delays at a time; `out` is aligned as Float4 is.
  virtual void spatial_tsd(Float4* out, Float4 d);
  // Complex terms; those of a real signal are its real ones, widened.
  virtual void spatial_tsd(std::complex<double>* out, double const& d);
  virtual void temporal_tsd(std::complex<double>* out, TimeSamples const* ts, int const& n, double const& shift);

  int type = 0;
  double A0 = 0;
  double f0 = 0;           // Hz
  double B = 0;            // decay, 1/s
  double pulse_width = 0;  // s
  double omega = 0;        // 2 pi f0
  double omega_w = 0;      // 2 pi / pulse_width

  // A sampled signal, in the frequency domain.
  int nxtimesamples = 0;
  double* omega_array = nullptr;
  double* frequency_domain_input_signal_real = nullptr;
  double* frequency_domain_input_signal_imag = nullptr;
  int dc_index = 0;
  int nyquist_index = 0;
};
