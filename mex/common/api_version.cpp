#include "mex/common/exported.h"

// Asked by MATLAB when it loads the module: the release it is built for (R2023b) and the interface version (800).
KESTO_EXPORTED void mexfilerequiredapiversion(unsigned int* built_by_release, unsigned int* target_api_version) {
  *built_by_release = 0x2023B;
  *target_api_version = 0x08000000;
}
