// Sums of waves e^{-(alpha + jk) R}, in lanes over observation points: the inner loop of every continuous-wave field.
#pragma once

#include <type_traits>

#include "core/lanes/lane_math.h"
#include "fields/wave.h"

namespace kesto {

template <class Target>
struct LocalPoints {
  Double<Target> x, y, z;
};

template <class Target>
struct ComplexLanes {
  Double<Target> re, im;
};

// The waves that one node of a rule sends to the points: the one of a rim, the two or four of parallel edges.
template <class Target, int n = 1>
struct WaveTerms {
  static constexpr int count = n;
  Double<Target> coefficient[n];
  Double<Target> distance[n];
};

// sum of coefficient (e^{-(alpha + jk) distance} - reference), with a reference of 0 unless one is set.
//
// Phases are rounded like those of the scalar formula; the accumulation is fused where the target can.
template <class T, bool lossy, Arguments arguments>
class WaveSum {
 public:
  using Target = T;
  static constexpr Arguments argument_range = arguments;

  KESTO_INLINE explicit WaveSum(Wave wave)
      : minus_k_(broadcast<T>(-wave.wavenumber)), minus_alpha_(broadcast<T>(-wave.attenuation)) {}

  KESTO_INLINE void subtract_wave_at(Double<T> distance) { reference_ = wave_at(distance); }

  // Adds node(0) ... node(n - 1), in that order; node(i) gives WaveTerms. A processor looks ahead by some two hundred
  // operations, too few to overlap square roots and divisions with the exponentials by itself. So three steps are under
  // way at once: the divisions of one, the argument reduction of the one before, the polynomials of the one before that
  // (gains 5 to 8 % lossless, 15 to 25 % lossy); and a step has two waves at least (8 to 10 % lossless).
  template <class Node>
  KESTO_INLINE void add(int n, const Node& node) {
    if constexpr (decltype(node(0))::count > 1) {
      add_steps(n, node);
    } else {
      add_steps(n / 2, [&](int i) KESTO_INLINE_LAMBDA {
        const auto a = node(2 * i), b = node(2 * i + 1);
        return WaveTerms<T, 2>{{a.coefficient[0], b.coefficient[0]}, {a.distance[0], b.distance[0]}};
      });
      if (n > 0 && n % 2 != 0) add(node(n - 1));
    }
  }

  template <int count>
  KESTO_INLINE void add(const WaveTerms<T, count>& waves) {
    finish(begin(waves));
  }

  KESTO_INLINE ComplexLanes<T> total() const { return sum_; }

 private:
  template <class Step>
  KESTO_INLINE void add_steps(int n, const Step& step) {
    if (n < 1) return;
    auto begun = begin(step(0));
    auto next = step(n > 1 ? 1 : 0);
    for (int i = 2; i < n; ++i) {
      const auto begun_next = begin(next);
      next = step(i);
      finish(begun);
      begun = begun_next;
    }
    for (int rest = n > 1 ? 2 : 1; rest > 0; --rest) {
      finish(begun);
      begun = begin(next);
    }
  }

  // Phase and loss of a wave, reduced if they are known to be in range.
  struct BegunInRange {
    ReducedAngle<T> phase;
    ReducedExp<T> loss;
  };
  struct BegunAnywhere {
    Double<T> phase, loss;
  };
  using BegunWave = std::conditional_t<arguments == Arguments::in_range, BegunInRange, BegunAnywhere>;
  template <int count>
  struct BegunStep {
    Double<T> coefficient[count];
    BegunWave wave[count];
  };

  KESTO_INLINE BegunWave begin_wave_at(Double<T> distance) const {
    BegunWave w;
    if constexpr (arguments == Arguments::in_range) {
      w.phase = reduce_angle<T>(minus_k_ * distance);
      if constexpr (lossy) w.loss = reduce_exp<T>(minus_alpha_ * distance);
    } else {
      w.phase = minus_k_ * distance;
      w.loss = minus_alpha_ * distance;
    }
    return w;
  }
  KESTO_INLINE ComplexLanes<T> finish_wave(const BegunWave& w) const {
    SinCos<T> direction;
    if constexpr (arguments == Arguments::in_range) {
      direction = sincos<T>(w.phase);
    } else {
      direction = sincos<T, arguments>(w.phase);
    }
    if constexpr (!lossy) {
      return {direction.cos, direction.sin};
    } else {
      Double<T> modulus;
      if constexpr (arguments == Arguments::in_range) {
        modulus = exp<T>(w.loss);
      } else {
        modulus = exp<T, arguments>(w.loss);
      }
      return {modulus * direction.cos, modulus * direction.sin};
    }
  }
  KESTO_INLINE ComplexLanes<T> wave_at(Double<T> distance) const { return finish_wave(begin_wave_at(distance)); }

  template <int count>
  KESTO_INLINE BegunStep<count> begin(const WaveTerms<T, count>& waves) const {
    BegunStep<count> b;
    for (int i = 0; i < count; ++i) {
      b.coefficient[i] = waves.coefficient[i];
      b.wave[i] = begin_wave_at(waves.distance[i]);
    }
    return b;
  }
  template <int count>
  KESTO_INLINE void finish(const BegunStep<count>& b) {
    for (int i = 0; i < count; ++i) {
      const ComplexLanes<T> wave = finish_wave(b.wave[i]);
      sum_.re = multiply_add<T>(b.coefficient[i], wave.re - reference_.re, sum_.re);
      sum_.im = multiply_add<T>(b.coefficient[i], wave.im - reference_.im, sum_.im);
    }
  }

  Double<T> minus_k_, minus_alpha_;
  ComplexLanes<T> reference_ = {}, sum_ = {};
};

}  // namespace kesto
