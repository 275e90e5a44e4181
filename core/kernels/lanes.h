// Vectors of W doubles ("lanes") as plain types with the ordinary operators.
//
// One source serves every width: a kernel is a template over W in which everything is KESTO_INLINE, instantiated
// from outermost functions that carry a target attribute (KESTO_TARGET_*) and pass no vectors. Inlining is what lets
// one body be compiled for several instruction sets; a call that is not inlined would pass vectors through memory.
#pragma once

#include <cstddef>
#include <cstdint>

#define KESTO_INLINE __attribute__((always_inline)) inline

// On x86-64 without a target attribute the baseline is SSE2. AVX2 goes without fma where results are promised to the
// bit. Other processors have the baseline alone.
#if defined(__x86_64__)
#define KESTO_X86_64 1
#define KESTO_TARGET_AVX2 __attribute__((target("avx2")))
#if defined(__clang__)
#define KESTO_TARGET_AVX512 __attribute__((target("avx512f,avx512dq,avx512vl"), min_vector_width(512)))
#else
#define KESTO_TARGET_AVX512 __attribute__((target("avx512f,avx512dq,avx512vl,prefer-vector-width=512")))
#endif
#else
#define KESTO_X86_64 0
#endif

namespace kesto {

// Explicit specialisations: GCC ignores vector_size on a type that depends on a template parameter.
template <int W>
struct Lanes;

template <>
struct Lanes<2> {
  typedef double Double __attribute__((vector_size(16)));
  typedef std::int64_t Int __attribute__((vector_size(16)));
  static constexpr Int index = {0, 1};
};
template <>
struct Lanes<4> {
  typedef double Double __attribute__((vector_size(32)));
  typedef std::int64_t Int __attribute__((vector_size(32)));
  static constexpr Int index = {0, 1, 2, 3};
};
template <>
struct Lanes<8> {
  typedef double Double __attribute__((vector_size(64)));
  typedef std::int64_t Int __attribute__((vector_size(64)));
  static constexpr Int index = {0, 1, 2, 3, 4, 5, 6, 7};
};

// W consecutive doubles from and to memory of any alignment.
template <int W>
KESTO_INLINE typename Lanes<W>::Double load(const double* from) {
  typename Lanes<W>::Double v;
  __builtin_memcpy(&v, from, sizeof v);
  return v;
}
template <int W>
KESTO_INLINE void store(double* to, typename Lanes<W>::Double v) {
  __builtin_memcpy(to, &v, sizeof v);
}

// The W lanes that start at lane 1 of a followed by b.
template <int W>
KESTO_INLINE typename Lanes<W>::Double from_second(typename Lanes<W>::Double a, typename Lanes<W>::Double b) {
  if constexpr (W == 2) return __builtin_shufflevector(a, b, 1, 2);
  if constexpr (W == 4) return __builtin_shufflevector(a, b, 1, 2, 3, 4);
  if constexpr (W == 8) return __builtin_shufflevector(a, b, 1, 2, 3, 4, 5, 6, 7, 8);
}

// The W lanes that start at the last lane of a followed by b.
template <int W>
KESTO_INLINE typename Lanes<W>::Double from_last(typename Lanes<W>::Double a, typename Lanes<W>::Double b) {
  if constexpr (W == 2) return __builtin_shufflevector(a, b, 1, 2);
  if constexpr (W == 4) return __builtin_shufflevector(a, b, 3, 4, 5, 6);
  if constexpr (W == 8) return __builtin_shufflevector(a, b, 7, 8, 9, 10, 11, 12, 13, 14);
}

}  // namespace kesto
