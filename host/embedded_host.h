// The embedded host: runs the module, and any code written against the MEX interface, without MATLAB or Octave.
//
// Outside a guarded call, mexPrintf writes to the standard output, mexWarnMsgTxt to the standard error, and
// mexErrMsgTxt throws Error to the C++ caller. Inside one, everything is captured and accounted for. One thread only.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/mex.h"

namespace kesto::host {

// What mexErrMsgTxt throws; what() is the text, verbatim.
class Error : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct ArrayDeleter {
  void operator()(mxArray* array) const { mxDestroyArray(array); }
};
using Array = std::unique_ptr<mxArray, ArrayDeleter>;

// What happened during a guarded call.
struct Report {
  bool failed = false;                // mexErrMsgTxt ended the call
  std::string error;                  // its text, verbatim
  std::string console;                // what mexPrintf wrote
  std::vector<std::string> warnings;  // texts of mexWarnMsgTxt, in order
  std::size_t live_blocks = 0;        // mxMalloc'd blocks that the call took and did not free
  std::size_t live_bytes = 0;         // and their bytes
  std::size_t peak_bytes = 0;         // most bytes in blocks and arrays of the call at any one time
  std::size_t bad_frees = 0;          // mxFree or mxRealloc of something that is no live block
  std::size_t temporary_arrays = 0;   // arrays that the call created and neither destroyed nor returned

  // No error, no leaked block, no bad free.
  bool clean() const { return !failed && live_blocks == 0 && bad_frees == 0; }
};

// Runs `body` as a host runs a call. Only Error is caught. Blocks that a failed call took are freed; what a call leaves
// behind otherwise stays alive, and is reported.
Report guarded(const std::function<void()>& body);

// A built module, loaded as a host loads it.
class Module {
 public:
  explicit Module(const std::string& path);  // throws std::runtime_error when it cannot be loaded

  // Calls the gateway with nlhs outputs asked for. Outputs go to `outputs` (if not null); every other array that
  // the call created is released afterwards, as are the blocks it left behind.
  Report call(int nlhs, const std::vector<const mxArray*>& inputs, std::vector<Array>* outputs = nullptr) const;

  // What mexfilerequiredapiversion answers.
  void required_api_version(unsigned* built_by_release, unsigned* target_api_version) const;

 private:
  std::unique_ptr<void, int (*)(void*)> handle_;
  void (*gateway_)(int, mxArray*[], int, const mxArray*[]);
  void (*version_)(unsigned*, unsigned*);
};

}  // namespace kesto::host
