// T = steady_bioheat(P, MEDIUM, DX, DY, DZ, SWEEPS): the module's one function. See matlab/steady_bioheat.m.
#include <climits>
#include <cstdio>
#include <initializer_list>

#include "core/internal/host.h"
#include "core/internal/huge_pages.h"
#include "core/internal/to_int32.h"
#include "core/medium.h"
#include "core/mex/mex_api.h"
#include "heat/bioheat_solver.h"
#include "mex/common/exported.h"

namespace {

using kesto::fail;
using kesto::is_empty;
using kesto::to_int32;

enum Input { pressure, medium_structure, spacing_x, spacing_y, spacing_z, sweeps, input_count };

// Two real arrays, released by the host after the call.
struct SplitPressure {
  const mwSize* dims;
  std::size_t count;
  const double* real;
  const double* imag;
};

// Indices are 32-bit, in this module and in the callers' code.
std::size_t element_count(const mwSize* dims) {
  if (dims[0] == 0 || dims[1] == 0 || dims[2] == 0) return 0;
  std::size_t count = 1;
  for (int d = 0; d < 3; ++d) {
    if (dims[d] > INT_MAX / count) fail("Input pressure must have fewer than 2^31 elements.\n");
    count *= dims[d];
  }
  return count;
}

SplitPressure split_pressure(const mxArray* input) {
  SplitPressure split;
  split.dims = mxGetDimensions(input);
  split.count = element_count(split.dims);
  const mxComplexDouble* interleaved = nullptr;
  if (split.count != 0) {
    interleaved = mxGetComplexDoubles(input);
    if (interleaved == nullptr) fail("Input pressure must be a complex double array.\n");
  }
  double* const real = mxGetPr(mxCreateNumericArray(3, split.dims, mxDOUBLE_CLASS, mxREAL));
  double* const imag = mxGetPr(mxCreateNumericArray(3, split.dims, mxDOUBLE_CLASS, mxREAL));
  for (double* const half : {real, imag}) kesto::ask_for_huge_pages(half, split.count * sizeof(double));
  for (std::size_t n = 0; n < split.count; ++n) {
    real[n] = interleaved[n].real;
    imag[n] = interleaved[n].imag;
  }
  split.real = real;
  split.imag = imag;
  return split;
}

void require_number(const mxArray* input, const char* message) {
  if (!mxIsNumeric(input) || is_empty(input)) fail(message);
}

void require_spacing(const mxArray* input, const char* not_numeric, const char* not_positive) {
  require_number(input, not_numeric);
  if (0.0 >= mxGetScalar(input)) fail(not_positive);  // NaN passes
}

// KEPT: the question of dz is asked of the count; the value of dz is never tested.
void require_spacing_z_and_sweeps(const mxArray* dz, const mxArray* count) {
  require_number(dz, "dz must be numeric.\n");
  // An empty array or a structure has no scalar to give, and not every host says so: left to the numeric test below.
  const bool has_scalar = !is_empty(count) && !mxIsStruct(count);
  if (has_scalar && to_int32(mxGetScalar(count)) <= 0) fail("dz must be positive and non-zero.\n");
  require_number(count, "Number of iterations must be numeric.\n");
  if (to_int32(mxGetScalar(count)) <= 0) fail("Number of iterations must be positive and non-zero.\n");
}

void warn_of_ignored_vector_target() {
  const char* ignored = nullptr;
  const char* const used = kesto::name_of(kesto::chosen_vector_target(&ignored));
  if (ignored == nullptr) return;
  char text[200];
  std::snprintf(text, sizeof text, "KESTO_VECTOR_TARGET: \"%.60s\" is not available on this machine; using %s.",
                ignored, used);
  mexWarnMsgTxt(text);
}

}  // namespace

KESTO_EXPORTED void mexFunction(int nlhs, mxArray* plhs[], int nrhs, const mxArray* prhs[]) {
  Medium medium;
  if (nlhs != 1) fail("This function requires exactly one output parameter.\n");
  if (nrhs != input_count) {
    fail("This function requires exactly 6 arguments. See the documentation for details.\n");
  }
  if (mxGetNumberOfDimensions(prhs[pressure]) != 3) {
    // KEPT: the medium's dimensions, not the pressure's.
    mexPrintf("%i\n", static_cast<int>(mxGetNumberOfDimensions(prhs[medium_structure])));
    fail("Input pressure must have three dimensions.");
  }
  const SplitPressure split = split_pressure(prhs[pressure]);

  if (!mxIsStruct(prhs[medium_structure])) fail("Medium must be a MATLAB structure.\n");
  medium = Medium(&prhs[medium_structure]);

  require_spacing(prhs[spacing_x], "dx must be numeric.\n", "dx must be positive and non-zero.\n");
  require_spacing(prhs[spacing_y], "dy must be numeric.\n", "dy must be positive and non-zero.\n");
  require_spacing_z_and_sweeps(prhs[spacing_z], prhs[sweeps]);

  kesto::BioheatProblem problem;
  problem.n0 = static_cast<int>(split.dims[0]);
  problem.n1 = static_cast<int>(split.dims[1]);
  problem.n2 = static_cast<int>(split.dims[2]);
  problem.dx = mxGetScalar(prhs[spacing_x]);
  problem.dy = mxGetScalar(prhs[spacing_y]);
  problem.dz = mxGetScalar(prhs[spacing_z]);
  problem.absorption = medium._dBcmMHz;  // KEPT: as it stands, no unit, no frequency
  problem.impedance = medium._rho_density * medium._soundspeed;
  problem.perfusion = medium._wb;
  problem.specific_heat_of_blood = medium._cb;
  problem.conductivity = medium._kappa;
  problem.sweeps = to_int32(mxGetScalar(prhs[sweeps]));

  plhs[0] = mxCreateNumericArray(3, split.dims, mxDOUBLE_CLASS, mxREAL);
  warn_of_ignored_vector_target();
  const kesto::ScratchArray<double> heat_source(split.count);
  kesto::solve_steady_bioheat(problem, split.real, split.imag, heat_source.data(), mxGetPr(plhs[0]));
}
