// The choice among functions that differ in their target attribute.
#pragma once

#include "core/lanes/lanes.h"
#include "core/vector_target.h"

namespace kesto {

// Outermost::baseline, ::avx2 or ::avx512, static functions of one type that carry the attribute of their name.
template <class Outermost>
auto function_on(VectorTarget target) {
  auto function = &Outermost::baseline;
#if KESTO_X86_64
  if (target == VectorTarget::avx2) function = &Outermost::avx2;
  if (target == VectorTarget::avx512) function = &Outermost::avx512;
#endif
  static_cast<void>(target);
  return function;
}

}  // namespace kesto
