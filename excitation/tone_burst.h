#pragma once

#include "excitation/analytic_pulse.h"

// A0 sin(2 pi f0 t) for 0 < t < W.
//
// Two decomposition terms. KEPT: its derivative has closed bounds where the value has open ones, so that at 0 and at W
// the derivative is not zero while the value is.
class ToneBurst final : public kesto::AnalyticPulse<ToneBurst> {
 public:
  using AnalyticPulse::AnalyticPulse;  // (A0, f0, W, B, type); B is not used

  double at(double const& t) const override;
  double derivative(double const& t) const override;
  int number_of_tsd_terms() const override;

  template <class T>
  void spatial_terms(T d, T* out) const {
    using Scalar = typename kesto::ScalarOf<T>::type;
    const auto w = kesto::sine_cosine(static_cast<Scalar>(omega) * d);
    out[0] = static_cast<Scalar>(A0) * w.cosine;
    out[1] = static_cast<Scalar>(A0) * w.sine;
  }

  template <class T, class Put>
  void temporal_terms(T tau, Put put) const {
    const auto w = kesto::sine_cosine(static_cast<T>(omega) * tau);
    put(0, w.sine);
    put(1, -w.cosine);
  }
};

// Compiled once, with the flags that the results are promised for.
extern template class kesto::AnalyticPulse<ToneBurst>;
