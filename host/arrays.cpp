// The arrays of the embedded host: numeric of every class, logical, character, cell and structure.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "host/ledger.h"

struct mxArray_tag {
  mxClassID classid = mxUNKNOWN_CLASS;
  bool complex = false;
  std::vector<mwSize> dims;
  void* data = nullptr;            // numeric, logical and character elements
  std::size_t bytes = 0;           // of data, and of all that it owns
  std::vector<std::string> names;  // fields of a structure
  std::vector<mxArray*> children;  // cells, or the fields of element 0, then of element 1, ...; owned

  size_t elements() const {
    size_t n = 1;
    for (const mwSize d : dims) n *= d;
    return n;
  }
};

namespace {

using kesto::host::ledger;

size_t element_size(mxClassID classid) {
  switch (classid) {
    case mxDOUBLE_CLASS:
    case mxINT64_CLASS:
    case mxUINT64_CLASS: return 8;
    case mxSINGLE_CLASS:
    case mxINT32_CLASS:
    case mxUINT32_CLASS: return 4;
    case mxCHAR_CLASS:
    case mxINT16_CLASS:
    case mxUINT16_CLASS: return 2;
    case mxLOGICAL_CLASS:
    case mxINT8_CLASS:
    case mxUINT8_CLASS: return 1;
    default: return 0;
  }
}

// Of counts and sizes; one that no memory could hold ends the call.
size_t product(const std::vector<size_t>& factors) {
  size_t result = 1;
  for (const size_t factor : factors) {
    if (__builtin_mul_overflow(result, factor, &result) || result > SIZE_MAX / 16) mexErrMsgTxt("Out of memory.");
  }
  return result;
}

void set_dimensions(mxArray& array, const mwSize* dims, mwSize ndim) {
  array.dims.assign(dims, dims + ndim);
  while (array.dims.size() < 2) array.dims.push_back(1);
  while (array.dims.size() > 2 && array.dims.back() == 1) array.dims.pop_back();
}

mxArray* new_array(mxClassID classid, const mwSize* dims, mwSize ndim) {
  auto* const array = new mxArray;
  array->classid = classid;
  set_dimensions(*array, dims, ndim);
  ledger().arrays.insert(array);
  return array;
}

template <class T>
double first(const void* data) {
  return static_cast<double>(*static_cast<const T*>(data));
}

kesto::host::Ledger* holder(mxArray* array) {
  kesto::host::Ledger* books = &ledger();
  while (books != nullptr && books->arrays.count(array) == 0) books = books->outer;
  return books;
}

// Takes an array out of its books: it dies, or a structure owns it now.
void strike_out(mxArray* array) {
  if (kesto::host::Ledger* const books = holder(array)) {
    books->arrays.erase(array);
    books->bytes -= array->bytes;
  }
}

}  // namespace

extern "C" {

mxArray* mxCreateNumericArray(mwSize ndim, const mwSize* dims, mxClassID classid, mxComplexity complexity) {
  std::vector<size_t> factors(dims, dims + ndim);
  factors.push_back(element_size(classid) * (complexity == mxCOMPLEX ? 2 : 1));
  const size_t bytes = product(factors);
  void* const data = std::calloc(bytes != 0 ? bytes : 1, 1);
  if (data == nullptr) mexErrMsgTxt("Out of memory.");
  mxArray* const array = new_array(classid, dims, ndim);
  array->complex = complexity == mxCOMPLEX;
  array->data = data;
  array->bytes = bytes;
  ledger().add_bytes(bytes);
  return array;
}

mxArray* mxCreateDoubleScalar(double value) {
  const mwSize dims[] = {1, 1};
  mxArray* const array = mxCreateNumericArray(2, dims, mxDOUBLE_CLASS, mxREAL);
  *static_cast<double*>(array->data) = value;
  return array;
}

mxArray* mxCreateString(const char* text) {
  const mwSize dims[] = {text[0] != '\0' ? size_t{1} : size_t{0}, std::strlen(text)};
  mxArray* const array = mxCreateNumericArray(2, dims, mxCHAR_CLASS, mxREAL);
  std::copy(text, text + dims[1], static_cast<mxChar*>(array->data));
  return array;
}

mxArray* mxCreateStructMatrix(mwSize m, mwSize n, int nfields, const char** names) {
  const mwSize dims[] = {m, n};
  const std::vector<std::string> fields(names, names + nfields);
  std::vector<mxArray*> children(product({m, n, fields.size()}), nullptr);
  mxArray* const array = new_array(mxSTRUCT_CLASS, dims, 2);
  array->names = fields;
  array->children = children;
  return array;
}

mxArray* mxCreateCellMatrix(mwSize m, mwSize n) {
  const mwSize dims[] = {m, n};
  std::vector<mxArray*> children(product({m, n}), nullptr);
  mxArray* const array = new_array(mxCELL_CLASS, dims, 2);
  array->children = children;
  return array;
}

void mxDestroyArray(mxArray* array) {
  if (array == nullptr) return;
  strike_out(array);
  for (mxArray* const child : array->children) mxDestroyArray(child);
  std::free(array->data);
  delete array;
}

mxClassID mxGetClassID(const mxArray* array) { return array->classid; }
bool mxIsNumeric(const mxArray* array) { return array->classid >= mxDOUBLE_CLASS && array->classid <= mxUINT64_CLASS; }
bool mxIsComplex(const mxArray* array) { return array->complex; }
bool mxIsStruct(const mxArray* array) { return array->classid == mxSTRUCT_CLASS; }

mwSize mxGetNumberOfDimensions(const mxArray* array) { return array->dims.size(); }
const mwSize* mxGetDimensions(const mxArray* array) { return array->dims.data(); }
size_t mxGetNumberOfElements(const mxArray* array) { return array->elements(); }
size_t mxGetM(const mxArray* array) { return array->dims[0]; }
size_t mxGetN(const mxArray* array) {
  size_t n = 1;
  for (size_t d = 1; d < array->dims.size(); ++d) n *= array->dims[d];
  return n;
}
int mxSetDimensions(mxArray* array, const mwSize* dims, mwSize ndim) {
  set_dimensions(*array, dims, ndim);
  return 0;
}

double* mxGetPr(const mxArray* array) {
  return array->classid == mxDOUBLE_CLASS && !array->complex ? static_cast<double*>(array->data) : nullptr;
}
mxComplexDouble* mxGetComplexDoubles(const mxArray* array) {
  return array->classid == mxDOUBLE_CLASS && array->complex ? static_cast<mxComplexDouble*>(array->data) : nullptr;
}
void* mxGetData(const mxArray* array) { return array->data; }

double mxGetScalar(const mxArray* array) {
  if (array == nullptr || array->elements() == 0 || array->data == nullptr) {
    mexErrMsgTxt("mxGetScalar: the array holds no number.");
  }
  switch (array->classid) {
    case mxSINGLE_CLASS: return first<float>(array->data);
    case mxINT8_CLASS: return first<int8_t>(array->data);
    case mxUINT8_CLASS: return first<uint8_t>(array->data);
    case mxINT16_CLASS: return first<int16_t>(array->data);
    case mxUINT16_CLASS: return first<uint16_t>(array->data);
    case mxINT32_CLASS: return first<int32_t>(array->data);
    case mxUINT32_CLASS: return first<uint32_t>(array->data);
    case mxINT64_CLASS: return first<int64_t>(array->data);
    case mxUINT64_CLASS: return first<uint64_t>(array->data);
    case mxLOGICAL_CLASS: return first<mxLogical>(array->data);
    case mxCHAR_CLASS: return first<mxChar>(array->data);
    default: return first<double>(array->data);
  }
}

int mxGetFieldNumber(const mxArray* array, const char* name) {
  const auto found = std::find(array->names.begin(), array->names.end(), name);
  return found == array->names.end() ? -1 : static_cast<int>(found - array->names.begin());
}

mxArray* mxGetField(const mxArray* array, mwIndex index, const char* name) {
  const int field = mxGetFieldNumber(array, name);
  if (field < 0 || index >= array->elements()) return nullptr;
  return array->children[index * array->names.size() + static_cast<size_t>(field)];
}

void mxSetField(mxArray* array, mwIndex index, const char* name, mxArray* value) {
  const int field = mxGetFieldNumber(array, name);
  if (field < 0 || index >= array->elements()) mexErrMsgTxt("mxSetField: no such field or element.");
  mxArray*& slot = array->children[index * array->names.size() + static_cast<size_t>(field)];
  if (slot == value) return;
  kesto::host::Ledger* const books = holder(array);
  const size_t old_bytes = slot != nullptr ? slot->bytes : 0;
  mxDestroyArray(slot);
  slot = value;
  const size_t new_bytes = value != nullptr ? value->bytes : 0;
  strike_out(value);
  array->bytes += new_bytes - old_bytes;
  if (books != nullptr) books->add_bytes(new_bytes - old_bytes);
}

}  // extern "C"
