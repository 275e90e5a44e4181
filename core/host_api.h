// The one place where the host's interface enters: MATLAB's, Octave's or the embedded host's mex.h, unchanged.
//
// The module uses no host function beyond mexErrMsgTxt, mexWarnMsgTxt, mexPrintf, mxGetNumberOfDimensions,
// mxGetDimensions, mxGetComplexDoubles, mxGetPr, mxGetM, mxGetN, mxCreateNumericArray, mxIsStruct, mxIsNumeric,
// mxGetScalar, mxGetFieldNumber, mxGetField, mxMalloc, mxCalloc, mxRealloc and mxFree; a test reads the built module
// and holds it to that list.
#pragma once

#include <algorithm>
#include <cstddef>

#include "mex.h"

namespace kesto {

// mexErrMsgTxt, for hosts whose header does not say that it never returns.
[[noreturn]] inline void fail(const char* text) {
  mexErrMsgTxt(text);
  __builtin_unreachable();
}

inline bool is_empty(const mxArray* array) { return mxGetM(array) == 0 || mxGetN(array) == 0; }

// Uninitialised scratch memory of `count` elements from the host's allocator, given back on every way out of the
// scope, the host's own unwinding included.
template <class T>
class ScratchArray {
 public:
  explicit ScratchArray(int count) : ScratchArray(static_cast<std::size_t>(std::max(count, 0))) {}
  explicit ScratchArray(std::size_t count) : data_(static_cast<T*>(mxMalloc(count * sizeof(T)))) {
    if (data_ == nullptr && count != 0) fail("Out of memory.\n");
  }
  ~ScratchArray() { mxFree(data_); }
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
