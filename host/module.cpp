// Loading and calling a module.
#include <dlfcn.h>

#include "host/ledger.h"

namespace kesto::host {

namespace {

template <class F>
F* entry_point(void* handle, const char* name) {
  void* const address = dlsym(handle, name);
  if (address == nullptr) throw std::runtime_error(dlerror());
  return reinterpret_cast<F*>(address);
}

}  // namespace

Module::Module(const std::string& path) : handle_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (handle_ == nullptr) throw std::runtime_error(dlerror());
  gateway_ = entry_point<void(int, mxArray*[], int, const mxArray*[])>(handle_, "mexFunction");
  version_ = entry_point<void(unsigned*, unsigned*)>(handle_, "mexfilerequiredapiversion");
}

Module::~Module() { dlclose(handle_); }

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
