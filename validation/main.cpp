// Holds the fields of the core against closed forms, a Rayleigh sum of its own, far-field patterns and published
// values: a verdict for each case, tables and pictures.
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <string>

#include "validation/cases.h"
#include "validation/plots.h"

namespace {

const char* const help_text =
    "validate: the fields of the core against references of other kinds\n"
    "\n"
    "  --output DIR   where tables and pictures go, created if need be (out/validation)\n"
    "  --quick        fewer points, in a few seconds; no pictures\n"
    "  --help         this text\n"
    "\n"
    "Exit status: 0 when every case held, 1 when one failed or a step did, 2 for a bad option.\n";

bool validate(const std::string& output, bool quick) {
  using namespace kesto::validation;
  std::filesystem::create_directories(output);
  Report report(output, quick);
  for (const auto cases : {axis_cases, plane_cases, far_field_cases, bowl_cases, convergence_cases, efficiency_cases,
                           abscissa_cases, impulse_response_cases, transient_cases, sampled_signal_cases, kzk_cases}) {
    cases(report);
  }
  report.write_verdicts();
  std::printf("\n%zu cases, %zu failed. Tables in %s\n", report.size(), report.failures(), output.c_str());
  std::fflush(stdout);
  if (!quick) draw_plots(output, KESTO_VALIDATION_PLOTS);
  return report.failures() == 0;
}

}  // namespace

int main(int argc, char** argv) {
  std::string output = "out/validation";
  bool quick = false;
  for (int n = 1; n < argc; ++n) {
    if (std::strcmp(argv[n], "--quick") == 0) {
      quick = true;
    } else if (std::strcmp(argv[n], "--output") == 0 && n + 1 < argc && argv[n + 1][0] != '\0') {
      output = argv[++n];
    } else if (std::strcmp(argv[n], "--help") == 0) {
      std::fputs(help_text, stdout);
      return 0;
    } else {
      std::fprintf(stderr, "validate: %s: no such option, or its value is missing (--help lists them)\n", argv[n]);
      return 2;
    }
  }
  try {
    return validate(output, quick) ? 0 : 1;
  } catch (const std::exception& failure) {
    std::fflush(stdout);
    std::fprintf(stderr, "validate: %s\n", failure.what());
    return 1;
  }
}
