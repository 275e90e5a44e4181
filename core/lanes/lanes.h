// Vectors of W doubles ("lanes") as plain types with the ordinary operators.
//
// One source serves every width: a kernel is a template over W, or over a target that also says whether there is fma,
// in which everything is KESTO_INLINE.
#pragma once

#include <cstddef>
#include <cstdint>

#if defined(__aarch64__)
#include <arm_neon.h>
#endif

#include "core/lanes/targets.h"

namespace kesto {

// Explicit specialisations: GCC ignores vector_size on a type that depends on a template parameter.
template <int W>
struct Lanes;

template <>
struct Lanes<2> {
  typedef double Double __attribute__((vector_size(16)));
  typedef std::int64_t Int __attribute__((vector_size(16)));
  typedef std::uint64_t Bits __attribute__((vector_size(16)));
  static constexpr Int index = {0, 1};
};
template <>
struct Lanes<4> {
  typedef double Double __attribute__((vector_size(32)));
  typedef std::int64_t Int __attribute__((vector_size(32)));
  typedef std::uint64_t Bits __attribute__((vector_size(32)));
  static constexpr Int index = {0, 1, 2, 3};
};
template <>
struct Lanes<8> {
  typedef double Double __attribute__((vector_size(64)));
  typedef std::int64_t Int __attribute__((vector_size(64)));
  typedef std::uint64_t Bits __attribute__((vector_size(64)));
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

// Comparisons go straight into ?: and are nested there. Joined by &, | or ~ in a KESTO_INLINE function, GCC 12 takes
// them apart lane by lane on AVX-512, at fifteen times the instructions. Nested ones with a common outcome it joins by
// itself: where that could be, tell bounds by the signs of differences, with where_top_bit.
template <class Target>
using Double = typename Lanes<Target::width>::Double;
template <class Target>
using Bits = typename Lanes<Target::width>::Bits;

template <class Target>
KESTO_INLINE Double<Target> broadcast(double value) {
  return value - Double<Target>{};  // the one form that folds away and keeps the sign of 0
}

template <class Target>
KESTO_INLINE Bits<Target> bits_of(Double<Target> v) {
  return reinterpret_cast<Bits<Target>>(v);
}

// `value` in the lanes whose top bit is set, else 0.
template <class Target>
KESTO_INLINE Double<Target> where_top_bit(Bits<Target> bits, Double<Target> value) {
  return reinterpret_cast<typename Lanes<Target::width>::Int>(bits) < 0 ? value : Double<Target>{};
}

#if defined(__aarch64__)
KESTO_INLINE void assign_fma(Lanes<2>::Double& to, Lanes<2>::Double a, Lanes<2>::Double b, Lanes<2>::Double c) {
  to = vfmaq_f64(c, a, b);
}
#elif KESTO_X86_64
// The instructions themselves: the vector extensions have no sign for them. These two cannot be KESTO_INLINE, since
// kernels are not yet in a function of their target when that is checked, so they pass references and leave inlining to
// the optimiser. A loop of scalar fma becomes the same instruction, but only from -O2 on and for four times the compile
// time.
KESTO_TARGET_AVX2_FMA inline void assign_fma(Lanes<4>::Double& to, const Lanes<4>::Double& a, const Lanes<4>::Double& b,
                                             const Lanes<4>::Double& c) {
#if __has_builtin(__builtin_elementwise_fma)  // Clang from 17 on, which in time gives up the other
  to = __builtin_elementwise_fma(a, b, c);
#else
  to = __builtin_ia32_vfmaddpd256(a, b, c);
#endif
}
KESTO_TARGET_AVX512 inline void assign_fma(Lanes<8>::Double& to, const Lanes<8>::Double& a, const Lanes<8>::Double& b,
                                           const Lanes<8>::Double& c) {
#if __has_builtin(__builtin_elementwise_fma)
  to = __builtin_elementwise_fma(a, b, c);
#else
  constexpr int current_rounding = 4;
  to = __builtin_ia32_vfmaddpd512_mask(a, b, c, static_cast<unsigned char>(-1), current_rounding);
#endif
}
#endif

// a b + c rounded once; only for targets that have it.
template <class Target>
KESTO_INLINE Double<Target> fma(Double<Target> a, Double<Target> b, Double<Target> c) {
  static_assert(Target::has_fma, "the target has no fused multiply-add");
  Double<Target> fused = c;
  assign_fma(fused, a, b, c);
  return fused;
}

// a b + c, rounded once where the target can.
template <class Target>
KESTO_INLINE Double<Target> multiply_add(Double<Target> a, Double<Target> b, Double<Target> c) {
  if constexpr (Target::has_fma) return fma<Target>(a, b, c);
  return a * b + c;
}

template <class Target>
KESTO_INLINE Double<Target> sqrt(Double<Target> v) {
  Double<Target> root = v;
  for (int lane = 0; lane < Target::width; ++lane) root[lane] = __builtin_sqrt(v[lane]);  // becomes one instruction
  return root;
}

// Whether any lane has its top bit set.
KESTO_INLINE bool any_top_bit(Lanes<2>::Bits v) { return ((v[0] | v[1]) >> 63) != 0; }
KESTO_INLINE bool any_top_bit(Lanes<4>::Bits v) {
  return any_top_bit(__builtin_shufflevector(v, v, 0, 1) | __builtin_shufflevector(v, v, 2, 3));
}
KESTO_INLINE bool any_top_bit(Lanes<8>::Bits v) {
  return any_top_bit(__builtin_shufflevector(v, v, 0, 1, 2, 3) | __builtin_shufflevector(v, v, 4, 5, 6, 7));
}

}  // namespace kesto
