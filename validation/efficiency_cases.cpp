// What an accuracy costs: the fewest nodes, terms and microseconds of both methods, on the same points in the same run.
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "validation/cases.h"
#include "validation/computation.h"

namespace kesto::validation {

namespace {

constexpr int most_abscissas = 256;
constexpr int most_cells = 4096;  // a direction

struct Cost {
  int nodes = 0;
  double terms = 0;    // at a point
  double seconds = 0;  // of a call, median
};

class Search {
 public:
  Search(const Geometry& geometry, const Points& points)
      : geometry_(geometry), points_(points), reference_(rayleigh_sum(*geometry.face, water, points)) {
    for (int n = 1; n <= most_abscissas; ++n) nearest_errors_.push_back(error(&Transducer::fnm_cw, n));
  }

  // From this number of abscissas on, no error up to most_abscissas exceeds `accuracy`; 0 when there is none.
  Cost nearest(double accuracy) {
    int n = most_abscissas;
    while (n >= 1 && nearest_errors_[static_cast<std::size_t>(n - 1)] <= accuracy) --n;
    return n == most_abscissas ? Cost() : Cost{n + 1, geometry_.rims * (n + 1)};
  }

  // By doubling and then halving the interval; errors are taken to fall.
  Cost rayleigh(double accuracy) {
    const auto reached = [&](int n) {
      const auto known = rayleigh_errors_.find(n);
      if (known != rayleigh_errors_.end()) return known->second <= accuracy;
      return (rayleigh_errors_[n] = error(&Transducer::rayleigh_cw, n)) <= accuracy;
    };
    int enough = 2;
    while (!reached(enough)) {
      if (enough == most_cells) return Cost();
      enough *= 2;
    }
    for (int too_few = enough / 2; enough - too_few > 1;) {
      const int middle = (enough + too_few) / 2;
      (reached(middle) ? enough : too_few) = middle;
    }
    return {enough, geometry_.cells * enough * enough};
  }

 private:
  double error(Method method, int n) const {
    return error_of(library_field(geometry_, water, points_, n, method), reference_);
  }

  const Geometry& geometry_;
  const Points& points_;
  Field reference_;
  std::vector<double> nearest_errors_;
  std::map<int, double> rayleigh_errors_;
};

// In turn, so that both meet the same machine.
void time_both(const Geometry& geometry, const Points& points, Cost& nearest, Cost& rayleigh) {
  Computation fast(geometry, water, points, nearest.nodes), plain(geometry, water, points, rayleigh.nodes);
  std::vector<double> fast_seconds, plain_seconds;
  for (int run = 0; run < 7; ++run) {
    fast_seconds.push_back(fast.seconds(&Transducer::fnm_cw));
    plain_seconds.push_back(plain.seconds(&Transducer::rayleigh_cw));
  }
  nearest.seconds = median(fast_seconds);
  rayleigh.seconds = median(plain_seconds);
}

void compare_costs(Report& report, Table& table, const Geometry& geometry, const std::vector<double>& accuracies) {
  const Points points = every(geometry.plane, report.quick ? 5 : 1);
  Search search(geometry, points);
  for (const double accuracy : accuracies) {
    Cost nearest = search.nearest(accuracy), rayleigh = search.rayleigh(accuracy);
    const bool found = nearest.nodes > 0 && rayleigh.nodes > 0;
    if (found) time_both(geometry, points, nearest, rayleigh);
    const double per_point = 1e6 / static_cast<double>(points.size());
    table.row("%s,%g,%d,%.6g,%.4g,%d,%.6g,%.4g,%.4g,%.4g", geometry.name.c_str(), accuracy, nearest.nodes,
              nearest.terms, nearest.seconds * per_point, rayleigh.nodes, rayleigh.terms, rayleigh.seconds * per_point,
              rayleigh.terms / nearest.terms, rayleigh.seconds / nearest.seconds);
    char name[100];
    std::snprintf(name, sizeof name, "%s to %g %%: %d abscissas, %d^2 cells, %.0f x faster; terms by cells",
                  geometry.name.c_str(), accuracy * 100, nearest.nodes, rayleigh.nodes,
                  rayleigh.seconds / nearest.seconds);
    report.add({name, found ? nearest.terms / rayleigh.terms : std::numeric_limits<double>::quiet_NaN(), 0.5});
  }
}

}  // namespace

void efficiency_cases(Report& report) {
  report.heading("E  what an accuracy costs beside the library's Rayleigh sum, on the same points");
  Table table(report.path("efficiency.csv"),
              "geometry,accuracy,abscissas,terms,fnm_us_per_point,nodes_per_direction,cells,rayleigh_us_per_point,"
              "cells_over_terms,times_faster");
  const std::vector<double> accuracies =
      report.quick ? std::vector<double>{1e-2} : std::vector<double>{1e-2, 1e-3, 1e-4};
  for (const Geometry& geometry : geometries()) compare_costs(report, table, geometry, accuracies);
  table.close();
}

}  // namespace kesto::validation
