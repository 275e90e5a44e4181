#include "kzk/kernels.h"

#include "core/lanes/targets.h"
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
  using Signature = void(const DiffractionWork&);
  template <class T>
  KESTO_INLINE static void run(const DiffractionWork& w) {
    const TinyNumbersAreZero here;
    factorise_lanes<T>(w);
  }
};
struct BackwardEuler {
  using Signature = void(const DiffractionWork&, double*);
  template <class T>
  KESTO_INLINE static void run(const DiffractionWork& w, double* field) {
    const TinyNumbersAreZero here;
    solve_lanes<T, false>(w, field);
    solve_lanes<T, false>(w, field);
  }
};
struct CrankNicolson {
  using Signature = void(const DiffractionWork&, double*);
  template <class T>
  KESTO_INLINE static void run(const DiffractionWork& w, double* field) {
    const TinyNumbersAreZero here;
    solve_lanes<T, true>(w, field);
  }
};
struct Nonlinear {
  using Signature = void(const NonlinearWork&, double*);
  template <class T>
  KESTO_INLINE static void run(const NonlinearWork& w, double* field) {
    const TinyNumbersAreZero here;
    if (w.transform > 0) {
      nonlinear_lanes<T, 2>(w, field);
    } else {
      nonlinear_lanes<T, 1>(w, field);
    }
  }
};

struct PulseBackwardEuler {
  using Signature = void(const PulseDiffractionWork&, double*);
  template <class T>
  KESTO_INLINE static void run(const PulseDiffractionWork& w, double* field) {
    const TinyNumbersAreZero here;
    pulse_diffraction_lanes<T, false>(w, field);
    pulse_diffraction_lanes<T, false>(w, field);
  }
};
struct PulseCrankNicolson {
  using Signature = void(const PulseDiffractionWork&, double*);
  template <class T>
  KESTO_INLINE static void run(const PulseDiffractionWork& w, double* field) {
    const TinyNumbersAreZero here;
    pulse_diffraction_lanes<T, true>(w, field);
  }
};
struct Distort {
  using Signature = void(const PulseDistortionWork&, double*);
  template <class T>
  KESTO_INLINE static void run(const PulseDistortionWork& w, double* field) {
    const TinyNumbersAreZero here;
    distort_lanes<T>(w, field);
  }
};

}  // namespace

KzkKernels kzk_kernels(VectorTarget target) {
  KzkKernels k;
  k.width = static_cast<int>(target);
  k.factorise = kernel_on<Factorise>(target);
  k.backward_euler = kernel_on<BackwardEuler>(target);
  k.crank_nicolson = kernel_on<CrankNicolson>(target);
  k.nonlinear = kernel_on<Nonlinear>(target);
  k.pulse_backward_euler = kernel_on<PulseBackwardEuler>(target);
  k.pulse_crank_nicolson = kernel_on<PulseCrankNicolson>(target);
  k.distort = kernel_on<Distort>(target);
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
