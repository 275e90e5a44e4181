#include "core/medium.h"

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

void Medium::mexDebug() const {
  mexPrintf("f0 (_f0): %f\n", _f0);
  mexPrintf("fs (_fs): %f\n", _fs);
  mexPrintf("soundspeed (_soundspeed): %f\n", _soundspeed);
  mexPrintf("attenuation (_dBcmMHz): %f\n", _dBcmMHz);
  mexPrintf("power law coefficient (_powerlawcoeff): %f\n", _powerlawcoeff);
  mexPrintf("density (_rho_density): %f\n", _rho_density);
  mexPrintf("specific heat(_ct): %f\n", _ct);
  mexPrintf("blood perfusion (_wb): %f\n", _wb);
  mexPrintf("power law exponent (_b): %f\n", _b);
  mexPrintf("thermal conductivity (_kappa): %f\n", _kappa);
  mexPrintf("nonlinearity param (_beta): %f\n", _beta);
}
