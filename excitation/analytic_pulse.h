// What the analytic pulses share: one formula for each set of decomposition terms serves every precision.
#pragma once

#include <cmath>
#include <cstddef>

#include "excitation/excitation_function.h"

namespace kesto {

// The precision of a scalar or of the lanes of a vector.
template <class T>
struct ScalarOf {
  using type = T;
};
template <>
struct ScalarOf<Float4> {
  using type = float;
};

template <class T>
struct SineCosine {
  T sine, cosine;
};
inline SineCosine<double> sine_cosine(double x) { return {std::sin(x), std::cos(x)}; }
inline SineCosine<float> sine_cosine(float x) { return {std::sin(x), std::cos(x)}; }
inline SineCosine<Float4> sine_cosine(Float4 x) { return {sin_ps(x), cos_ps(x)}; }

inline double exponential(double x) { return std::exp(x); }
inline float exponential(float x) { return std::exp(x); }
inline Float4 exponential(Float4 x) { return exp_ps(x); }

// Pulse provides
//   template <class T> void spatial_terms(T d, T* out) const        the M spatial factors for a delay d
//   template <class T, class Put> void temporal_terms(T tau, Put put) const    put(m, value) for each of the M
template <class Pulse>
class AnalyticPulse : public ExcitationFunction {
 public:
  using ExcitationFunction::ExcitationFunction;
  using ExcitationFunction::spatial_tsd;
  using ExcitationFunction::temporal_tsd;

  void spatial_tsd(double* out, double const& d) override { pulse().spatial_terms(d, out); }
  void spatial_tsd(float* out, float const& d) override { pulse().spatial_terms(d, out); }
  void spatial_tsd(Float4* out, Float4 d) override { pulse().spatial_terms(d, out); }
  void temporal_tsd(double* out, TimeSamples const* ts, int const& n, double const& shift) override {
    fill_blocks(out, ts, n, shift);
  }
  void temporal_tsd(float* out, TimeSamples const* ts, int const& n, float const& shift) override {
    fill_blocks(out, ts, n, shift);
  }

 private:
  const Pulse& pulse() const { return static_cast<const Pulse&>(*this); }

  template <class T>
  void fill_blocks(T* out, TimeSamples const* ts, int n, T shift) const {
    for (int k = 0; k < n; ++k) {
      const T tau = static_cast<T>(ts->time_index_value(k)) - shift;
      pulse().temporal_terms(tau, [=](int m, T value) { out[std::ptrdiff_t{m} * n + k] = value; });
    }
  }
};

}  // namespace kesto
