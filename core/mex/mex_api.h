// The one place where the host's interface enters: MATLAB's, Octave's or the embedded host's mex.h, unchanged.
//
// The modules use no host function beyond mexErrMsgTxt, mexWarnMsgTxt, mexPrintf, mxGetNumberOfDimensions,
// mxGetDimensions, mxGetComplexDoubles, mxGetPr, mxGetM, mxGetN, mxCreateNumericArray, mxIsStruct, mxIsNumeric,
// mxGetScalar, mxGetFieldNumber, mxGetField, mxMalloc, mxCalloc, mxRealloc and mxFree; a test reads the built module
// and holds it to that list.
#pragma once

#include "mex.h"

namespace kesto {

inline bool is_empty(const mxArray* array) { return mxGetM(array) == 0 || mxGetN(array) == 0; }

}  // namespace kesto
