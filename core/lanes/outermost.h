// For the engine's outermost functions until they are kernels of core/lanes/targets.h.
#pragma once

#include "core/lanes/targets.h"

namespace kesto {

template <class Outermost>
auto function_on([[maybe_unused]] VectorTarget target) {
#if KESTO_X86_64
  if (target == VectorTarget::avx2) return &Outermost::avx2;
  if (target == VectorTarget::avx512) return &Outermost::avx512;
#endif
  return &Outermost::baseline;
}

}  // namespace kesto
