// exp and sincos of the kernels beside libm's, timed in turn within one run.
//
// Counters: cycles an element, of this and of libm; speedup; worst difference from libm (relative for exp, absolute
// else).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "bench/libm_o2.h"
#include "bench/timing.h"
#include "tests/support/lane_math_arrays.h"

namespace {

constexpr std::size_t n = 2048;  // of doubles: in the first-level cache

struct Data {
  std::vector<double> a, b, ours[2], libm[2];
  Data() : a(n), b(n) {
    std::mt19937_64 bits(1);
    for (double& x : a) x = std::uniform_real_distribution<>(-30, 0)(bits);
    for (double& x : b) x = std::uniform_real_distribution<>(-1e4, 1e4)(bits);
    for (int i = 0; i < 2; ++i) ours[i].resize(n), libm[i].resize(n);
  }
};

enum Function { exponential, sine_cosine, complex_exponential };

void lane_math(benchmark::State& state, Function function, kesto::VectorTarget target) {
  Data d;
  const auto ours = [&] {
    switch (function) {
      case exponential: return kesto::apply_to_arrays<kesto::ExpOfArray>(target, {d.a.data()}, {d.ours[0].data()}, n);
      case sine_cosine:
        return kesto::apply_to_arrays<kesto::SincosOfArray>(target, {d.b.data()}, {d.ours[0].data(), d.ours[1].data()},
                                                            n);
      case complex_exponential:
        return kesto::apply_to_arrays<kesto::ComplexExpOfArray>(target, {d.a.data(), d.b.data()},
                                                                {d.ours[0].data(), d.ours[1].data()}, n);
    }
  };
  const auto libm = [&] {
    switch (function) {
      case exponential: return libm_exp(d.a.data(), d.libm[0].data(), n);
      case sine_cosine: return libm_sincos(d.b.data(), d.libm[0].data(), d.libm[1].data(), n);
      case complex_exponential: return libm_complex_exp(d.a.data(), d.b.data(), d.libm[0].data(), d.libm[1].data(), n);
    }
  };
  std::vector<double> times, libm_times, ratios;
  for (auto _ : state) {
    const double libm_time = seconds(libm), time = seconds(ours);
    state.SetIterationTime(time);
    times.push_back(time), libm_times.push_back(libm_time), ratios.push_back(libm_time / time);
  }
  double difference = 0;
  for (std::size_t i = 0; i < n; ++i) {
    const double scale = function == sine_cosine ? 1 : std::exp(d.a[i]);
    for (int part = 0; part < 2; ++part) {
      difference = std::max(difference, std::abs(d.ours[part][i] - d.libm[part][i]) / scale);
    }
  }
  if (difference > 1e-15) state.SkipWithError("differs from libm");
  const double clock = cycles_per_second() / static_cast<double>(n);
  state.counters["cycles"] = median(times) * clock;
  state.counters["libm"] = median(libm_times) * clock;
  state.counters["speedup"] = median(ratios);
  state.counters["difference"] = difference;
}

}  // namespace

int main(int argc, char** argv) {
  const struct {
    const char* name;
    Function function;
  } functions[] = {{"exp", exponential}, {"sincos", sine_cosine}, {"exp_and_sincos", complex_exponential}};
  for (const auto& f : functions) {
    for (const kesto::VectorTarget target : kesto::all_vector_targets) {
      if (!kesto::is_available(target)) continue;
      benchmark::RegisterBenchmark((std::string(f.name) + "/" + kesto::name_of(target)).c_str(), lane_math, f.function,
                                   target)
          ->UseManualTime()
          ->Iterations(401);
    }
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
