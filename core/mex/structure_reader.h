// Structures that the toolbox's set_*.m functions make.
#pragma once

#include <cstddef>

#include "core/mex/mex_api.h"

namespace kesto {

// Reads the first element. Where a field is missing, a line on the console says which; the error is `advice`.
class StructureReader {
 public:
  StructureReader(const mxArray* structure, const char* advice) : structure_(structure), advice_(advice) {}

  // Null when the field is missing.
  const mxArray* field(const char* key) const;

  // Errors when the field is missing; `alternative` is the field that could have taken its place.
  const mxArray* required(const char* key, const char* alternative = nullptr) const;

  // A field that holds no number is as good as missing.
  double scalar(const char* key, const char* alternative = nullptr) const;

  // The data of a field with `count` or more elements. Data that is not of type double is refused with the advice.
  const double* doubles(const mxArray* value, std::size_t count) const;

 private:
  [[noreturn]] void refuse(const char* key, const char* alternative) const;

  const mxArray* structure_;
  const char* advice_;
};

}  // namespace kesto
