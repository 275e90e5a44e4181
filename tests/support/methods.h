// The table of methods: which element offers it, its computation, its plain form, and how near the two are.
#pragma once

#include <ostream>
#include <string>

#include "tests/support/plain_fields.h"
#include "tests/support/scene.h"

namespace scenes {

using plain::Sum;

// What kind of sum it is, for how its terms are conditioned.
enum class Kind { rim, apodized, rayleigh, growing_rayleigh, far, radiators, floats };

// All shapes up to `last` that are of the kind of `first` offer it.
struct WaveMethod {
  const char* name;
  Computation compute;
  Shape first, last;
  Kind kind;
  Complex (*plain)(const Element&, const Sum&, const Point&);
  double tolerance = 1e-13;  // of the largest value
  int groups_of = 1;         // nodes beyond a multiple of it are left out
  int most_nodes = 200;      // that are affordable
};

inline Sum plain_sum(const Scene& s, int groups_of = 1) {
  NumericalIntegration rule;
  rule.allocate_memory(s.nodes);
  rule.gauss_quadrature();
  const Medium& m = s.medium;
  const double alpha = m._dBcmMHz * 100 / kesto::decibels_per_neper * (m._f0 / 1e6);
  return {kesto::two_pi / (m._soundspeed / m._f0),
          alpha,
          alpha,
          m._f0,
          m._rho_density,
          m._soundspeed,
          {{rule.abscissa, rule.abscissa + s.nodes}},
          {{rule.weight, rule.weight + s.nodes}},
          s.nodes / groups_of * groups_of};
}

template <class Full>
Complex less_the_hole(const Element& e, const Full& full) {
  return full(e.outer) - (e.has_hole() ? full(e.inner) : Complex());
}
inline Complex weight(const Element& e) { return e.face->complex_weight; }
inline Complex rayleigh_factor(const Element& e, const Sum& s) { return Complex(0, 1) * weight(e) * s.rho * s.f0; }

inline Complex plain_disc(const Element& e, const Sum& s, const Point& p) {
  return p.z < 0 ? 0 : less_the_hole(e, [&](double a) {
    return s.rho * s.speed * a / kesto::pi * weight(e) * s.rim_of_disc(a, p);
  });
}
inline Complex plain_apodized_disc(const Element& e, const Sum& s, const Point& p) {
  return p.z < 0 ? 0 : less_the_hole(e, [&](double a) {
    return s.rho * s.speed * a / kesto::pi * weight(e) * s.rims_of_rings(a, e.face->piston_apodization_index, p);
  });
}
template <bool grows, bool apodized>
Complex plain_cells_of_disc(const Element& e, const Sum& sum, const Point& p) {
  Sum s = sum;
  if (grows) s.alpha = -s.alpha;
  const int profile = apodized ? e.face->piston_apodization_index : 0;
  return p.z < 0
             ? 0
             : less_the_hole(e, [&](double a) { return 2. * rayleigh_factor(e, s) * s.cells_of_disc(a, profile, p); });
}
inline Complex plain_edges(const Element& e, const Sum& s, const Point& p) {
  return p.z < 0 ? 0 : -s.rho * s.speed / kesto::two_pi * weight(e) * s.edges_of_rectangle(e.outer, e.height, p);
}
inline Complex plain_cells_of_rectangle(const Element& e, const Sum& s, const Point& p) {
  return p.z < 0 ? 0 : rayleigh_factor(e, s) * s.cells_of_rectangle(e.outer, e.height, p);
}
inline Complex plain_far_field(const Element& e, const Sum& s, const Point& p) {
  if (p.z < 0 || (p.x == 0 && p.y == 0 && p.z == 0)) return 0;
  return rayleigh_factor(e, s) * 4. * e.outer * e.height * s.far_field_of_rectangle(e.outer, e.height, p);
}
inline Complex plain_radiators(const Element& e, const Sum& s, const Point& p) {
  return p.z > 0 ? rayleigh_factor(e, s) * s.radiators_of_rectangle(2 * e.outer, 2 * e.height, p) : 0;
}
// Of the field E(R) alone: the reference wave keeps its attenuation.
template <Complex (*form)(const Element&, const Sum&, const Point&)>
Complex without_loss(const Element& e, const Sum& sum, const Point& p) {
  Sum s = sum;
  s.alpha = 0;
  return form(e, s, p);
}
inline bool is_behind_cap(double a, double roc, const Point& p) {
  const double z = p.z - roc;
  return z < -std::sqrt(roc * roc - a * a) && p.x * p.x + p.y * p.y + z * z > roc * roc;
}
inline bool is_focus(double roc, const Point& p) {
  return std::sqrt(p.x * p.x + p.y * p.y) < 1e-10 && std::fabs(p.z - roc) < 1e-10;
}
inline Complex plain_cap(const Element& e, const Sum& s, const Point& p) {
  const double d = e.roc;
  return less_the_hole(e, [&](double a) -> Complex {
    if (is_behind_cap(a, d, p)) return 0;
    return is_focus(d, p) ? rayleigh_factor(e, s) * kesto::two_pi * (d - std::sqrt(d * d - a * a)) * s.at(d)
                          : s.rho * s.speed * d * a / kesto::pi * weight(e) * s.rim_of_cap(a, d, p);
  });
}
inline Complex plain_cells_of_cap(const Element& e, const Sum& s, const Point& p) {
  return less_the_hole(e, [&](double a) {
    return is_behind_cap(a, e.roc, p) ? 0 : rayleigh_factor(e, s) * s.cells_of_cap(a, e.roc, p);
  });
}

using T = Transducer;
constexpr Shape disc = Shape::disc, ring = Shape::ring, rectangle = Shape::rectangle, shell = Shape::shell,
                shell_ring = Shape::shell_ring;
constexpr WaveMethod wave_methods[] = {
    {"fnm_cw", &T::fnm_cw, disc, ring, Kind::rim, plain_disc},
    {"fnm_cw_sse", &T::fnm_cw_sse, disc, ring, Kind::floats, plain_disc, 2e-4, 4},
    {"fnm_cw_apodized", &T::fnm_cw_apodized, disc, ring, Kind::apodized, plain_apodized_disc, 1e-13, 1, 50},
    {"rayleigh_cw", &T::rayleigh_cw, disc, ring, Kind::growing_rayleigh, plain_cells_of_disc<true, false>, 1e-13, 1,
     50},
    {"rayleigh_cw_apodized", &T::rayleigh_cw_apodized, disc, ring, Kind::rayleigh, plain_cells_of_disc<false, true>,
     1e-13, 1, 50},
    {"rayleigh_cw_sse", &T::rayleigh_cw_sse, disc, ring, Kind::floats, plain_cells_of_disc<false, false>, 1e-4, 4},
    {"fnm_cw", &T::fnm_cw, rectangle, rectangle, Kind::rim, plain_edges},
    {"fnm_cw_single", &T::fnm_cw_single, rectangle, rectangle, Kind::floats, plain_edges, 1e-4},
    {"fnm_cw_sse", &T::fnm_cw_sse, rectangle, rectangle, Kind::floats, plain_edges, 1e-4},
    {"fnm_cw_sse2", &T::fnm_cw_sse2, rectangle, rectangle, Kind::floats, without_loss<plain_edges>, 1e-4},
    {"rayleigh_cw", &T::rayleigh_cw, rectangle, rectangle, Kind::rayleigh, plain_cells_of_rectangle, 1e-13, 1, 50},
    {"rayleigh_cw_sse", &T::rayleigh_cw_sse, rectangle, rectangle, Kind::floats, plain_cells_of_rectangle, 1e-4, 4},
    {"farfield_cw", &T::farfield_cw, rectangle, rectangle, Kind::far, plain_far_field},
    {"radiator_cw", &T::radiator_cw, rectangle, rectangle, Kind::radiators, plain_radiators, 1e-13, 1, 6},
    {"fnm_cw", &T::fnm_cw, shell, shell_ring, Kind::rim, plain_cap},
    {"fnm_cw_sse", &T::fnm_cw_sse, shell, shell, Kind::floats, plain_cap, 1e-4, 4},
    {"rayleigh_cw", &T::rayleigh_cw, shell, shell_ring, Kind::rayleigh, plain_cells_of_cap, 1e-13, 1, 50},
    {"rayleigh_cw_sse", &T::rayleigh_cw_sse, shell, shell, Kind::floats, plain_cells_of_cap, 1e-4, 4},
};

// How a method in time sums its rays; `whole`: KEPT as it is, an annulus gives the field of the full face.
enum class Sums { directly, decomposed, in_closed_form };
struct TransientMethod {
  const char* name;
  Computation compute;
  Shape first, last;
  Sums sums;
  double tolerance;  // of the largest sample
  bool behind = false, whole = false;
};
constexpr TransientMethod transient_methods[] = {
    {"fnm_transient", &T::fnm_transient, disc, ring, Sums::directly, 1e-12},
    {"fnm_tsd", &T::fnm_tsd, disc, ring, Sums::decomposed, 1e-10},
    {"fnm_fdtsd", &T::fnm_fdtsd, disc, ring, Sums::decomposed, 1e-10},
    {"fnm_tsd_low_precision", &T::fnm_tsd_low_precision, disc, ring, Sums::decomposed, 2e-3},
    {"fnm_tsd_sse", &T::fnm_tsd_sse, disc, ring, Sums::decomposed, 2e-3},
    {"rayleigh_transient", &T::rayleigh_transient, disc, ring, Sums::in_closed_form, 0},
    {"impulse_response", &T::impulse_response, disc, ring, Sums::in_closed_form, 0},
    {"fnm_transient", &T::fnm_transient, shell, shell_ring, Sums::directly, 1e-12},
    {"fnm_transient_behind_source", &T::fnm_transient_behind_source, shell, shell, Sums::directly, 1e-12, true},
    {"fnm_tsd", &T::fnm_tsd, shell, shell_ring, Sums::decomposed, 1e-10},
    {"fnm_tsd_behind_source", &T::fnm_tsd_behind_source, shell, shell, Sums::decomposed, 1e-10, true},
    {"fnm_fdtsd", &T::fnm_fdtsd, shell, shell_ring, Sums::decomposed, 1e-10},
    {"fnm_tsd_low_precision", &T::fnm_tsd_low_precision, shell, shell_ring, Sums::decomposed, 2e-3, false, true},
    {"impulse_response", &T::impulse_response, shell, shell_ring, Sums::in_closed_form, 0},
};

// A method and one of its shapes.
template <class Method>
struct MethodOfShape {
  const Method* method;
  Shape shape;
  std::string name() const { return std::string(name_of(shape)) + '_' + method->name; }
  friend std::ostream& operator<<(std::ostream& out, const MethodOfShape& m) { return out << m.name(); }
};
struct NameOfMethod {
  template <class Info>
  std::string operator()(const Info& info) const {
    return info.param.name();
  }
};
template <class Method, std::size_t n>
std::vector<MethodOfShape<Method>> of_every_shape(const Method (&methods)[n]) {
  std::vector<MethodOfShape<Method>> all;
  for (const Method& m : methods) {
    all.push_back({&m, m.first});
    if (m.last != m.first) all.push_back({&m, m.last});
  }
  return all;
}

}  // namespace scenes
