// Loading and calling a module.
#include <dlfcn.h>

#include <climits>
#include <cstdlib>

#include "host/ledger.h"

namespace kesto::host {

namespace {

// A bare file name would be searched for on the system's library path.
std::string absolute(const std::string& path) {
  char resolved[PATH_MAX];
  return realpath(path.c_str(), resolved) != nullptr ? resolved : path;
}

void* opened(const std::string& path) {
  void* const handle = dlopen(absolute(path).c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) throw std::runtime_error(dlerror());
  return handle;
}

template <class F>
F* entry_point(void* handle, const char* name) {
  void* const address = dlsym(handle, name);
  if (address == nullptr) throw std::runtime_error(dlerror());
  return reinterpret_cast<F*>(address);
}

}  // namespace

Module::Module(const std::string& path) : handle_(opened(path), dlclose) {
  gateway_ = entry_point<void(int, mxArray*[], int, const mxArray*[])>(handle_.get(), "mexFunction");
  version_ = entry_point<void(unsigned*, unsigned*)>(handle_.get(), "mexfilerequiredapiversion");
}

Report Module::call(int nlhs, const std::vector<const mxArray*>& inputs, std::vector<Array>* outputs) const {
  // A host hands over room for at least one output, asked for or not.
  std::vector<mxArray*> lhs(nlhs > 0 ? static_cast<std::size_t>(nlhs) : 1, nullptr);
  std::vector<const mxArray*> rhs = inputs;
  OpenLedger books;
  books.run([&] { gateway_(nlhs, lhs.data(), static_cast<int>(rhs.size()), rhs.data()); });
  books->release_blocks();
  if (books->report.failed || outputs == nullptr) lhs.clear();
  books->release_arrays_except(lhs);
  if (outputs != nullptr) {
    outputs->clear();
    for (mxArray* const array : lhs) outputs->emplace_back(array);
  }
  return books->report;
}

void Module::required_api_version(unsigned* built_by_release, unsigned* target_api_version) const {
  version_(built_by_release, target_api_version);
}

}  // namespace kesto::host
