// The bioheat solver against the plain -O2 loops, whole call, timed in turn within one run.
//
// Counters: ns/point/sweep, plain (the same of the plain loops), speedup (plain over this) and bytes/point (all
// arrays of the solver). A result that differs from the plain one in any bit fails the row.
#include <benchmark/benchmark.h>

#include <vector>

#include "bench/plain_bioheat_o2.h"
#include "bench/timing.h"
#include "heat/bioheat_solver.h"
#include "tests/plain_bioheat.h"

namespace {

void bioheat(benchmark::State& state, kesto::VectorTarget target, int n0, int n1, int n2, int sweeps) {
  const kesto::BioheatProblem p{n0, n1, n2, 1e-3, 1.1e-3, 0.9e-3, 5.8, 1.6e6, 5.0, 3617.0, 0.51, sweeps};
  const std::size_t n = std::size_t(n0) * std::size_t(n1) * std::size_t(n2);
  std::vector<double> real(n), imag(n), heat(n), plain(n), fast(n), plain_times, ratios;
  for (std::size_t m = 0; m < n; ++m) {
    real[m] = 1e6 * static_cast<double>(m * 7919 % 1000) / 1000;
    imag[m] = 1e5 * static_cast<double>(m * 104729 % 1000) / 1000;
  }
  for (auto _ : state) {
    const double plain_time =
        seconds([&] { plain_bioheat_o2(p, real.data(), imag.data(), heat.data(), plain.data()); });
    const double time =
        seconds([&] { solve_steady_bioheat(p, real.data(), imag.data(), heat.data(), fast.data(), target); });
    state.SetIterationTime(time);
    plain_times.push_back(plain_time);
    ratios.push_back(plain_time / time);
  }
  if (!same_bits(fast.data(), plain)) state.SkipWithError("differs from the plain loops");
  const double updates = static_cast<double>(n) * sweeps;
  state.counters["ns/point/sweep"] = median(plain_times) / median(ratios) / updates * 1e9;
  state.counters["plain"] = median(plain_times) / updates * 1e9;
  state.counters["speedup"] = median(ratios);
  state.counters["bytes/point"] = 8.0 * (4.0 + 1.0 / n2);
}

}  // namespace

int main(int argc, char** argv) {
  const int grids[][3] = {{64, 64, 64}, {128, 128, 128}, {256, 256, 256}, {61, 201, 121}};
  for (const auto& g : grids) {
    for (const int sweeps : {1, 10, 100}) {
      for (const kesto::VectorTarget target : kesto::all_vector_targets) {
        if (!kesto::is_available(target)) continue;
        const std::string name = "bioheat/" + std::to_string(g[0]) + "x" + std::to_string(g[1]) + "x" +
                                 std::to_string(g[2]) + "/sweeps:" + std::to_string(sweeps) + "/" +
                                 kesto::name_of(target);
        benchmark::RegisterBenchmark(name.c_str(), bioheat, target, g[0], g[1], g[2], sweeps)
            ->Unit(benchmark::kMillisecond)
            ->UseManualTime()
            ->Iterations(g[0] == 256 && sweeps == 100 ? 3 : 9);
      }
    }
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
