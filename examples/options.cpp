#include "examples/options.h"

#include <cmath>
#include <cstdlib>
#include <filesystem>

namespace kesto::example {

const char* const help_text =
    "focused_heating: the steady temperature rise that a focused bowl causes in perfused liver\n"
    "\n"
    "  --output DIR    where the pictures, their data and the VTK image go, created if need be (out)\n"
    "  --module FILE   the steady_bioheat module to call (the one built along with this program)\n"
    "  --sweeps N      relaxation sweeps of the heating stage, 1 to 100000 (300); fine grids take more\n"
    "  --spacing MM    grid spacing, 0.25 to 5 mm (0.5); a run at 2 mm takes a fraction of a second\n"
    "  --no-pictures   leave out the pictures, which gnuplot draws\n"
    "  --help          this text\n"
    "\n"
    "Exit status: 0 on success; 1 when a result misses its reference or a step fails; 2 for a bad option.\n";

namespace {

// The whole of `text` as a number between `low` and `high`.
double number(const std::string& option, const std::string& text, double low, double high) {
  char* end = nullptr;
  const double value = std::strtod(text.c_str(), &end);
  const bool whole = !text.empty() && *end == '\0';
  if (!whole || !(value >= low && value <= high)) throw BadOption(option + ": not a number in range: " + text);
  return value;
}

}  // namespace

Options parse_options(int argc, char** argv, const std::string& default_module) {
  Options options;
  options.module = default_module;
  for (int n = 1; n < argc; ++n) {
    const std::string option = argv[n];
    const auto value = [&]() -> std::string {
      if (++n == argc || argv[n][0] == '\0') throw BadOption(option + ": value missing");
      return argv[n];
    };
    if (option == "--output") {
      options.output = value();
    } else if (option == "--module") {
      // The loader searches the system for a name without a slash.
      options.module = std::filesystem::absolute(value()).string();
    } else if (option == "--sweeps") {
      const double sweeps = number(option, value(), 1, 100000);
      if (sweeps != std::floor(sweeps)) throw BadOption("--sweeps: not a whole number");
      options.sweeps = static_cast<int>(sweeps);
    } else if (option == "--spacing") {
      options.spacing = number(option, value(), 0.25, 5) * 1e-3;
    } else if (option == "--no-pictures") {
      options.pictures = false;
    } else if (option == "--help") {
      options.help = true;
    } else {
      throw BadOption(option + ": no such option");
    }
  }
  return options;
}

}  // namespace kesto::example
