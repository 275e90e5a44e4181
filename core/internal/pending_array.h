// Arrays of doubles between the host's allocator and the object that is to own them.
#pragma once

#include <cstddef>

#include "core/internal/host.h"

namespace kesto {

// Given back on every way out of the scope, the host's own unwinding included, unless a field has taken it. An object
// that gathers all its new arrays before it parts with the old ones is whole whatever the host refuses.
class PendingArray {
 public:
  static PendingArray uninitialised(std::size_t count) { return PendingArray(allocate(count * sizeof(double))); }

  // One element longer than `count`: accessors that admit the count itself as an index read a 0 there.
  static PendingArray zeros(int count) {
    return PendingArray(allocate((static_cast<std::size_t>(count) + 1) * sizeof(double), true));
  }

  ~PendingArray() { kesto::release(data_); }
  PendingArray(const PendingArray&) = delete;
  PendingArray& operator=(const PendingArray&) = delete;

  double* data() const { return data_; }

  // The field takes the array; the one that it held is freed.
  void replace(double*& field) {
    kesto::release(field);
    field = data_;
    data_ = nullptr;
  }

 private:
  explicit PendingArray(void* block) : data_(static_cast<double*>(block)) {
    if (data_ == nullptr) fail("Out of memory.\n");
  }

  double* data_;
};

}  // namespace kesto
