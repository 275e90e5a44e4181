// The built module, called through the embedded host as a real host calls it.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "core/medium.h"
#include "host/embedded_host.h"
#include "tests/expressions.h"
#include "tests/plain_bioheat.h"

namespace {

using kesto::host::Array;
using kesto::host::Report;

const kesto::host::Module& module() {
  static const kesto::host::Module loaded(KESTO_MODULE_FILE);
  return loaded;
}

std::string trimmed(const std::string& text) {
  const size_t from = text.find_first_not_of(' ');
  return from == std::string::npos ? "" : text.substr(from, text.find_last_not_of(' ') - from + 1);
}

std::string unescaped(std::string text) {
  for (size_t at; (at = text.find("\\n")) != std::string::npos;) text.replace(at, 2, "\n");
  return text;
}

struct Check {
  std::string line;
  int outputs;
  std::vector<std::string> arguments;
  std::string printed, message;
};

std::vector<Check> read_checks() {
  std::vector<Check> checks;
  std::ifstream file(KESTO_SOURCE_DIR "/tests/gateway_checks.txt");
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::vector<std::string> columns;
    for (size_t from = 0, bar = 0; bar != std::string::npos; from = bar + 1) {
      bar = line.find('|', from);
      columns.push_back(trimmed(line.substr(from, bar == std::string::npos ? bar : bar - from)));
    }
    Check check{line, std::stoi(columns.at(0)), {}, unescaped(columns.at(7)), unescaped(columns.at(8))};
    for (size_t a = 1; a <= 6 && columns[a] != "-"; ++a) check.arguments.push_back(columns[a]);
    checks.push_back(check);
  }
  return checks;
}

// The arguments of one call; `views` is what the host hands over.
struct Arguments {
  explicit Arguments(const std::vector<std::string>& expressions) {
    for (const std::string& text : expressions) owned.push_back(Expressions().value(text));
    for (const Array& array : owned) views.push_back(array.get());
  }
  std::vector<Array> owned;
  std::vector<const mxArray*> views;
};

const std::vector<std::string> good_call = {"P", "medium", "1e-3", "2e-3", "3e-3", "9"};

// What the plain loops make of good_call (with other spacings or iterations).
std::vector<double> expected_temperature(double dx, double dy, double dz, int sweeps, double density = 1000) {
  const kesto::BioheatProblem problem{4, 5, 6, dx, dy, dz, 5, density * 1500, 5, 3700, 0.5, sweeps};
  std::vector<double> real(120), imag(120), heat(120), temperature(120);
  for (int n = 0; n < 120; ++n) real[size_t(n)] = 1e5 + n, imag[size_t(n)] = 3.0 * n;
  plain_bioheat(problem, real.data(), imag.data(), heat.data(), temperature.data());
  return temperature;
}

void expect_good(const std::vector<Array>& outputs, const std::vector<double>& expected, const std::string& what) {
  ASSERT_EQ(outputs.size(), 1u) << what;
  ASSERT_EQ(mxGetNumberOfElements(outputs[0].get()), expected.size()) << what;
  EXPECT_TRUE(same_bits(mxGetPr(outputs[0].get()), expected)) << what;
}

TEST(Gateway, ChecksInOrderAndWorksAfterEachFailure) {
  const Arguments good(good_call);
  const std::vector<double> expected = expected_temperature(1e-3, 2e-3, 3e-3, 9);
  const std::vector<Check> checks = read_checks();
  ASSERT_GT(checks.size(), 40u);
  for (const Check& check : checks) {
    const Arguments arguments(check.arguments);
    std::vector<Array> outputs;
    const Report report = module().call(check.outputs, arguments.views, &outputs);
    EXPECT_EQ(report.failed, check.message != "ok") << check.line;
    if (check.message == "host") {
      EXPECT_FALSE(report.error.empty()) << check.line;
    } else if (check.message != "ok") {
      EXPECT_EQ(report.error, check.message.substr(check.message.find("host: ") == 0 ? 6 : 0)) << check.line;
    }
    EXPECT_EQ(report.console, check.printed) << check.line;
    EXPECT_EQ(report.warnings.size(), 0u) << check.line;
    EXPECT_EQ(report.bad_frees + report.live_blocks, 0u) << check.line;
    EXPECT_EQ(outputs.size(), report.failed ? 0u : 1u) << check.line;
    EXPECT_TRUE(module().call(1, good.views, &outputs).clean()) << "after " << check.line;
    expect_good(outputs, expected, "after " + check.line);
  }
}

TEST(Gateway, ReadsEveryArgument) {
  struct Case {
    const char *dx, *dz, *iterations, *medium;
    std::vector<double> expected;
  };
  const Case cases[] = {
      {"NaN", "3e-3", "2", "medium", expected_temperature(NAN, 2e-3, 3e-3, 2)},
      {"1e-3", "0", "2", "medium", expected_temperature(1e-3, 2e-3, 0, 2)},
      {"1e-3", "-3e-3", "1.9", "medium", expected_temperature(1e-3, 2e-3, 3e-3, 1)},
      {"single(1)", "int8(2)", "int8(3)", "pair(medium)", expected_temperature(1, 2e-3, 2, 3)},
      {"1", "1", "3", "with(medium, 'density', -1)", expected_temperature(1, 2e-3, 1, 3, -1)},
  };
  for (const Case& c : cases) {
    const Arguments arguments({"P", c.medium, c.dx, "2e-3", c.dz, c.iterations});
    std::vector<Array> outputs;
    EXPECT_TRUE(module().call(1, arguments.views, &outputs).clean());
    expect_good(outputs, c.expected, std::string(c.dx) + ' ' + c.dz);
  }
}

TEST(Gateway, RefusesASeventhArgument) {
  const Arguments seven({"P", "medium", "1", "1", "1", "1", "1"});
  EXPECT_EQ(module().call(1, seven.views).error,
            "This function requires exactly 6 arguments. See the documentation for details.\n");
}

TEST(Gateway, ASmallGridsScratchIsTheStatedArrays) {
  const Arguments good(good_call);
  const Report report = module().call(1, good.views);
  EXPECT_EQ(report.peak_bytes, sizeof(double) * 4 * 120);  // real, imaginary, heat, temperature
  EXPECT_EQ(report.temporary_arrays, 3u);                  // the two halves, and the output not asked for here
  EXPECT_EQ(report.live_blocks, 0u);
}

TEST(Gateway, ForcedVectorTargetsAgreeAndUnknownOnesWarn) {
  const Arguments good(good_call);
  const std::vector<double> expected = expected_temperature(1e-3, 2e-3, 3e-3, 9);
  for (const char* forced : {"baseline", "avx2", "avx512", "mmx", ""}) {
    setenv("KESTO_VECTOR_TARGET", forced, 1);
    EXPECT_TRUE(kesto::is_available(kesto::chosen_vector_target())) << forced;
    bool available = *forced == '\0';
    for (const kesto::VectorTarget target : kesto::all_vector_targets) {
      if (std::strcmp(forced, kesto::name_of(target)) != 0 || !kesto::is_available(target)) continue;
      available = true;
      EXPECT_EQ(kesto::chosen_vector_target(), target);
    }
    std::vector<Array> outputs;
    const Report report = module().call(1, good.views, &outputs);
    EXPECT_EQ(report.warnings.size(), available ? 0u : 1u) << forced;
    expect_good(outputs, expected, forced);
  }
  unsetenv("KESTO_VECTOR_TARGET");
}

TEST(Gateway, AnswersTheInterfaceVersion) {
  unsigned release = 0, interface = 0;
  module().required_api_version(&release, &interface);
  EXPECT_EQ(release, 0x2023Bu);
  EXPECT_EQ(interface, 0x08000000u);
}

TEST(Medium, PrintsEveryFieldButTheBloodsHeat) {
  const Array structure = Expressions().value("medium");
  const Report report = kesto::host::guarded([&] {
    const mxArray* slot = structure.get();
    Medium medium(&slot);
    medium._f0 = 1e6;
    medium.mexDebug();
  });
  EXPECT_EQ(report.console,
            "f0 (_f0): 1000000.000000\nfs (_fs): 0.000000\nsoundspeed (_soundspeed): 1500.000000\n"
            "attenuation (_dBcmMHz): 5.000000\npower law coefficient (_powerlawcoeff): 0.000000\n"
            "density (_rho_density): 1000.000000\nspecific heat(_ct): 3600.000000\nblood perfusion (_wb): 5.000000\n"
            "power law exponent (_b): 1.100000\nthermal conductivity (_kappa): 0.500000\n"
            "nonlinearity param (_beta): 3.500000\n");
}

// The host's own promises, which the tests above lean on: what it must notice, it notices.
TEST(EmbeddedHost, ReportsLeaksBadFreesAndFreesFailedCalls) {
  void* leaked = nullptr;
  const Report leak = kesto::host::guarded([&] { leaked = mxCalloc(3, 8); });
  EXPECT_EQ(leak.live_blocks, 1u);
  EXPECT_EQ(leak.live_bytes, 24u);
  EXPECT_FALSE(leak.clean());
  const Report failed = kesto::host::guarded([] {
    mxFree(mxRealloc(mxMalloc(8), 800));
    mxMalloc(16);
    mexWarnMsgTxt("careful");
    mexErrMsgTxt("100% \"verbatim\"\n");
  });
  EXPECT_TRUE(failed.failed);
  EXPECT_EQ(failed.error, "100% \"verbatim\"\n");
  EXPECT_EQ(failed.warnings, std::vector<std::string>{"careful"});
  EXPECT_EQ(failed.live_blocks, 1u);  // freed by the host: the sanitizers would see it otherwise
  void* resized = mxMalloc(8);        // stays with the scope that took it, even when a call that resizes it fails
  const Report resizing = kesto::host::guarded([&] {
    resized = mxRealloc(resized, 80);
    mexErrMsgTxt("failed");
  });
  EXPECT_EQ(resizing.live_blocks, 0u);
  std::memset(resized, 0, 80);
  mxFree(resized);
  mxArray* left_behind = nullptr;
  const Report nested = kesto::host::guarded([&] {
    EXPECT_EQ(kesto::host::guarded([] { mxFree(mxMalloc(1000)); }).peak_bytes, 1000u);
    const mwSize hundred[] = {10, 10};
    const char* names[] = {"a"};
    const Array owner(mxCreateStructMatrix(3, 1, 1, names));
    mxSetField(owner.get(), 0, "a", mxCreateNumericArray(2, hundred, mxDOUBLE_CLASS, mxREAL));
    EXPECT_EQ(mxGetField(owner.get(), 3, "a"), nullptr);
    mxFree(mxMalloc(500));
    left_behind = mxCreateDoubleScalar(1);
  });
  mxDestroyArray(left_behind);
  EXPECT_EQ(nested.peak_bytes, 1300u);  // the field's 800 bytes are alive beside the 500
  EXPECT_EQ(nested.temporary_arrays, 1u);
  int local = 0;
  const Report bad = kesto::host::guarded([&] { mxFree(&local), mxFree(nullptr), mxFree(leaked); });
  EXPECT_EQ(bad.bad_frees, 1u);
  EXPECT_EQ(kesto::host::guarded([] { mxCalloc(SIZE_MAX / 2, 4); }).error, "Out of memory.");
  const mwSize dims[] = {2, 3, 1, 1};
  const Array trailing(mxCreateNumericArray(4, dims, mxUINT16_CLASS, mxREAL));
  EXPECT_EQ(mxGetNumberOfDimensions(trailing.get()), 2u);
  EXPECT_EQ(mxGetComplexDoubles(trailing.get()), nullptr);
}

}  // namespace
