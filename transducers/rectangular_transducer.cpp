#include "transducers/rectangular_transducer.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <iostream>
#include <limits>

#include "core/constants.h"
#include "core/internal/host.h"
#include "core/numerical_helpers.h"
#include "fields/point_road.h"
#include "transducers/rectangle/tables.h"

namespace kesto {

namespace {

// The nodes along one pair of parallel edges: for whole edges, and on [0, 1] for the two parts of a split one.
struct EdgeNodes {
  const double *whole, *whole_weight, *t_squared, *t_weight;
};

// A pair of edges that a point's projection sees at distances D[0] and D[1] across, and whose ends lie at distances
// `ends` along.
template <class T>
struct EdgePair {
  Double<T> ends[2], d[2];
};

template <bool split_x, bool split_y>
struct EdgesOfRectangle {
  double a, b;
  int n;
  EdgeNodes along_x, along_y;

  template <class Sum>
  KESTO_INLINE void add_terms(Sum& sum, const LocalPoints<typename Sum::T>& p) const {
    using T = typename Sum::T;
    const Double<T> d1 = a - p.x, d2 = b - p.y, d3 = a + p.x, d4 = b + p.y, z2 = p.z * p.z;
    sum.subtract_wave_at(p.z);
    add_pair<split_x>(sum, along_x, EdgePair<T>{{d3, d1}, {d4, d2}}, p.x, z2);
    add_pair<split_y>(sum, along_y, EdgePair<T>{{d2, d4}, {d3, d1}}, p.y, z2);
  }

 private:
  template <bool split, class Sum, class T>
  KESTO_INLINE void add_pair(Sum& sum, const EdgeNodes& nodes, const EdgePair<T>& pair, Double<T> foot,
                             Double<T> z2) const {
    const Double<T> d2[2] = {pair.d[0] * pair.d[0], pair.d[1] * pair.d[1]};
    const Double<T> z2_d2[2] = {z2 + d2[0], z2 + d2[1]};
    if constexpr (split) {
      const Double<T> end2[2] = {pair.ends[0] * pair.ends[0], pair.ends[1] * pair.ends[1]};
      const Double<T> area[2][2] = {{pair.ends[0] * pair.d[0], pair.ends[0] * pair.d[1]},
                                    {pair.ends[1] * pair.d[0], pair.ends[1] * pair.d[1]}};
      sum.add(n, [&](int i) KESTO_INLINE_LAMBDA {
        const Double<T> weight = broadcast<T>(nodes.t_weight[i]);
        const Double<T> u2[2] = {nodes.t_squared[i] * end2[0], nodes.t_squared[i] * end2[1]};
        return WaveTerms<T, 4>{{weight * area[0][0] / (d2[0] + u2[0]), weight * area[0][1] / (d2[1] + u2[0]),
                                weight * area[1][0] / (d2[0] + u2[1]), weight * area[1][1] / (d2[1] + u2[1])},
                               {sqrt<T>(z2_d2[0] + u2[0]), sqrt<T>(z2_d2[1] + u2[0]), sqrt<T>(z2_d2[0] + u2[1]),
                                sqrt<T>(z2_d2[1] + u2[1])}};
      });
    } else {
      sum.add(n, [&](int i) KESTO_INLINE_LAMBDA {
        const Double<T> weight = broadcast<T>(nodes.whole_weight[i]), u = nodes.whole[i] + foot, u2 = u * u;
        return WaveTerms<T, 2>{{weight * pair.d[0] / (d2[0] + u2), weight * pair.d[1] / (d2[1] + u2)},
                               {sqrt<T>(z2_d2[0] + u2), sqrt<T>(z2_d2[1] + u2)}};
      });
    }
  }
};

struct CellsOfRectangle {
  int n;
  const double *x, *x_weight, *y, *y_weight;

  template <class Sum>
  KESTO_INLINE void add_terms(Sum& sum, const LocalPoints<typename Sum::T>& p) const {
    using T = typename Sum::T;
    const Double<T> z2 = p.z * p.z;
    for (int column = 0; column < n; ++column) {
      const Double<T> dx = p.x - x[column], dx2 = dx * dx;
      const double weight = x_weight[column];
      sum.add(n, [&](int i) KESTO_INLINE_LAMBDA {
        const Double<T> dy = p.y - y[i], distance = sqrt<T>(dy * dy + dx2 + z2);
        return WaveTerms<T>{{weight * y_weight[i] / distance}, {distance}};
      });
    }
  }
};

struct FarFieldOfRectangle {
  double ka, kb;

  template <class Sum>
  KESTO_INLINE void add_terms(Sum& sum, const LocalPoints<typename Sum::T>& p) const {
    using T = typename Sum::T;
    const Double<T> distance = sqrt<T>(p.z * p.z + p.x * p.x + p.y * p.y);
    sum.add(WaveTerms<T>{{sinc<Sum>(p.x * ka / distance) * sinc<Sum>(p.y * kb / distance) / distance}, {distance}});
  }

 private:
  template <class Sum, class V>
  KESTO_INLINE static V sinc(V u) {
    const V ratio = sincos<typename Sum::T, Sum::argument_range>(u).sin / u;
    return u != 0.0 ? ratio : V{} + 1.0;
  }
};

int farfield(RectangularTransducer& piston, bool attenuated) {
  Wave wave = wave_or_default(medium_of(piston));
  if (is_silent(piston)) return 0;
  require_complex_output(piston);
  if (!attenuated) wave.attenuation = 0;
  const Medium& medium = *piston.medium;
  const double a = piston.width * 0.5, b = piston.height * 0.5;
  const FarFieldOfRectangle pattern = {a * wave.wavenumber, b * wave.wavenumber};
  const PointKernel kernels[] = {{pattern, wave, std::fabs(a) + std::fabs(b), chosen_vector_target()}};
  const Complex factor = piston.complex_weight * Complex(0, medium._f0 * medium._rho_density * 4 * a * b);
  superpose_sums(piston, kernels, factor, [](int, const CartesianCoordinate& p) {
    return p.z >= 0 && std::sqrt(p.z * p.z + p.x * p.x + p.y * p.y) > 0 ? 0 : no_kernel;
  });
  return 0;
}

// Whether a node of the tables lies at the point.
bool is_at_node(const RectangleTables& tables, const CartesianCoordinate& p) {
  constexpr double squares_to_nothing = 1e-150;
  const auto near = [&](const ScratchArray<double>& nodes, double at) {
    for (int i = 0; i < tables.n; ++i) {
      if (std::fabs(nodes[i] - at) < squares_to_nothing) return true;
    }
    return false;
  };
  return std::fabs(p.z) < squares_to_nothing && near(tables.x, p.x) && near(tables.y, p.y);
}

// The Rayleigh sum of a point that may coincide with a node.
Complex rayleigh_sum_on_face(const RectangleTables& tables, Wave wave, const CartesianCoordinate& p) {
  Complex sum;
  for (int i = 0; i < tables.n; ++i) {
    for (int j = 0; j < tables.n; ++j) {
      const double dx = p.x - tables.x[i], dy = p.y - tables.y[j], weight = tables.x_weight[i] * tables.y_weight[j];
      const double distance = std::sqrt(dy * dy + dx * dx + p.z * p.z);
      sum += distance != 0 ? weight / distance * smart_exp(-wave.attenuation * distance, -wave.wavenumber * distance)
                           : Complex(weight, weight);
    }
  }
  return sum;
}

}  // namespace

}  // namespace kesto

using namespace kesto;

RectangularTransducer::RectangularTransducer(double w, double h) : width(w), height(h) {}

RectangularTransducer::RectangularTransducer(double w, double h, double delay) : RectangularTransducer(w, h) {
  Transducer::set_time_delay(delay);
}

RectangularTransducer::RectangularTransducer(double w, double h, double a, double phi) : RectangularTransducer(w, h) {
  Transducer::set_amplitude(a);
  Transducer::set_phase(phi);
}

void RectangularTransducer::debug(int level) {
  Transducer::debug(level);
  std::cout << "Width:" << width << "\nHeight:" << height << std::endl;
}

void RectangularTransducer::mex_debug(int level) {
  Transducer::mex_debug(level);
  kesto::print("width: %f\n", width);
  kesto::print("height: %f\n\n", height);
}

int RectangularTransducer::fnm_cw() {
  const Medium& properties = medium_of(*this);
  const Wave wave = wave_or_default(properties);
  if (is_silent(*this)) return 0;
  require_complex_output(*this);
  const RectangleTables t(*this);
  const EdgeNodes x = {t.x.data(), t.x_weight.data(), t.t_squared.data(), t.t_weight.data()};
  const EdgeNodes y = {t.y.data(), t.y_weight.data(), t.t_squared.data(), t.t_weight.data()};
  const EdgesOfRectangle<false, false> outside = {t.a, t.b, t.n, x, y};
  const EdgesOfRectangle<true, false> beside_y = {t.a, t.b, t.n, x, y};
  const EdgesOfRectangle<false, true> beside_x = {t.a, t.b, t.n, x, y};
  const EdgesOfRectangle<true, true> within = {t.a, t.b, t.n, x, y};
  const auto kernel = [&](const auto& edges) {
    return PointKernel(edges, wave, std::fabs(t.a) + std::fabs(t.b), chosen_vector_target());
  };
  const PointKernel kernels[] = {kernel(outside), kernel(beside_y), kernel(beside_x), kernel(within)};
  const Complex scale = rectangle_rim_factor(*this, properties._rho_density * properties._soundspeed, -two_pi);
  superpose_sums(*this, kernels, scale, [&](int, const CartesianCoordinate& p) {
    if (p.z < 0) return no_kernel;
    return (is_split(t.a + p.x, t.a - p.x) ? 1 : 0) + (is_split(t.b - p.y, t.b + p.y) ? 2 : 0);
  });
  return 0;
}

int RectangularTransducer::farfield_cw() { return farfield(*this, true); }
int RectangularTransducer::farfield_cw_lossless() { return farfield(*this, false); }

int RectangularTransducer::rayleigh_cw() {
  const Wave wave = wave_or_default(medium_of(*this));
  if (is_silent(*this)) return 0;
  require_complex_output(*this);
  const RectangleTables t(*this);
  const CellsOfRectangle cells = {t.n, t.x.data(), t.x_weight.data(), t.y.data(), t.y_weight.data()};
  const PointKernel kernels[] = {{cells, wave, std::fabs(t.a) + std::fabs(t.b), chosen_vector_target()}};
  const Complex factor = rectangle_rayleigh_factor(*this);
  superpose_sums(*this, kernels, factor, [&](int i, const CartesianCoordinate& p) {
    if (!(p.z >= 0)) return no_kernel;
    if (!is_at_node(t, p)) return 0;
    superpose_complex_pressure(i, rayleigh_sum_on_face(t, wave, p) * factor);
    return no_kernel;
  });
  return 0;
}

int RectangularTransducer::impulse_begin_and_end_times() {
  require_grid_and_medium(*this);
  const double a = width * 0.5, b = height * 0.5, c = medium->_soundspeed;
  impulse_begin_time = std::numeric_limits<double>::max();
  impulse_end_time = 0;
  for_each_local_point(*this, [&](int, const CartesianCoordinate& p) {
    const double x = std::fabs(p.x), y = std::fabs(p.y);
    const double beside_x = x > a ? x - a : 0, beside_y = y > b ? y - b : 0;  // the projection from the face
    const double nearest = std::sqrt(beside_y * beside_y + p.z * p.z + beside_x * beside_x);
    const double farthest = std::sqrt((y + b) * (y + b) + p.z * p.z + (x + a) * (x + a));
    impulse_begin_time = std::min(impulse_begin_time, nearest / c + time_delay);
    impulse_end_time = std::max(impulse_end_time, farthest / c + time_delay);
  });
  return 0;
}
