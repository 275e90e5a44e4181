// The bioheat solver against the plain -O2 loops, whole call, timed in turn within one run.
//
// Rows `bioheat` give both the same arrays again and again. Rows `fresh` give both a heat source and a result that have
// never been written, as a host does at every call, and so pay for the page faults.
//
// Counters: ns/point/sweep, plain (the same of the plain loops), speedup (plain over this, median) with its quartiles
// low and high, and bytes/point (all arrays that are written, and the pressure). A result that differs from the plain
// one in any bit fails the row.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "bench/plain_bioheat_o2.h"
#include "bench/timing.h"
#include "heat/bioheat_solver.h"
#include "heat/internal/skewed_layout.h"
#include "heat/internal/solve.h"
#include "tests/plain_bioheat.h"

namespace {

struct Row {
  int n0, n1, n2, sweeps;
  kesto::VectorTarget target;
  bool fresh;
};

struct Free {
  void operator()(double* block) const { std::free(block); }
};
using Block = std::unique_ptr<double, Free>;

void bioheat(benchmark::State& state, const Row& row) {
  const kesto::BioheatProblem p{row.n0, row.n1, row.n2, 1e-3,   1.1e-3, 0.9e-3,
                                5.8,    1.6e6,  5.0,    3617.0, 0.51,   row.sweeps};
  const std::size_t n = std::size_t(row.n0) * std::size_t(row.n1) * std::size_t(row.n2);
  std::vector<double> real(n), imag(n), plain, plain_times, ratios;
  for (std::size_t m = 0; m < n; ++m) {
    real[m] = 1e6 * static_cast<double>(m * 7919 % 1000) / 1000;
    imag[m] = 1e5 * static_cast<double>(m * 104729 % 1000) / 1000;
  }
  // The host's own: the heat source as allocated, the result zeroed.
  const auto block = [&](bool zeroed) {
    return Block(static_cast<double*>(zeroed ? std::calloc(n, sizeof(double)) : std::malloc(n * sizeof(double))));
  };
  if (row.fresh) mallopt(M_MMAP_THRESHOLD, 1 << 17);  // from here on freed blocks go back to the system
  Block heat, temperature;
  const auto renew = [&] {
    if (heat && !row.fresh) return;
    heat = block(false), temperature = block(true);
    if (!row.fresh) std::fill_n(heat.get(), n, 1.0), std::fill_n(temperature.get(), n, 1.0);
  };
  for (auto _ : state) {
    renew();
    const double plain_time =
        seconds([&] { plain_bioheat_o2(p, real.data(), imag.data(), heat.get(), temperature.get()); });
    if (plain.empty()) plain.assign(temperature.get(), temperature.get() + n);
    renew();
    const double time =
        seconds([&] { solve_steady_bioheat(p, real.data(), imag.data(), heat.get(), temperature.get(), row.target); });
    if (!same_bits(temperature.get(), plain)) state.SkipWithError("differs from the plain loops");
    state.SetIterationTime(time);
    plain_times.push_back(plain_time);
    ratios.push_back(plain_time / time);
  }
  const double updates = static_cast<double>(n) * row.sweeps;
  const int lanes = fastest_lanes(p, row.target);
  const double scratch = lanes == 1 ? 1 : 2.0 * double(kesto::SkewedLayout(lanes, p.n0, p.n1, p.n2).field) / double(n);
  std::sort(ratios.begin(), ratios.end());
  state.counters["ns/point/sweep"] = median(plain_times) / median(ratios) / updates * 1e9;
  state.counters["plain"] = median(plain_times) / updates * 1e9;
  state.counters["speedup"] = median(ratios);
  state.counters["low"] = ratios[ratios.size() / 4];
  state.counters["high"] = ratios[ratios.size() - 1 - ratios.size() / 4];
  state.counters["bytes/point"] = sizeof(double) * (3 + scratch);
}

void add(const char* kind, const Row& row) {
  if (!kesto::is_available(row.target)) return;
  const std::string name = std::string(kind) + "/" + std::to_string(row.n0) + "x" + std::to_string(row.n1) + "x" +
                           std::to_string(row.n2) + "/sweeps:" + std::to_string(row.sweeps) + "/" +
                           kesto::name_of(row.target);
  benchmark::RegisterBenchmark(name.c_str(), bioheat, row)
      ->Unit(benchmark::kMillisecond)
      ->UseManualTime()
      ->Iterations(row.n0 == 256 && row.sweeps >= 30 ? 3 : 9);
}

}  // namespace

int main(int argc, char** argv) {
  const int grids[][3] = {{64, 64, 64}, {128, 128, 128}, {256, 256, 256}, {61, 201, 121}, {3, 3, 3000}, {3000, 3, 3}};
  for (const bool fresh : {false, true}) {
    for (const auto& g : grids) {
      for (const int sweeps : {1, 10, 16, 30, 100}) {
        for (const kesto::VectorTarget target : kesto::all_vector_targets) {
          add(fresh ? "fresh" : "bioheat", {g[0], g[1], g[2], sweeps, target, fresh});
        }
      }
    }
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
