// The embedded host's MEX and matrix interface: version 800, complex data interleaved.
//
// Only what the module, the field core and their callers in this repository use. Semantics are those that MATLAB
// and GNU Octave share; where the two differ the comment says which one this host follows. As in MATLAB, the
// functions carry the link-name suffix _800, so that a module built against this header is linked exactly as MATLAB
// would link it.
#ifndef KESTO_HOST_MEX_H
#define KESTO_HOST_MEX_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

typedef size_t mwSize;
typedef size_t mwIndex;
typedef bool mxLogical;
typedef char16_t mxChar;
typedef double mxDouble;
typedef struct mxComplexDouble {
  mxDouble real, imag;
} mxComplexDouble;
typedef struct mxArray_tag mxArray;

typedef enum { mxREAL, mxCOMPLEX } mxComplexity;

typedef enum {
  mxUNKNOWN_CLASS,
  mxCELL_CLASS,
  mxSTRUCT_CLASS,
  mxLOGICAL_CLASS,
  mxCHAR_CLASS,
  mxVOID_CLASS,
  mxDOUBLE_CLASS,
  mxSINGLE_CLASS,
  mxINT8_CLASS,
  mxUINT8_CLASS,
  mxINT16_CLASS,
  mxUINT16_CLASS,
  mxINT32_CLASS,
  mxUINT32_CLASS,
  mxINT64_CLASS,
  mxUINT64_CLASS,
  mxFUNCTION_CLASS
} mxClassID;

#define mexErrMsgTxt mexErrMsgTxt_800
#define mexPrintf mexPrintf_800
#define mexWarnMsgTxt mexWarnMsgTxt_800
#define mxCalloc mxCalloc_800
#define mxCreateCellMatrix mxCreateCellMatrix_800
#define mxCreateDoubleScalar mxCreateDoubleScalar_800
#define mxCreateNumericArray mxCreateNumericArray_800
#define mxCreateString mxCreateString_800
#define mxCreateStructMatrix mxCreateStructMatrix_800
#define mxDestroyArray mxDestroyArray_800
#define mxFree mxFree_800
#define mxGetClassID mxGetClassID_800
#define mxGetComplexDoubles mxGetComplexDoubles_800
#define mxGetData mxGetData_800
#define mxGetDimensions mxGetDimensions_800
#define mxGetField mxGetField_800
#define mxGetFieldNumber mxGetFieldNumber_800
#define mxGetM mxGetM_800
#define mxGetN mxGetN_800
#define mxGetNumberOfDimensions mxGetNumberOfDimensions_800
#define mxGetNumberOfElements mxGetNumberOfElements_800
#define mxGetPr mxGetPr_800
#define mxGetScalar mxGetScalar_800
#define mxIsComplex mxIsComplex_800
#define mxIsNumeric mxIsNumeric_800
#define mxIsStruct mxIsStruct_800
#define mxMalloc mxMalloc_800
#define mxRealloc mxRealloc_800
#define mxSetDimensions mxSetDimensions_800
#define mxSetField mxSetField_800

#ifdef __cplusplus
extern "C" {
#endif

// Messages. mexErrMsgTxt throws kesto::host::Error with the text verbatim; it does not return.
__attribute__((noreturn)) void mexErrMsgTxt(const char* text);
void mexWarnMsgTxt(const char* text);
int mexPrintf(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Memory. A request that cannot be met ends the call with "Out of memory."; a size of 0 gives a unique pointer.
void* mxMalloc(size_t bytes);
void* mxCalloc(size_t count, size_t size);
void* mxRealloc(void* block, size_t bytes);
void mxFree(void* block);

// Arrays. Trailing dimensions of 1 beyond the second are dropped, numeric elements start as 0, and a structure's
// unset field is null.
mxArray* mxCreateNumericArray(mwSize ndim, const mwSize* dims, mxClassID classid, mxComplexity complexity);
mxArray* mxCreateDoubleScalar(double value);
mxArray* mxCreateString(const char* text);
mxArray* mxCreateStructMatrix(mwSize m, mwSize n, int nfields, const char** names);
mxArray* mxCreateCellMatrix(mwSize m, mwSize n);
void mxDestroyArray(mxArray* array);

mxClassID mxGetClassID(const mxArray* array);
bool mxIsNumeric(const mxArray* array);  // double, single and the integers; not logical, not char
bool mxIsComplex(const mxArray* array);
bool mxIsStruct(const mxArray* array);

mwSize mxGetNumberOfDimensions(const mxArray* array);
const mwSize* mxGetDimensions(const mxArray* array);
size_t mxGetNumberOfElements(const mxArray* array);
size_t mxGetM(const mxArray* array);
size_t mxGetN(const mxArray* array);                                   // the product of all dimensions but the first
int mxSetDimensions(mxArray* array, const mwSize* dims, mwSize ndim);  // as in MATLAB, the data is not resized

double* mxGetPr(const mxArray* array);                       // null unless real double
mxComplexDouble* mxGetComplexDoubles(const mxArray* array);  // null unless complex double; Octave raises an error
void* mxGetData(const mxArray* array);
// First element as double (its real part). An array that holds no number (cell, structure, empty) ends the call
// with the host's own error, as in Octave; MATLAB leaves it undefined.
double mxGetScalar(const mxArray* array);

int mxGetFieldNumber(const mxArray* array, const char* name);  // -1 when there is none; case-sensitive
mxArray* mxGetField(const mxArray* array, mwIndex index, const char* name);
void mxSetField(mxArray* array, mwIndex index, const char* name, mxArray* value);  // takes ownership of value

// The module's own entry points.
void mexFunction(int nlhs, mxArray* plhs[], int nrhs, const mxArray* prhs[]);

#ifdef __cplusplus
}
#endif

#endif
