// Scratch memory whose vectors lie within cache lines.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "core/internal/host.h"

namespace kesto {

class AlignedScratch {
 public:
  explicit AlignedScratch(std::size_t count) : block_(count + line), count_(count) {
    const std::uintptr_t address = reinterpret_cast<std::uintptr_t>(block_.data());
    data_ = block_.data() + (line - address / sizeof(double) % line) % line;
    std::fill_n(data_, count, 0.0);
  }
  double* data() const { return data_; }
  std::size_t size() const { return count_; }
  double& operator[](std::size_t i) const { return data_[i]; }

 private:
  static constexpr std::size_t line = 8;  // doubles
  ScratchArray<double> block_;
  double* data_;
  std::size_t count_;
};

}  // namespace kesto
