#include "core/mex/structure_reader.h"

#include "core/internal/host.h"

namespace kesto {

// A host has no first element of an empty array, and not every host says so.
const mxArray* StructureReader::field(const char* key) const {
  return is_empty(structure_) ? nullptr : mxGetField(structure_, 0, key);
}

const mxArray* StructureReader::required(const char* key, const char* alternative) const {
  const mxArray* const value = field(key);
  if (value == nullptr) refuse(key, alternative);
  return value;
}

double StructureReader::scalar(const char* key, const char* alternative) const {
  const mxArray* const value = required(key, alternative);
  if (is_empty(value) || mxIsStruct(value)) refuse(key, alternative);
  return mxGetScalar(value);
}

const double* StructureReader::doubles(const mxArray* value, std::size_t count) const {
  if (count == 0) return nullptr;
  const double* const data = mxGetPr(value);
  if (data == nullptr || mxGetM(value) * mxGetN(value) < count) fail(advice_);
  return data;
}

void StructureReader::refuse(const char* key, const char* alternative) const {
  if (alternative != nullptr) {
    print("Expecting '%s' or '%s', but neither of these fields are defined\n", alternative, key);
  } else {
    print("Expecting '%s', but this field is not defined\n", key);
  }
  fail(advice_);
}

}  // namespace kesto
