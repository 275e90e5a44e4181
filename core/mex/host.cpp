// The library's surroundings inside a MEX module: MATLAB's, Octave's or the embedded host.
#include "core/internal/host.h"

#include <cstdarg>
#include <cstdio>

#include "core/mex/mex_api.h"

namespace kesto {

void* allocate(std::size_t bytes, bool zeroed) { return zeroed ? mxCalloc(bytes, 1) : mxMalloc(bytes); }
void release(void* block) { mxFree(block); }

void fail(const char* text) {
  mexErrMsgTxt(text);
  __builtin_unreachable();
}
void warn(const char* text) { mexWarnMsgTxt(text); }

void print(const char* format, ...) {
  std::va_list values, again;
  va_start(values, format);
  va_copy(again, values);
  const int length = std::vsnprintf(nullptr, 0, format, values);
  va_end(values);
  const ScratchArray<char> text(std::max(length, 0) + 1);
  std::vsnprintf(text.data(), static_cast<std::size_t>(std::max(length, 0)) + 1, format, again);
  va_end(again);
  mexPrintf("%s", text.data());
}

}  // namespace kesto
