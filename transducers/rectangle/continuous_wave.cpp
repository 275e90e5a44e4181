// The continuous-wave fields of a rectangle in double precision, but for its small radiators.
#include <cmath>
#include <complex>

#include "core/constants.h"
#include "core/numerical_helpers.h"
#include "fields/context.h"
#include "fields/point_road.h"
#include "transducers/rectangle/edges.h"
#include "transducers/rectangle/tables.h"

namespace kesto {

namespace {

struct CellsOfRectangle {
  int n;
  const double *x, *x_weight, *y, *y_weight;

  template <class Sum>
  KESTO_INLINE void add_terms(Sum& sum, const LocalPoints<typename Sum::Target>& p) const {
    using T = typename Sum::Target;
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
  KESTO_INLINE void add_terms(Sum& sum, const LocalPoints<typename Sum::Target>& p) const {
    using T = typename Sum::Target;
    const Double<T> distance = sqrt<T>(p.z * p.z + p.x * p.x + p.y * p.y);
    sum.add(WaveTerms<T>{{sinc<Sum>(p.x * ka / distance) * sinc<Sum>(p.y * kb / distance) / distance}, {distance}});
  }

 private:
  template <class Sum, class V>
  KESTO_INLINE static V sinc(V u) {
    const V ratio = sincos<typename Sum::Target, Sum::argument_range>(u).sin / u;
    return u != 0.0 ? ratio : V{} + 1.0;
  }
};

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

int far_field(RectangularTransducer& piston, bool attenuated) {
  Wave wave = wave_or_default(medium_of(piston));
  if (is_silent(piston)) return 0;
  require_complex_output(piston);
  if (!attenuated) wave.attenuation = 0;
  const Medium& medium = *piston.medium;
  const double a = piston.width * 0.5, b = piston.height * 0.5;
  const FarFieldOfRectangle pattern = {a * wave.wavenumber, b * wave.wavenumber};
  const Complex factor = piston.complex_weight * Complex(0, medium._f0 * medium._rho_density * 4 * a * b);
  superpose_sums(
      piston, {{pattern, wave, std::fabs(a) + std::fabs(b)}}, factor,
      [](const CartesianCoordinate& p) {
        return p.z >= 0 && std::sqrt(p.z * p.z + p.x * p.x + p.y * p.y) > 0 ? 0 : no_field;
      },
      no_special_pressure);
  return 0;
}

}  // namespace

}  // namespace kesto

using namespace kesto;

int RectangularTransducer::fnm_cw() {
  const Medium& properties = medium_of(*this);
  const Wave wave = wave_or_default(properties);
  if (is_silent(*this)) return 0;
  require_complex_output(*this);
  const RectangleTables tables(*this);
  const RectangleNodes t = tables.nodes();
  const EdgeIntegral<EdgesOfRectangle<whole>> outside = {EdgesOfRectangle<whole>(t)};
  const EdgeIntegral<EdgesOfRectangle<split_along_x>> beside_y = {EdgesOfRectangle<split_along_x>(t)};
  const EdgeIntegral<EdgesOfRectangle<split_along_y>> beside_x = {EdgesOfRectangle<split_along_y>(t)};
  const EdgeIntegral<EdgesOfRectangle<split_along_both>> within = {EdgesOfRectangle<split_along_both>(t)};
  const double extent = tables.extent();
  const PointKernel kernels[kinds_of_edges] = {
      {outside, wave, extent}, {beside_y, wave, extent}, {beside_x, wave, extent}, {within, wave, extent}};
  const Complex scale = rectangle_rim_factor(*this, properties._rho_density * properties._soundspeed, -two_pi);
  superpose_sums(
      *this, kernels, scale,
      [&](const CartesianCoordinate& p) { return is_in_front(p) ? kind_of_edges(t, p) : no_field; },
      no_special_pressure);
  return 0;
}

int RectangularTransducer::farfield_cw() { return far_field(*this, true); }
int RectangularTransducer::farfield_cw_lossless() { return far_field(*this, false); }

int RectangularTransducer::rayleigh_cw() {
  const Wave wave = wave_or_default(medium_of(*this));
  if (is_silent(*this)) return 0;
  require_complex_output(*this);
  const RectangleTables t(*this);
  const CellsOfRectangle cells = {t.n, t.x.data(), t.x_weight.data(), t.y.data(), t.y_weight.data()};
  const Complex factor = rectangle_rayleigh_factor(*this);
  superpose_sums(
      *this, {{cells, wave, t.extent()}}, factor,
      [&](const CartesianCoordinate& p) { return !(p.z >= 0)        ? no_field
                                                 : is_at_node(t, p) ? special_point
                                                                    : 0; },
      [&](const CartesianCoordinate& p) { return rayleigh_sum_on_face(t, wave, p) * factor; });
  return 0;
}
