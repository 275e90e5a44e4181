// The analytic pulses in lanes: value, derivative and the spatial factors of their decomposition.
//
// Each mirrors the class it is made from, with the same bounds; visit_pulse_lanes at the end is the one list of them.
// fits(longest) says whether the vector functions serve
// times and delays up to `longest` (s); what they make of others is discarded by the bounds of the pulse. factors_last
// says that the spatial factors do not shrink with the delay.
#pragma once

#include <cmath>

#include "core/constants.h"
#include "core/lanes/lane_math.h"
#include "excitation/hanning_pulse.h"
#include "excitation/t_cubed_pulse.h"
#include "excitation/tone_burst.h"

namespace kesto {

// `value` where t lies between 0 and `width`, else 0.
template <class T>
KESTO_INLINE Double<T> within_open(Double<T> t, double width, Double<T> value) {
  return where_top_bit<T>(bits_of<T>(0.0 - t) & bits_of<T>(t - width), value);
}
template <class T>
KESTO_INLINE Double<T> within_closed(Double<T> t, double width, Double<T> value) {
  return where_top_bit<T>(~(bits_of<T>(t) | bits_of<T>(width - t)), value);
}

struct ToneBurstLanes {
  static constexpr int terms = 2;
  using Pulse = ToneBurst;
  bool factors_last() const { return true; }

  explicit ToneBurstLanes(const ToneBurst& p)
      : A0(p.A0), omega(p.omega), width(p.pulse_width), slope(2 * p.A0 * pi * p.f0) {}
  bool fits(double longest) const { return std::fabs(omega) * longest <= sincos_range; }

  template <class T>
  KESTO_INLINE Double<T> at(Double<T> t) const {
    return within_open<T>(t, width, A0 * sincos<T>(omega * t).sin);
  }
  template <class T>
  KESTO_INLINE Double<T> derivative(Double<T> t) const {
    return within_closed<T>(t, width, slope * sincos<T>(omega * t).cos);
  }
  template <class T>
  KESTO_INLINE void spatial_terms(Double<T> d, Double<T>* out) const {
    const SinCos<T> w = sincos<T>(omega * d);
    out[0] = A0 * w.cos;
    out[1] = A0 * w.sin;
  }

  double A0, omega, width, slope;
};

struct HanningPulseLanes {
  static constexpr int terms = 6;
  using Pulse = HanningPulse;
  bool factors_last() const { return true; }

  explicit HanningPulseLanes(const HanningPulse& p)
      : A0(p.A0), omega(p.omega), omega_w(p.omega_w), width(p.pulse_width), envelope(two_pi / p.pulse_width) {}
  bool fits(double longest) const {
    return std::fabs(omega) * longest <= sincos_range && std::fabs(omega_w) * longest <= sincos_range &&
           std::fabs(envelope) * longest <= sincos_range;
  }

  template <class T>
  KESTO_INLINE Double<T> at(Double<T> t) const {
    return within_open<T>(t, width, A0 * (1.0 - sincos<T>(envelope * t).cos) * sincos<T>(omega * t).sin);
  }
  template <class T>
  KESTO_INLINE Double<T> derivative(Double<T> t) const {
    const SinCos<T> carrier = sincos<T>(omega * t), swell = sincos<T>(envelope * t);
    return within_open<T>(t, width,
                          A0 * ((1.0 - swell.cos) * omega * carrier.cos + carrier.sin * swell.sin * envelope));
  }
  template <class T>
  KESTO_INLINE void spatial_terms(Double<T> d, Double<T>* out) const {
    const SinCos<T> carrier = sincos<T>(omega * d), swell = sincos<T>(omega_w * d);
    out[0] = A0 * carrier.cos;
    out[1] = A0 * carrier.sin;
    out[2] = swell.cos * out[0];
    out[3] = swell.cos * out[1];
    out[4] = swell.sin * out[0];
    out[5] = swell.sin * out[1];
  }

  double A0, omega, omega_w, width;
  double envelope;  // of the value; omega_w is that of the terms
};

struct TCubedPulseLanes {
  static constexpr int terms = 8;
  using Pulse = TCubedPulse;
  bool factors_last() const { return B >= 0; }

  explicit TCubedPulseLanes(const TCubedPulse& p) : A0(p.A0), omega(p.omega), B(p.B), width(p.pulse_width) {}

  bool fits(double longest) const {
    return std::fabs(omega) * longest <= sincos_range && std::fabs(B) * longest <= exp_range;
  }

  template <class T>
  KESTO_INLINE Double<T> at(Double<T> t) const {
    return within_open<T>(t, width, A0 * (t * t * t) * exp<T>(-B * t) * sincos<T>(omega * t).sin);
  }
  template <class T>
  KESTO_INLINE Double<T> derivative(Double<T> t) const {
    const Double<T> decay = exp<T>(-B * t), squared = t * t, cubed = squared * t;
    const SinCos<T> w = sincos<T>(omega * t);
    return within_open<T>(t, width,
                          3 * A0 * t * t * decay * w.sin + omega * cubed * decay * w.cos - B * cubed * decay * w.sin);
  }
  template <class T>
  KESTO_INLINE void spatial_terms(Double<T> d, Double<T>* out) const {
    const SinCos<T> w = sincos<T>(omega * d);
    Double<T> power = A0 * exp<T>(B * d);
    for (int m = 0; m < 4; ++m) {
      out[m] = power * w.cos;
      out[m + 4] = power * w.sin;
      power = power * d;
    }
  }

  double A0, omega, B, width;
};

// Calls visit(lanes) if the signal is a pulse of one of these classes; returns what that returns, else a default value.
template <class Result, class First, class... Others, class Visit>
Result visit_pulse_lanes_among(const ExcitationFunction& signal, const Visit& visit) {
  if (const auto* const pulse = dynamic_cast<const typename First::Pulse*>(&signal)) return visit(First(*pulse));
  if constexpr (sizeof...(Others) > 0) {
    return visit_pulse_lanes_among<Result, Others...>(signal, visit);
  } else {
    return {};
  }
}
template <class Result, class Visit>
Result visit_pulse_lanes(const ExcitationFunction& signal, const Visit& visit) {
  return visit_pulse_lanes_among<Result, ToneBurstLanes, HanningPulseLanes, TCubedPulseLanes>(signal, visit);
}

}  // namespace kesto
