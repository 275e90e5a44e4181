#include "kzk/kernels.h"

#include "core/lanes/outermost.h"
#include "kzk/lanes/nonlinear_lanes.h"
#include "kzk/lanes/pulse_lanes.h"

namespace kesto {

namespace {

// The high harmonics of a weak wave and the outskirts of a beam reach numbers so small that the processor takes a
// hundred times as long for them. They count as 0 within a kernel.
class TinyNumbersAreZero {
 public:
#if KESTO_X86_64
  TinyNumbersAreZero() : before_(__builtin_ia32_stmxcsr()) { __builtin_ia32_ldmxcsr(before_ | 0x8040u); }
  ~TinyNumbersAreZero() { __builtin_ia32_ldmxcsr(before_); }
  TinyNumbersAreZero(const TinyNumbersAreZero&) = delete;
  TinyNumbersAreZero& operator=(const TinyNumbersAreZero&) = delete;

 private:
  unsigned before_;
#else
  TinyNumbersAreZero() {}
#endif
};

struct Factorise {
  template <class T>
  KESTO_INLINE static void run(const DiffractionWork& w) {
    factorise_lanes<T>(w);
  }
};
struct BackwardEuler {
  template <class T>
  KESTO_INLINE static void run(const DiffractionWork& w, double* field) {
    solve_lanes<T, false>(w, field);
    solve_lanes<T, false>(w, field);
  }
};
struct CrankNicolson {
  template <class T>
  KESTO_INLINE static void run(const DiffractionWork& w, double* field) {
    solve_lanes<T, true>(w, field);
  }
};
struct Nonlinear {
  template <class T>
  KESTO_INLINE static void run(const NonlinearWork& w, double* field) {
    if (w.transform > 0) {
      nonlinear_lanes<T, 2>(w, field);
    } else {
      nonlinear_lanes<T, 1>(w, field);
    }
  }
};

struct PulseBackwardEuler {
  template <class T>
  KESTO_INLINE static void run(const PulseDiffractionWork& w, double* field) {
    pulse_diffraction_lanes<T, false>(w, field);
    pulse_diffraction_lanes<T, false>(w, field);
  }
};
struct PulseCrankNicolson {
  template <class T>
  KESTO_INLINE static void run(const PulseDiffractionWork& w, double* field) {
    pulse_diffraction_lanes<T, true>(w, field);
  }
};
struct Distort {
  template <class T>
  KESTO_INLINE static void run(const PulseDistortionWork& w, double* field) {
    distort_lanes<T>(w, field);
  }
};

template <class Kernel, class... Args>
struct Outermost {
  static void baseline(Args... args) {
    const TinyNumbersAreZero here;
    Kernel::template run<Baseline>(args...);
  }
#if KESTO_X86_64
  KESTO_TARGET_AVX2_FMA static void avx2(Args... args) {
    const TinyNumbersAreZero here;
    Kernel::template run<Avx2Fma>(args...);
  }
  KESTO_TARGET_AVX512 static void avx512(Args... args) {
    const TinyNumbersAreZero here;
    Kernel::template run<Avx512>(args...);
  }
#endif
};

}  // namespace

KzkKernels kzk_kernels(VectorTarget target) {
  KzkKernels k;
  k.width = static_cast<int>(target);
  k.factorise = function_on<Outermost<Factorise, const DiffractionWork&>>(target);
  k.backward_euler = function_on<Outermost<BackwardEuler, const DiffractionWork&, double*>>(target);
  k.crank_nicolson = function_on<Outermost<CrankNicolson, const DiffractionWork&, double*>>(target);
  k.nonlinear = function_on<Outermost<Nonlinear, const NonlinearWork&, double*>>(target);
  k.pulse_backward_euler = function_on<Outermost<PulseBackwardEuler, const PulseDiffractionWork&, double*>>(target);
  k.pulse_crank_nicolson = function_on<Outermost<PulseCrankNicolson, const PulseDiffractionWork&, double*>>(target);
  k.distort = function_on<Outermost<Distort, const PulseDistortionWork&, double*>>(target);
  return k;
}

int nonlinear_scratch(int width, int harmonics, int transform) {
  const int padded = (harmonics + width - 1) / width * width;
  return transform > 0 ? (12 * padded + 4 * transform) * width : 6 * padded * width;
}

int pulse_scratch(int width, int samples, int transform) {
  return (pulse_vectors * samples + 2 * (samples + 3) + 4 * transform) * width;
}

int transform_of(int values) {
  int power = 4;
  while (power < values) power *= 2;
  const int three = power / 4 * 3;
  return three >= values ? three : power;
}

int transform_length(int harmonics) { return transform_of(3 * harmonics + 1); }

}  // namespace kesto
