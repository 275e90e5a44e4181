// Field integrals over blocks of observation points: one source for every instruction set, chosen once a call.
//
// An integrand is a struct of tables with
//
//   template <class Sum>
//   KESTO_INLINE void add_terms(Sum& sum, const LocalPoints<typename Sum::T>& point) const;
//
// which adds the terms of its integral at the points (local coordinates, m) to a WaveSum.
#pragma once

#include <algorithm>
#include <cmath>

#include "core/lanes/outermost.h"
#include "fields/wave_sum.h"

namespace kesto {

struct PointBlock {
  static constexpr int capacity = 64;  // a multiple of every width

  int count = 0;
  int index[capacity];  // in the grid
  alignas(64) double x[capacity], y[capacity], z[capacity];
  double re[capacity], im[capacity];  // the sums

  bool full() const { return count == capacity; }
  void push(int i, double px, double py, double pz) {
    index[count] = i;
    x[count] = px, y[count] = py, z[count] = pz;
    ++count;
  }
  // Fills the last vector with copies of the last point.
  void pad() {
    const int width = static_cast<int>(VectorTarget::avx512), padded = (count + width - 1) / width * width;
    for (int i = count; i < padded; ++i) x[i] = x[count - 1], y[i] = y[count - 1], z[i] = z[count - 1];
  }
};

template <class Integrand, class T, bool lossy, Arguments arguments = Arguments::in_range>
KESTO_INLINE void sum_over_block(const Integrand integrand, Wave wave, PointBlock& block) {
  for (int i = 0; i < block.count; i += T::width) {
    WaveSum<T, lossy, arguments> sum(wave);
    integrand.add_terms(
        sum, LocalPoints<T>{load<T::width>(block.x + i), load<T::width>(block.y + i), load<T::width>(block.z + i)});
    const ComplexLanes<T> total = sum.total();
    store<T::width>(block.re + i, total.re);
    store<T::width>(block.im + i, total.im);
  }
}

template <class Integrand, bool lossy>
struct OutermostSum {
  static const Integrand& of(const void* integrand) { return *static_cast<const Integrand*>(integrand); }
  static void baseline(const void* integrand, Wave wave, PointBlock& block) {
    sum_over_block<Integrand, Baseline, lossy>(of(integrand), wave, block);
  }
#if KESTO_X86_64
  KESTO_TARGET_AVX2_FMA static void avx2(const void* integrand, Wave wave, PointBlock& block) {
    sum_over_block<Integrand, Avx2Fma, lossy>(of(integrand), wave, block);
  }
  KESTO_TARGET_AVX512 static void avx512(const void* integrand, Wave wave, PointBlock& block) {
    sum_over_block<Integrand, Avx512, lossy>(of(integrand), wave, block);
  }
#endif
  // For points of any distance, and values that are not finite.
  static void any(const void* integrand, Wave wave, PointBlock& block) {
    sum_over_block<Integrand, Baseline, lossy, Arguments::any>(of(integrand), wave, block);
  }
};

// An integrand, a wave and what computes them; the integrand stays with the caller.
class PointKernel {
 public:
  // `reach`: no distance that enters the integral is larger than that of its point from the local origin and this.
  template <class Integrand>
  PointKernel(const Integrand& integrand, Wave wave, double reach, VectorTarget target)
      : integrand_(&integrand),
        wave_(wave),
        in_range_(wave.attenuation != 0 ? function_on<OutermostSum<Integrand, true>>(target)
                                        : function_on<OutermostSum<Integrand, false>>(target)),
        any_(OutermostSum<Integrand, true>::any) {
    const double by_phase = sincos_range / std::fabs(wave.wavenumber),
                 by_loss = exp_range / std::fabs(wave.attenuation);
    const double beyond = std::fabs(reach);
    if (by_phase > beyond && by_loss > beyond) {  // neither, should anything be NaN
      const double farthest = std::min(by_phase, by_loss) - beyond;
      farthest_squared_ = std::min(farthest * farthest, 1e300);
    }
  }

  // Whether the vector functions serve every distance that enters at this point.
  bool in_range(double x, double y, double z) const { return x * x + y * y + z * z <= farthest_squared_; }

  void sum(PointBlock& block, bool every_point_in_range) const {
    block.pad();
    (every_point_in_range ? in_range_ : any_)(integrand_, wave_, block);
  }

 private:
  const void* integrand_;
  Wave wave_;
  void (*in_range_)(const void*, Wave, PointBlock&);
  void (*any_)(const void*, Wave, PointBlock&);
  double farthest_squared_ = -1;
};

}  // namespace kesto
