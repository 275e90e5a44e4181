// What the library asks of its surroundings: five functions. Inside a MEX module they are the host's
// (core/mex/host.cpp), in the stand-alone library those of kesto/internal/standalone_host.cpp.
#pragma once

#include <algorithm>
#include <cstddef>

namespace kesto {

// Null when there is no such block to be had.
void* allocate(std::size_t bytes, bool zeroed = false);
void release(void* block);  // null is allowed

// Ends the computation with an error of this text; what is on the stack is unwound.
[[noreturn]] void fail(const char* text);
void warn(const char* text);
void print(const char* format, ...) __attribute__((format(printf, 1, 2)));  // on the host's console

// Uninitialised scratch memory of `count` elements, given back on every way out of the scope, the host's own unwinding
// included.
template <class T>
class ScratchArray {
 public:
  explicit ScratchArray(int count) : ScratchArray(static_cast<std::size_t>(std::max(count, 0))) {}
  explicit ScratchArray(std::size_t count) : data_(static_cast<T*>(allocate(count * sizeof(T)))) {
    if (data_ == nullptr && count != 0) fail("Out of memory.\n");
  }
  ~ScratchArray() { release(data_); }
  ScratchArray(const ScratchArray&) = delete;
  ScratchArray& operator=(const ScratchArray&) = delete;

  T* data() const { return data_; }
  template <class Index>
  T& operator[](Index i) const {
    return data_[i];
  }

 private:
  T* data_;
};

}  // namespace kesto
