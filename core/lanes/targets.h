// The vector targets, and how a kernel comes to run on each: the one place that knows them all.
//
// A kernel is a struct with
//
//   using Signature = void(Arguments...);
//   template <class Target>
//   KESTO_INLINE static void run(Arguments...);
//
// of which kernel_on picks the instantiation that a machine can run. One more target takes its enumerator and its
// detection (core/vector_target), its lane type (core/lanes/lanes.h) and its lines here.
#pragma once

#include "core/vector_target.h"

#define KESTO_INLINE __attribute__((always_inline)) inline
#define KESTO_INLINE_LAMBDA __attribute__((always_inline))

// Inlining is what lets one body be compiled for several instruction sets: a function without the target's attribute
// would pass vectors through memory. On x86-64 without an attribute the baseline is SSE2. Other processors have the
// baseline alone, on arm64 with fma.
#if defined(__x86_64__)
#define KESTO_X86_64 1
#define KESTO_TARGET_AVX2_FMA __attribute__((target("avx2,fma")))
#if defined(__clang__)
#define KESTO_TARGET_AVX512 __attribute__((target("avx512f,avx512dq,avx512vl"), min_vector_width(512)))
#else
#define KESTO_TARGET_AVX512 __attribute__((target("avx512f,avx512dq,avx512vl,prefer-vector-width=512")))
#endif
#else
#define KESTO_X86_64 0
#endif

namespace kesto {

// What kernels are compiled for. Products and sums are fused only where a kernel asks for it.
struct Baseline {
  static constexpr int width = 2;
#if defined(__aarch64__)
  static constexpr bool has_fma = true;
#else
  static constexpr bool has_fma = false;
#endif
};
struct Avx2Fma {
  static constexpr int width = 4;
  static constexpr bool has_fma = true;
};
struct Avx512 {
  static constexpr int width = 8;
  static constexpr bool has_fma = true;
};
constexpr int widest_target = Avx512::width;

template <class Kernel, class Signature = typename Kernel::Signature>
struct OutermostFunctions;
template <class Kernel, class... Arguments>
struct OutermostFunctions<Kernel, void(Arguments...)> {
  static void baseline(Arguments... a) { Kernel::template run<Baseline>(a...); }
#if KESTO_X86_64
  KESTO_TARGET_AVX2_FMA static void avx2(Arguments... a) { Kernel::template run<Avx2Fma>(a...); }
  KESTO_TARGET_AVX512 static void avx512(Arguments... a) { Kernel::template run<Avx512>(a...); }
#endif
};

template <class Kernel>
typename Kernel::Signature* kernel_on([[maybe_unused]] VectorTarget target) {
  using Functions = OutermostFunctions<Kernel>;
#if KESTO_X86_64
  if (target == VectorTarget::avx2) return Functions::avx2;
  if (target == VectorTarget::avx512) return Functions::avx512;
#endif
  return Functions::baseline;
}

}  // namespace kesto
