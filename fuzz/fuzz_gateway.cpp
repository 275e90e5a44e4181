// Calls of the gateway made from bytes. Each has to end in the text that the arguments call for, or in the temperature
// of the plain loops to the bit; none may leave anything behind, nor harm the calls after it.
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "core/internal/to_int32.h"
#include "core/vector_target.h"
#include "fuzz/bytes.h"
#include "fuzz/values.h"
#include "host/ledger.h"
#include "tests/plain_bioheat.h"

namespace {

using fuzz::Bytes;
using fuzz::require;
using fuzz::Value;
using kesto::host::Array;
using kesto::host::Report;

// The host's side of a call, with the gateway in the same program. As Module::call, all that it leaves is released.
Report call(int nlhs, const std::vector<const mxArray*>& inputs, Array& output) {
  std::vector<mxArray*> lhs(nlhs > 1 ? static_cast<std::size_t>(nlhs) : 1, nullptr);
  std::vector<const mxArray*> rhs = inputs;
  kesto::host::OpenLedger books;
  books.run([&] { mexFunction(nlhs, lhs.data(), static_cast<int>(rhs.size()), rhs.data()); });
  books->release_blocks();
  if (books->report.failed) lhs.assign(1, nullptr);
  books->release_arrays_except(lhs);
  output.reset(lhs[0]);
  return books->report;
}

struct Call {
  int nlhs = 1;
  std::vector<Value> arguments;
  std::vector<const mxArray*> views() const {
    std::vector<const mxArray*> arrays;
    for (const Value& argument : arguments) arrays.push_back(argument.array.get());
    return arrays;
  }
};

struct Expected {
  std::string error, console;
};

std::string expected_of_spacing(const Value& spacing, const std::string& name) {
  if (!spacing.is_nonempty_number()) return name + " must be numeric.\n";
  return 0.0 >= spacing.first ? name + " must be positive and non-zero.\n" : "";
}

// What the gateway's documentation and its callers say of these arguments.
Expected expected_of(const Call& call) {
  if (call.nlhs != 1) return {"This function requires exactly one output parameter.\n", ""};
  const std::vector<Value>& a = call.arguments;
  if (a.size() != 6) return {"This function requires exactly 6 arguments. See the documentation for details.\n", ""};
  if (a[0].dims.size() != 3) {
    return {"Input pressure must have three dimensions.", std::to_string(a[1].dims.size()) + "\n"};
  }
  if (!a[0].empty()) {
    double count = 1;
    for (const mwSize d : a[0].dims) count *= static_cast<double>(d);
    if (count > INT_MAX) return {"Input pressure must have fewer than 2^31 elements.\n", ""};
    if (!a[0].is_complex_double()) return {"Input pressure must be a complex double array.\n", ""};
  }
  if (!a[1].is_struct()) return {"Medium must be a MATLAB structure.\n", ""};
  std::string error = fuzz::expected_of_medium(a[1]);
  if (error.empty()) error = expected_of_spacing(a[2], "dx");
  if (error.empty()) error = expected_of_spacing(a[3], "dy");
  if (!error.empty()) return {error, ""};
  if (!a[4].is_nonempty_number()) return {"dz must be numeric.\n", ""};
  const Value& sweeps = a[5];
  if (!sweeps.empty() && !sweeps.is_struct()) {
    if (!sweeps.has_number()) return {fuzz::host_refused, ""};
    if (kesto::to_int32(sweeps.first) <= 0) return {"dz must be positive and non-zero.\n", ""};
  }
  if (!sweeps.is_nonempty_number()) return {"Number of iterations must be numeric.\n", ""};
  return {};
}

void require_plain_temperature(const Call& call, const mxArray* output) {
  const std::vector<Value>& a = call.arguments;
  const std::vector<mwSize>& dims = a[0].dims;
  require(output != nullptr && mxGetClassID(output) == mxDOUBLE_CLASS && !mxIsComplex(output), "class of the output");
  const mwSize* const got = mxGetDimensions(output);
  require(std::vector<mwSize>(got, got + mxGetNumberOfDimensions(output)) == dims, "dimensions of the output");
  if (a[0].empty()) return;
  const std::size_t count = mxGetNumberOfElements(output);
  const auto of_medium = [&](const char* key) { return a[1].field(key)->first; };
  const kesto::BioheatProblem problem{static_cast<int>(dims[0]),
                                      static_cast<int>(dims[1]),
                                      static_cast<int>(dims[2]),
                                      a[2].first,
                                      a[3].first,
                                      a[4].first,
                                      of_medium("attenuationdBcmMHz"),
                                      of_medium("density") * of_medium("soundspeed"),
                                      of_medium("bloodperfusion"),
                                      of_medium("specificheatofblood"),
                                      of_medium("thermalconductivity"),
                                      kesto::to_int32(a[5].first)};
  std::vector<double> real(count), imag(count), heat(count), temperature(count);
  const mxComplexDouble* const pressure = mxGetComplexDoubles(a[0].array.get());
  for (std::size_t n = 0; n < count; ++n) real[n] = pressure[n].real, imag[n] = pressure[n].imag;
  plain_bioheat(problem, real.data(), imag.data(), heat.data(), temperature.data());
  require(same_bits(mxGetPr(output), temperature), "the temperature is not that of the plain loops");
}

void make(const Call& call, std::size_t warnings) {
  const Expected expected = expected_of(call);
  Array output;
  const Report report = ::call(call.nlhs, call.views(), output);
  require(report.error == expected.error, "error", report.error + "instead of: " + expected.error);
  require(report.failed == !expected.error.empty(), "failed");
  require(report.console == expected.console, "console", report.console);
  require(report.live_blocks == 0 && report.bad_frees == 0, "blocks left behind");
  require(report.warnings.size() == (report.failed ? 0 : warnings), "warnings");
  require(report.failed == (output == nullptr), "an output and an error");
  if (!report.failed) require_plain_temperature(call, output.get());
}

// Three small dimensions, one of which may be long enough for every width; or no elements, with dimensions of any size;
// or more elements than the gateway takes, which it must refuse before it looks at one of them.
Value pressure(Bytes& bytes) {
  const int choice = bytes.below(32);
  if (choice >= 28) {
    Value value = fuzz::array_of(mxDOUBLE_CLASS, bytes.one_in(2), fuzz::any_dims(bytes), bytes.number(1e5));
    if (choice != 31) return value;
    static constexpr mwSize huge[][3] = {
        {1291, 1291, 1291}, {0x80000000, 1, 2}, {1, 0x7fffffff, 2}, {0x100000000, 0x100000000, 2}};
    const auto& dims = huge[bytes.below(4)];
    mxSetDimensions(value.array.get(), dims, 3);
    value.dims = {dims[0], dims[1], dims[2]};
    return value;
  }
  if (choice == 27) return fuzz::any_value(bytes, 1e5);
  std::vector<mwSize> dims(3);
  for (mwSize& d : dims) d = static_cast<mwSize>(bytes.below(8));
  if (bytes.one_in(3)) dims[static_cast<std::size_t>(bytes.below(3))] = static_cast<mwSize>(bytes.below(40));
  Value value = fuzz::array_of(mxDOUBLE_CLASS, true, dims);
  double* const data = static_cast<double*>(mxGetData(value.array.get()));
  const std::size_t count = value.empty() ? 0 : 2 * mxGetNumberOfElements(value.array.get());
  const double a = bytes.between(-1e6, 1e6), b = bytes.between(-1e3, 1e3);
  for (std::size_t n = 0; n < count; ++n) data[n] = a + b * static_cast<double>(n % 97);
  for (int specials = bytes.below(4); specials > 0 && count != 0; --specials) {
    const std::size_t at = (bytes.next() * 256u + bytes.next()) % count;
    data[at] = bytes.number(1e5);
  }
  return value;
}

// Few: a grid with an interior is swept so often.
Value sweeps(Bytes& bytes, const Value& pressure) {
  Value value = fuzz::any_value(bytes, 4);
  if (!pressure.empty() && value.has_number() && kesto::to_int32(value.first) > 40) return fuzz::scalar(17);
  return value;
}

Call arbitrary(Bytes& bytes) {
  Call call;
  if (bytes.one_in(32)) call.nlhs = bytes.below(4) - 1;
  const int count = bytes.one_in(32) ? bytes.below(9) : 6;
  for (int n = 0; n < count; ++n) {
    if (n == 0) {
      call.arguments.push_back(pressure(bytes));
    } else if (n == 1) {
      call.arguments.push_back(bytes.one_in(16) ? fuzz::any_value(bytes, 5)
                                                : fuzz::any_structure(bytes, fuzz::medium_fields));
    } else if (n == 5) {
      call.arguments.push_back(sweeps(bytes, call.arguments[0]));
    } else {
      call.arguments.push_back(fuzz::any_value(bytes, 1e-3));
    }
  }
  return call;
}

// Zero bytes make the awkward numbers, so the good call is made by hand.
Call good() {
  std::vector<std::pair<std::string, std::optional<Value>>> fields;
  for (const fuzz::NamedNumber& field : fuzz::medium_fields) fields.emplace_back(field.name, fuzz::scalar(field.usual));
  Call call;
  call.arguments.push_back(fuzz::array_of(mxDOUBLE_CLASS, true, {9, 7, 6}));
  double* const data = static_cast<double*>(mxGetData(call.arguments[0].array.get()));
  for (int n = 0; n < 2 * 9 * 7 * 6; ++n) data[n] = 1e5 + n;
  call.arguments.push_back(fuzz::structure(1, 1, std::move(fields)));
  for (const double number : {1e-3, 2e-3, 3e-3, 9.0}) call.arguments.push_back(fuzz::scalar(number));
  return call;
}

// Of the environment: a target, none, or a name that must be ignored with a warning.
std::size_t choose_target(Bytes& bytes) {
  static const std::string longest(200, 'x');
  const char* const names[] = {"baseline", "avx2", "avx512", "", "sse9", longest.c_str()};
  const char* const name = names[bytes.below(6)];
  setenv("KESTO_VECTOR_TARGET", name, 1);
  for (const kesto::VectorTarget target : kesto::all_vector_targets) {
    if (std::strcmp(name, kesto::name_of(target)) == 0) return kesto::is_available(target) ? 0 : 1;
  }
  return *name == '\0' ? 0 : 1;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Call after = good();
  static unsigned calls = 0;
  Bytes bytes(data, size);
  const std::size_t warnings = choose_target(bytes);
  make(arbitrary(bytes), warnings);
  if (++calls % 16 == 0) make(after, warnings);
  return 0;
}
