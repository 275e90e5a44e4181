// Field integrals over blocks of observation points: one source for every instruction set, chosen once a call.
//
// An integrand is a struct of tables with
//
//   template <class Sum>
//   KESTO_INLINE void add_terms(Sum& sum, const LocalPoints<typename Sum::Target>& point) const;
//
// which adds the terms of its integral at the points (local coordinates, m) to a WaveSum.
#pragma once

#include <algorithm>
#include <cmath>

#include "fields/wave_sum.h"

namespace kesto {

struct PointBlock {
  static constexpr int capacity = 64;
  static_assert(capacity % widest_target == 0);

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
    const int padded = (count + widest_target - 1) / widest_target * widest_target;
    for (int i = count; i < padded; ++i) x[i] = x[count - 1], y[i] = y[count - 1], z[i] = z[count - 1];
  }
};

template <class Integrand, bool lossy, Arguments arguments>
struct BlockSum {
  using Signature = void(const void* integrand, Wave wave, PointBlock& block);

  template <class T>
  KESTO_INLINE static void run(const void* integrand_of_caller, Wave wave, PointBlock& block) {
    // A copy, to which for all that the compiler knows nothing else refers.
    const Integrand integrand = *static_cast<const Integrand*>(integrand_of_caller);
    for (int i = 0; i < block.count; i += T::width) {
      WaveSum<T, lossy, arguments> sum(wave);
      integrand.add_terms(
          sum, LocalPoints<T>{load<T::width>(block.x + i), load<T::width>(block.y + i), load<T::width>(block.z + i)});
      const ComplexLanes<T> total = sum.total();
      store<T::width>(block.re + i, total.re);
      store<T::width>(block.im + i, total.im);
    }
  }
};

// An integrand, a wave and what computes them; the integrand stays with the caller.
class PointKernel {
 public:
  // `extent`: by how much a distance in the integral may exceed the distance of its point from the local origin, m.
  template <class Integrand>
  PointKernel(const Integrand& integrand, Wave wave, double extent, VectorTarget target = chosen_vector_target())
      : integrand_(&integrand),
        wave_(wave),
        in_range_(wave.attenuation != 0 ? kernel_on<BlockSum<Integrand, true, Arguments::in_range>>(target)
                                        : kernel_on<BlockSum<Integrand, false, Arguments::in_range>>(target)),
        any_(kernel_on<BlockSum<Integrand, true, Arguments::any>>(VectorTarget::baseline)) {
    const double by_phase = sincos_range / std::fabs(wave.wavenumber),
                 by_loss = exp_range / std::fabs(wave.attenuation);
    const double beyond = std::fabs(extent);
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
  using Function = void (*)(const void*, Wave, PointBlock&);

  const void* integrand_;
  Wave wave_;
  Function in_range_;
  Function any_;  // for points of any distance, and values that are not finite
  double farthest_squared_ = -1;
};

}  // namespace kesto
