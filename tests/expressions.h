// Evaluates the few Octave expressions of gateway_checks.txt into arrays of the embedded host.
#pragma once

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/embedded_host.h"

class Expressions {
 public:
  kesto::host::Array value(const std::string& text) {
    at_ = text.c_str();
    return kesto::host::Array(term());
  }

 private:
  mxArray* term() {
    skip();
    if (*at_ == '\'') return mxCreateString(quoted().c_str());
    if (*at_ == '[') return at_ += 2, array(mxDOUBLE_CLASS, mxREAL, {0, 0});
    if (*at_ == '{') return cell();
    char* end = nullptr;
    const double number = std::strtod(at_, &end);
    if (end != at_) return at_ = end, mxCreateDoubleScalar(number);
    std::string name;
    while (std::isalnum(*at_) || *at_ == '_') name += *at_++;
    std::vector<kesto::host::Array> args;
    std::vector<std::string> words;  // arguments that are text, as text
    if (*at_ == '(') {
      do {
        ++at_, skip();
        words.push_back(*at_ == '\'' ? quoted() : "");
        args.emplace_back(words.back().empty() ? term() : nullptr);
        skip();
      } while (*at_ == ',');
      ++at_;  // )
    }
    return named(name, args, words);
  }

  mxArray* named(const std::string& name, std::vector<kesto::host::Array>& args,
                 const std::vector<std::string>& words) {
    if (name == "P") return pressure();
    if (name == "flat") return array(mxDOUBLE_CLASS, mxCOMPLEX, {4, 5});
    if (name == "none") return array(mxDOUBLE_CLASS, mxCOMPLEX, {0, 3, 3});
    if (name == "huge") return huge(static_cast<mwSize>(mxGetScalar(args[0].get())));
    if (name == "medium") return structure(fields(), 1);
    if (name == "none_of") return structure(fields(), 0);
    if (name == "pair") return structure(fields(), 2);
    if (name == "unset") return structure(fields(), 1, false);
    if (name == "int64") return scalar(mxINT64_CLASS, static_cast<int64_t>(mxGetScalar(args[0].get())));
    if (name == "true" || name == "false") return scalar(mxLOGICAL_CLASS, name == "true");
    if (name == "int8") return scalar(mxINT8_CLASS, static_cast<int8_t>(mxGetScalar(args[0].get())));
    if (name == "single") return scalar(mxSINGLE_CLASS, static_cast<float>(mxGetScalar(args[0].get())));
    if (name == "zeros" || name == "ones") {
      std::vector<mwSize> dims;
      for (int d = 0; d < 3; ++d) dims.push_back(static_cast<mwSize>(mxGetScalar(args[size_t(d)].get())));
      return array(words.back() == "single" ? mxSINGLE_CLASS : mxDOUBLE_CLASS, mxREAL, dims);
    }
    if (name == "with" || name == "without") {
      std::vector<std::string> kept;
      for (const std::string& field : fields())
        if (mxGetField(args[0].get(), 0, field.c_str()) != nullptr && field != words[1]) kept.push_back(field);
      if (name == "with") kept.push_back(words[1]);
      mxArray* const changed = structure(kept, 1);
      if (name == "with")
        mxSetField(changed, 0, words[1].c_str(), args[2] ? args[2].release() : mxCreateString("text"));
      return changed;
    }
    throw std::runtime_error("unknown name " + name);
  }

  static std::vector<std::string> fields() {
    return {"soundspeed",          "density",
            "attenuationdBcmMHz",  "bloodperfusion",
            "specificheat",        "specificheatofblood",
            "thermalconductivity", "nonlinearityparameter",
            "powerlawexponent"};
  }

  static mxArray* structure(const std::vector<std::string>& names, mwSize n, bool set = true) {
    std::vector<const char*> pointers;
    for (const std::string& name : names) pointers.push_back(name.c_str());
    mxArray* const made = mxCreateStructMatrix(n == 0 ? 0 : 1, n, static_cast<int>(names.size()), pointers.data());
    const std::vector<std::string> known = fields();
    const double values[] = {1500, 1000, 5, 5, 3600, 3700, 0.5, 3.5, 1.1, 0};  // as in fields(), then any other
    for (mwSize element = 0; set && element < n; ++element)
      for (const char* name : pointers) {
        const double value = values[std::find(known.begin(), known.end(), name) - known.begin()];
        mxSetField(made, element, name, mxCreateDoubleScalar(value + 7.0 * static_cast<double>(element)));
      }
    return made;
  }

  static mxArray* array(mxClassID classid, mxComplexity complexity, const std::vector<mwSize>& dims) {
    return mxCreateNumericArray(dims.size(), dims.data(), classid, complexity);
  }

  template <class T>
  static mxArray* scalar(mxClassID classid, T value) {
    mxArray* const made = array(classid, mxREAL, {1, 1});
    *static_cast<T*>(mxGetData(made)) = value;
    return made;
  }

  static mxArray* pressure() {
    mxArray* const made = array(mxDOUBLE_CLASS, mxCOMPLEX, {4, 5, 6});
    for (int n = 0; n < 120; ++n) mxGetComplexDoubles(made)[n] = {1e5 + n, 3.0 * n};
    return made;
  }

  static mxArray* huge(mwSize side) {
    const mwSize dims[] = {side, side, side};  // and none of the elements is there
    mxArray* const made = array(mxDOUBLE_CLASS, mxREAL, {1, 1});
    mxSetDimensions(made, dims, 3);
    return made;
  }

  mxArray* cell() {
    const bool filled = *++at_ != '}';
    mxArray* const made = mxCreateCellMatrix(filled, filled);
    if (filled) mxDestroyArray(term());
    return ++at_, made;
  }

  std::string quoted() {
    std::string text;
    while (*++at_ != '\'') text += *at_;
    return ++at_, text;
  }

  void skip() {
    while (*at_ == ' ') ++at_;
  }

  const char* at_ = nullptr;
};
