// Host arrays made from bytes, with what their maker knows of them: what a reader has to make of one follows from that,
// not from the interface that the reader asks.
#pragma once

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "fuzz/bytes.h"
#include "host/embedded_host.h"

namespace fuzz {

using kesto::host::Array;

struct Value {
  enum class Kind { number, logical, text, cell, structure };

  Array array;
  Kind kind = Kind::number;
  mxClassID classid = mxDOUBLE_CLASS;  // of a number
  bool complex = false;
  std::vector<mwSize> dims;
  double first = 0;  // of an array that is not empty, as a double
  // Of a structure: every field by name, in its first element.
  std::vector<std::pair<std::string, std::optional<Value>>> fields;

  bool empty() const { return std::find(dims.begin(), dims.end(), mwSize{0}) != dims.end(); }
  bool is_struct() const { return kind == Kind::structure; }
  bool has_number() const { return !empty() && kind != Kind::cell && kind != Kind::structure; }
  bool is_nonempty_number() const { return !empty() && kind == Kind::number; }
  bool is_real_double() const { return kind == Kind::number && classid == mxDOUBLE_CLASS && !complex; }
  bool is_complex_double() const { return kind == Kind::number && classid == mxDOUBLE_CLASS && complex; }

  // Null when there is no such field, or no first element, or nothing was ever set.
  const Value* field(const char* key) const {
    if (!is_struct() || empty()) return nullptr;
    for (const auto& [name, value] : fields) {
      if (name == key) return value ? &*value : nullptr;
    }
    return nullptr;
  }
  bool has_field_name(const char* key) const {
    return std::any_of(fields.begin(), fields.end(), [&](const auto& field) { return field.first == key; });
  }
};

// What the interface itself keeps of dimensions.
inline std::vector<mwSize> normalised(std::vector<mwSize> dims) {
  while (dims.size() < 2) dims.push_back(1);
  while (dims.size() > 2 && dims.back() == 1) dims.pop_back();
  return dims;
}

template <class T>
double put_first(mxArray* array, double number) {
  T value;
  if constexpr (std::numeric_limits<T>::is_integer) {
    const double low = static_cast<double>(std::numeric_limits<T>::lowest());
    const double high = static_cast<double>(std::numeric_limits<T>::max());
    value = std::isnan(number) ? T{}
            : number <= low    ? std::numeric_limits<T>::lowest()
            : number >= high   ? std::numeric_limits<T>::max()
                               : static_cast<T>(number);
  } else {  // what a float cannot hold is infinite
    value = std::fabs(number) > static_cast<double>(std::numeric_limits<T>::max())
                ? static_cast<T>(std::copysign(std::numeric_limits<double>::infinity(), number))
                : static_cast<T>(number);
  }
  std::memcpy(mxGetData(array), &value, sizeof value);
  return static_cast<double>(value);
}

inline double put_first(mxArray* array, mxClassID classid, double number) {
  switch (classid) {
    case mxSINGLE_CLASS: return put_first<float>(array, number);
    case mxINT8_CLASS: return put_first<std::int8_t>(array, number);
    case mxUINT8_CLASS: return put_first<std::uint8_t>(array, number);
    case mxINT16_CLASS: return put_first<std::int16_t>(array, number);
    case mxUINT16_CLASS: return put_first<std::uint16_t>(array, number);
    case mxINT32_CLASS: return put_first<std::int32_t>(array, number);
    case mxUINT32_CLASS: return put_first<std::uint32_t>(array, number);
    case mxINT64_CLASS: return put_first<std::int64_t>(array, number);
    case mxUINT64_CLASS: return put_first<std::uint64_t>(array, number);
    case mxLOGICAL_CLASS: return put_first<mxLogical>(array, number);
    case mxCHAR_CLASS: return put_first<std::uint16_t>(array, number);
    default: return put_first<double>(array, number);
  }
}

// Numbers, logicals and text. The other elements than the first stay 0.
inline Value array_of(mxClassID classid, bool complex, const std::vector<mwSize>& dims, double first = 0) {
  Value value;
  value.array.reset(mxCreateNumericArray(dims.size(), dims.data(), classid, complex ? mxCOMPLEX : mxREAL));
  value.kind = classid == mxLOGICAL_CLASS ? Value::Kind::logical
               : classid == mxCHAR_CLASS  ? Value::Kind::text
                                          : Value::Kind::number;
  value.classid = classid;
  value.complex = complex;
  value.dims = normalised(dims);
  if (!value.empty()) value.first = put_first(value.array.get(), classid, first);
  return value;
}

inline Value scalar(double number) { return array_of(mxDOUBLE_CLASS, false, {1, 1}, number); }

inline Value cell(mwSize m, mwSize n) {
  Value value;
  value.kind = Value::Kind::cell;
  value.dims = {m, n};
  value.array.reset(mxCreateCellMatrix(m, n));
  return value;
}

// The array takes the fields' arrays; a field without a value is never set. Fields are those of the first element.
inline Value structure(mwSize m, mwSize n, std::vector<std::pair<std::string, std::optional<Value>>> fields) {
  Value value;
  value.kind = Value::Kind::structure;
  value.dims = {m, n};
  std::vector<const char*> names;
  for (const auto& field : fields) names.push_back(field.first.c_str());
  value.array.reset(mxCreateStructMatrix(m, n, static_cast<int>(names.size()), names.data()));
  for (auto& [name, field] : fields) {
    if (field && !value.empty()) mxSetField(value.array.get(), 0, name.c_str(), field->array.release());
  }
  value.fields = std::move(fields);
  return value;
}

inline mxClassID any_class(Bytes& bytes) {
  static constexpr mxClassID classes[] = {mxDOUBLE_CLASS, mxSINGLE_CLASS, mxINT8_CLASS,    mxUINT8_CLASS,
                                          mxINT16_CLASS,  mxUINT16_CLASS, mxINT32_CLASS,   mxUINT32_CLASS,
                                          mxINT64_CLASS,  mxUINT64_CLASS, mxLOGICAL_CLASS, mxCHAR_CLASS};
  return classes[bytes.below(sizeof classes / sizeof classes[0])];
}

// Two to four of them, small; of an array without elements any size, for these cost nothing.
inline std::vector<mwSize> any_dims(Bytes& bytes) {
  static constexpr mwSize beyond[] = {0x7fffffff, 0x80000000, 0x100000000, 0x100000003, mwSize{1} << 40};
  std::vector<mwSize> dims(2 + static_cast<std::size_t>(bytes.below(3)));
  const bool empty = bytes.one_in(4);
  for (mwSize& d : dims) {
    d = static_cast<mwSize>(bytes.below(5));
    if (empty && bytes.one_in(2)) d = beyond[bytes.below(5)];
  }
  if (empty) dims[0] = 0;
  if (empty && bytes.one_in(2)) std::swap(dims[0], dims[1]);
  return dims;
}

// Mostly a plain number.
inline Value any_value(Bytes& bytes, double usual) {
  const int choice = bytes.below(16);
  if (choice < 10) return scalar(bytes.number(usual));
  switch (choice) {
    case 10: return array_of(any_class(bytes), false, {1, 1}, bytes.number(usual));
    case 11: {
      const mxClassID classid = any_class(bytes);
      const bool complex = classid < mxDOUBLE_CLASS ? false : bytes.one_in(2);
      return array_of(classid, complex, any_dims(bytes), bytes.number(usual));
    }
    case 12: return array_of(mxDOUBLE_CLASS, false, {0, 0});
    case 13: return cell(static_cast<mwSize>(bytes.below(2)), 1);
    case 14: return structure(static_cast<mwSize>(bytes.below(3)), 1, {});
    default: return array_of(mxCHAR_CLASS, false, {1, static_cast<mwSize>(bytes.below(3))}, bytes.number(usual));
  }
}

struct NamedNumber {
  const char* name;
  double usual;
};

// A structure with these fields, most of them as they should be.
template <std::size_t count>
Value any_structure(Bytes& bytes, const NamedNumber (&wanted)[count]) {
  std::vector<std::pair<std::string, std::optional<Value>>> fields;
  const bool sound = !bytes.one_in(3);
  for (const NamedNumber& field : wanted) {
    const int choice = sound ? 0 : bytes.below(12);
    if (choice == 11) continue;
    std::string name = field.name;
    if (choice == 10) name += 'x';
    if (choice == 9) {
      fields.emplace_back(name, std::nullopt);
    } else {
      fields.emplace_back(name, sound ? scalar(bytes.number(field.usual)) : any_value(bytes, field.usual));
    }
  }
  static constexpr mwSize sizes[][2] = {{1, 1}, {1, 1}, {1, 1}, {1, 1}, {1, 2}, {2, 1}, {0, 0}, {0, 1}};
  const auto& size = sizes[bytes.below(8)];
  return structure(size[0], size[1], std::move(fields));
}

constexpr NamedNumber medium_fields[] = {
    {"soundspeed", 1500},       {"density", 1000},
    {"attenuationdBcmMHz", 5},  {"bloodperfusion", 5},
    {"specificheat", 3600},     {"specificheatofblood", 3700},
    {"thermalconductivity", 1}, {"nonlinearityparameter", 3},
    {"powerlawexponent", 1},
};
constexpr char medium_refused[] =
    "Medium object is not structured correctly. Please see the documentation for the correct structure.";
constexpr char host_refused[] = "mxGetScalar: the array holds no number.";  // of a cell array

// The text of the error that reading this medium has to end in; empty for none.
inline std::string expected_of_medium(const Value& medium) {
  for (const NamedNumber& field : medium_fields) {
    if (!medium.has_field_name(field.name)) return medium_refused;
  }
  for (const NamedNumber& field : medium_fields) {
    const Value* const value = medium.field(field.name);
    if (value == nullptr || value->empty() || value->is_struct()) return medium_refused;
    if (!value->has_number()) return host_refused;
  }
  return "";
}

}  // namespace fuzz
