#pragma once

#include "excitation/analytic_pulse.h"

// A0 (1 - cos(2 pi t / W)) sin(2 pi f0 t) for 0 < t < W: without the factor 1/2, the envelope runs from 0 to 2 A0.
//
// Six decomposition terms. KEPT: A0 stands in the spatial and in the temporal factors, so that they sum to A0 times the
// value.
class HanningPulse final : public kesto::AnalyticPulse<HanningPulse> {
 public:
  using AnalyticPulse::AnalyticPulse;  // (A0, f0, W, B, type); B is not used

  double at(double const& t) const override;
  double derivative(double const& t) const override;
  int number_of_tsd_terms() const override;

  template <class T>
  void spatial_terms(T d, T* out) const {
    using Scalar = typename kesto::ScalarOf<T>::type;
    const auto carrier = kesto::sine_cosine(static_cast<Scalar>(omega) * d);
    const auto envelope = kesto::sine_cosine(static_cast<Scalar>(omega_w) * d);
    const T c = static_cast<Scalar>(A0) * carrier.cosine, s = static_cast<Scalar>(A0) * carrier.sine;
    out[0] = c;
    out[1] = s;
    out[2] = envelope.cosine * c;
    out[3] = envelope.cosine * s;
    out[4] = envelope.sine * c;
    out[5] = envelope.sine * s;
  }

  template <class T, class Put>
  void temporal_terms(T tau, Put put) const {
    const auto carrier = kesto::sine_cosine(static_cast<T>(omega) * tau);
    const auto envelope = kesto::sine_cosine(static_cast<T>(omega_w) * tau);
    const T s = static_cast<T>(A0) * carrier.sine, c = static_cast<T>(A0) * carrier.cosine;
    put(0, s);
    put(1, -c);
    put(2, -envelope.cosine * s);
    put(3, envelope.cosine * c);
    put(4, -envelope.sine * s);
    put(5, envelope.sine * c);
  }
};

// Compiled once, with the flags that the results are promised for.
extern template class kesto::AnalyticPulse<HanningPulse>;
