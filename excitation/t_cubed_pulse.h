#pragma once

#include "excitation/analytic_pulse.h"

// A0 t^3 e^{-B t} sin(2 pi f0 t) for 0 < t < W.
//
// Eight decomposition terms, which grow with e^{B d} and (B tau)^3 and cancel: where these are large the sum loses
// digits. KEPT: of the derivative's three terms only the first carries A0.
class TCubedPulse final : public kesto::AnalyticPulse<TCubedPulse> {
 public:
  using AnalyticPulse::AnalyticPulse;  // (A0, f0, W, B, type)

  double at(double const& t) const override;
  double derivative(double const& t) const override;
  int number_of_tsd_terms() const override;

  template <class T>
  void spatial_terms(T d, T* out) const {
    using Scalar = typename kesto::ScalarOf<T>::type;
    const auto w = kesto::sine_cosine(static_cast<Scalar>(omega) * d);
    T power = static_cast<Scalar>(A0) * kesto::exponential(static_cast<Scalar>(B) * d);
    for (int m = 0; m < 4; ++m) {
      out[m] = power * w.cosine;
      out[m + 4] = power * w.sine;
      power = power * d;
    }
  }

  template <class T, class Put>
  void temporal_terms(T tau, Put put) const {
    const auto w = kesto::sine_cosine(static_cast<T>(omega) * tau);
    const T decay = kesto::exponential(-static_cast<T>(B) * tau);
    const T coefficients[4] = {tau * tau * tau * decay, -3 * tau * tau * decay, 3 * tau * decay, -decay};
    for (int m = 0; m < 4; ++m) {
      put(m, coefficients[m] * w.sine);
      put(m + 4, -coefficients[m] * w.cosine);
    }
  }
};

// Compiled once, with the flags that the results are promised for.
extern template class kesto::AnalyticPulse<TCubedPulse>;
