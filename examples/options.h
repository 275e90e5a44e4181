// The command line of the example.
#pragma once

#include <stdexcept>
#include <string>

namespace kesto::example {

struct Options {
  std::string output = "out";
  std::string module;  // set by the caller to the one that was built
  int sweeps = 300;
  double spacing = 0.5e-3;  // m
  bool pictures = true;
  bool help = false;
};

struct BadOption : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Throws BadOption.
Options parse_options(int argc, char** argv, const std::string& default_module);

extern const char* const help_text;

}  // namespace kesto::example
