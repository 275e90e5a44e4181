#include "core/vector_target.h"

#include <cstdlib>
#include <cstring>

#include "core/lanes/lanes.h"

#if KESTO_X86_64
#include <cpuid.h>
#endif

namespace kesto {

namespace {

// Asked of the processor directly: the compilers' own __builtin_cpu_supports needs a run-time library that not every
// toolchain brings.
VectorTarget detect_widest() {
#if KESTO_X86_64
  unsigned a = 0, b = 0, c = 0, d = 0;
  constexpr unsigned osxsave = 1u << 27, avx = 1u << 28, fma = 1u << 12;
  if (__get_cpuid(1, &a, &b, &c, &d) == 0 || (c & (osxsave | avx | fma)) != (osxsave | avx | fma)) {
    return VectorTarget::baseline;
  }
  unsigned state = 0, state_high = 0;  // which registers the operating system saves
  __asm__("xgetbv" : "=a"(state), "=d"(state_high) : "c"(0));
  constexpr unsigned ymm_state = 0x6;
  if (__get_cpuid_count(7, 0, &a, &b, &c, &d) == 0 || (state & ymm_state) != ymm_state) {
    return VectorTarget::baseline;
  }
  constexpr unsigned avx2 = 1u << 5;
  if ((b & avx2) == 0) return VectorTarget::baseline;
#if !defined(__APPLE__)
  constexpr unsigned zmm_state = 0xe6, avx512f = 1u << 16, avx512dq = 1u << 17, avx512vl = 1u << 31;
  constexpr unsigned avx512 = avx512f | avx512dq | avx512vl;
  if ((b & avx512) == avx512 && (state & zmm_state) == zmm_state) return VectorTarget::avx512;
#endif
  return VectorTarget::avx2;
#else
  return VectorTarget::baseline;
#endif
}

VectorTarget widest() {
  static const VectorTarget found = detect_widest();
  return found;
}

}  // namespace

const char* name_of(VectorTarget target) {
  switch (target) {
    case VectorTarget::avx2: return "avx2";
    case VectorTarget::avx512: return "avx512";
    default: return "baseline";
  }
}

bool is_available(VectorTarget target) { return target <= widest(); }

VectorTarget chosen_vector_target(const char** ignored) {
  if (ignored != nullptr) *ignored = nullptr;
  const char* const forced = std::getenv("KESTO_VECTOR_TARGET");
  if (forced == nullptr || *forced == '\0') return widest();
  for (const VectorTarget target : all_vector_targets) {
    if (is_available(target) && std::strcmp(forced, name_of(target)) == 0) return target;
  }
  if (ignored != nullptr) *ignored = forced;
  return widest();
}

}  // namespace kesto
