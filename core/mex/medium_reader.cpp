#include "core/internal/host.h"
#include "core/medium.h"
#include "core/mex/mex_api.h"

namespace {

struct KeyedField {
  const char* key;
  double Medium::*field;
};
constexpr KeyedField keyed_fields[] = {
    {"soundspeed", &Medium::_soundspeed},
    {"density", &Medium::_rho_density},
    {"attenuationdBcmMHz", &Medium::_dBcmMHz},
    {"bloodperfusion", &Medium::_wb},
    {"specificheat", &Medium::_ct},
    {"specificheatofblood", &Medium::_cb},
    {"thermalconductivity", &Medium::_kappa},
    {"nonlinearityparameter", &Medium::_beta},
    {"powerlawexponent", &Medium::_b},
};

[[noreturn]] void refuse() {
  kesto::fail("Medium object is not structured correctly. Please see the documentation for the correct structure.");
}

}  // namespace

Medium::Medium(const mxArray** s) {
  for (const KeyedField& keyed : keyed_fields) {
    if (mxGetFieldNumber(*s, keyed.key) == -1) refuse();
  }
  // A host has no first element of an empty array and no number in a structure, and not every host says so.
  if (kesto::is_empty(*s)) refuse();
  for (const KeyedField& keyed : keyed_fields) {
    const mxArray* const value = mxGetField(*s, 0, keyed.key);
    if (value == nullptr || kesto::is_empty(value) || mxIsStruct(value)) refuse();
    this->*keyed.field = mxGetScalar(value);
  }
}
