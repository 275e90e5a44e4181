// How the library speaks to the program around it.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>

namespace kesto {

// Every error of the library. The message names the argument, its value and what was expected.
class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A progress hook has asked to stop.
class Cancelled : public Error {
 public:
  Cancelled() : Error("cancelled by the progress hook") {}
};

// Where warnings and printed lines go: to stderr and stdout unless set. An empty hook restores that. Any thread may set
// a hook or run one; hooks are called one at a time, and must neither warn nor print themselves.
using TextHook = std::function<void(const std::string&)>;
void set_warning_hook(TextHook hook);
void set_print_hook(TextHook hook);

}  // namespace kesto
