// The vector targets of this machine.
#pragma once

#include <cstdlib>
#include <vector>

#include "core/vector_target.h"

namespace kesto {

inline std::vector<VectorTarget> available_targets() {
  std::vector<VectorTarget> available;
  for (const VectorTarget target : all_vector_targets) {
    if (is_available(target)) available.push_back(target);
  }
  return available;
}

// Calls visit(target) with each of them in force, the baseline first.
template <class Visit>
void at_every_width(const Visit& visit) {
  for (const VectorTarget target : available_targets()) {
    setenv("KESTO_VECTOR_TARGET", name_of(target), 1);
    visit(target);
  }
  unsetenv("KESTO_VECTOR_TARGET");
}

}  // namespace kesto
