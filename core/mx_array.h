// The name of a host's array, for headers that pass it on and know no more of it.
//
// Modules are compiled with KESTO_MEX_MODULE, because hosts differ in what the name stands for.
#pragma once

#ifdef KESTO_MEX_MODULE
#include "mex.h"
#else
typedef struct mxArray_tag mxArray;
#endif
