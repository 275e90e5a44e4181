// Scenarios made from bytes, computed at every vector width of this machine: the fields against each other and, where
// that is cheap, against the plain forms; the steady temperature to the bit.
//
// How far two roads to a field may differ follows from the conditioning of the sum. Its terms are coefficient times
// wave. A coefficient grows as 1 / gap, gap the distance from where it is singular: a rim's or an edge's projection
// along the axis for the rim integrals, a shell's cone through rim and centre of curvature, the face for Rayleigh sums.
// So the terms are of the order of
//
//   scale = rho c |w| (1 + size / gap), times 1 + k a for Rayleigh sums.
//
// Two waves grow where others decay. A disc's Rayleigh sum has e^{+alpha R}. A shell's reference wave runs by way of
// the centre of curvature F, a distance roc - |p - F| this side of it, which is negative beside the shell: e^{alpha (|p
// - F|
// - roc)}, with coefficients that sum to nothing. Each is a factor of the scale.
//
// The widths evaluate the same formula and differ in how sine, cosine, exponential and sum are rounded: 32 epsilon of
// the scale, 7e-15. The plain forms also arrange the squared distances differently. These are differences of squares of
// the order of extent^2, extent = |p| + size, so that a coefficient loses (extent / gap)^2 and a phase
// k extent (extent / gap) of its digits: 64 epsilon of the scale, and 4 for each of these. Where gap is below a
// thousandth of the extent the forms are not compared with each other, but the widths still are. Single precision
// without lanes over points is the same to the bit; transients in single precision agree to 64 epsilon of a float,
// decomposed ones in double precision to 64 epsilon times the largest phase.
#include <cfloat>
#include <cmath>
#include <complex>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "excitation/hanning_pulse.h"
#include "excitation/t_cubed_pulse.h"
#include "excitation/tone_burst.h"
#include "fuzz/bytes.h"
#include "heat/bioheat_solver.h"
#include "host/embedded_host.h"
#include "tests/support/methods.h"

namespace {

using fuzz::Bytes;
using fuzz::require;
using kesto::host::guarded;
using kesto::host::Report;
using namespace scenes;

Element element_of(Bytes& bytes, Shape shape) {
  const double outer = bytes.between(0.5e-3, 2e-2), inner = outer * bytes.between(0.05, 0.95);
  const double roc = outer * bytes.between(1.02, 6), height = bytes.between(0.5e-3, 2e-2);
  Element e = make_element(shape, outer, inner, roc, height);
  e.face->set_phase(bytes.between(-3, 3));
  if (bytes.one_in(2)) {
    e.face->set_center(bytes.between(-1e-2, 1e-2), bytes.between(-1e-2, 1e-2), bytes.between(-1e-2, 1e-2));
    e.face->set_euler(bytes.between(-3, 3), bytes.between(-3, 3), bytes.between(-3, 3));
  }
  e.face->set_piston_apodization_index(bytes.below(4));
  return e;
}

template <class Method, std::size_t n>
const Method& method_of(Bytes& bytes, const Method (&methods)[n]) {
  return methods[bytes.below(n)];
}
template <class Method>
Shape shape_of(Bytes& bytes, const Method& method) {
  return bytes.one_in(2) ? method.last : method.first;
}

Medium medium_of(Bytes& bytes) {
  Medium m;
  m._soundspeed = bytes.between(1000, 2000);
  m._rho_density = bytes.between(800, 1200);
  m._f0 = bytes.between(1e5, 4e6);
  m._dBcmMHz = bytes.one_in(2) ? bytes.between(0, 3) : 0;
  return m;
}

// On the axis, the rim, its edge, the face, at the centre of curvature and near it, behind, far, nowhere.
double coordinate(Bytes& bytes, const Element& e) {
  switch (bytes.below(16)) {
    case 0: return 0;
    case 1: return e.outer;
    case 2: return -e.outer;
    case 3: return e.inner;
    case 4: return e.roc;
    case 5: return e.roc - std::sqrt(e.roc * e.roc - e.outer * e.outer);
    case 6: return e.roc + bytes.between(-1e-9, 1e-9);
    case 7: return e.height;
    case 8: return bytes.one_in(4) ? bytes.number(1e-2) : 1e3;
    case 9: return bytes.between(-1e-11, 1e-11);
    default: return bytes.between(-2, 4) * e.outer;
  }
}

// A box, or a list.
void place_points(Bytes& bytes, const Element& e, Scene& scene) {
  if (bytes.one_in(4)) {
    scene.box.resize(9);
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const double from = bytes.between(-1, 1) * e.outer, step = bytes.between(0.05, 1) * e.outer;
      scene.box[2 * axis] = from;
      scene.box[2 * axis + 1] = from + step * (bytes.below(4) + 0.5);
      scene.box[6 + axis] = step;
    }
    return;
  }
  scene.points.resize(static_cast<std::size_t>(1 + bytes.below(33)));
  for (Point& p : scene.points) p = {coordinate(bytes, e), coordinate(bytes, e), coordinate(bytes, e)};
}

struct Scenario {
  Element element;
  Scene scene;
};

// At every width in turn; the first is the baseline. The buffers start at 1, so that a point left alone shows.
std::vector<Outcome> computed(const Scenario& s, Computation compute) {
  std::vector<Outcome> fields;
  at_every_width([&](kesto::VectorTarget) {
    fields.push_back(run(s.scene, *s.element.face, compute, 1));
    const Report& report = fields.back().report;
    require(report.live_blocks == 0 || report.failed, "blocks left behind");
    require(report.bad_frees == 0, "bad frees");
    require(report.error == fields[0].report.error, "widths end in different errors", report.error);
    require(fields.back().answer == fields[0].answer, "widths answer differently");
  });
  return fields;
}

double smallest(std::initializer_list<double> values) {
  double least = DBL_MAX;
  for (const double v : values) least = std::fmin(least, std::fabs(v));
  return least;
}

// Distance from where a term of the sum is singular.
double gap_of(const Scenario& s, Kind kind, const Point& p) {
  const Element& e = s.element;
  const double r = std::hypot(p.x, p.y), z = p.z - e.roc;
  if (kind == Kind::far) return std::hypot(r, p.z);
  if (kind == Kind::rayleigh || kind == Kind::growing_rayleigh || kind == Kind::radiators || kind == Kind::floats) {
    return e.is_flat() ? std::fabs(p.z) : std::fabs(std::hypot(r, z) - e.roc);
  }
  if (kind == Kind::apodized) {  // rings of many radii
    NumericalIntegration rule;
    rule.allocate_memory(s.scene.nodes);
    rule.gauss_quadrature();
    double least = DBL_MAX;
    for (const double a : {e.outer, e.inner}) {
      for (int i = 0; i < s.scene.nodes; ++i)
        least = std::fmin(least, std::fabs(r - a * kesto::half_pi * (rule.abscissa[i] + 1)));
    }
    return least;
  }
  if (e.shape == Shape::rectangle) return smallest({p.x - e.outer, p.x + e.outer, p.y - e.height, p.y + e.height});
  if (e.is_flat()) return smallest({r - e.outer, e.has_hole() ? r - e.inner : DBL_MAX});
  const auto off_cone = [&](double a) {
    const double h = std::sqrt(e.roc * e.roc - a * a);
    return (r * h - a * std::fabs(z)) / e.roc;
  };
  return smallest({off_cone(e.outer), e.has_hole() ? off_cone(e.inner) : DBL_MAX});
}

struct Bound {
  double gap, scale, extent, k;
  double between_widths() const { return 32 * DBL_EPSILON * scale; }
  bool is_for_forms() const { return gap > 1e-3 * extent; }
  double between_forms() const {
    const double lost = extent / gap;
    return DBL_EPSILON * scale * (64 + 4 * (lost * lost + k * extent * lost));
  }
};

double size_of(const Element& e) {
  return e.shape == Shape::rectangle ? std::fmax(e.outer, e.height) : e.is_flat() ? e.outer : e.roc;
}

Bound bound_of(const Scenario& s, Kind kind, const Point& p) {
  const double size = size_of(s.element), k = kesto::two_pi * s.scene.medium._f0 / s.scene.medium._soundspeed;
  Bound b;
  b.k = k;
  b.extent = std::hypot(p.x, p.y, p.z) + size;
  b.gap = gap_of(s, kind, p);
  b.scale = s.scene.medium._rho_density * s.scene.medium._soundspeed * 1.5 * (1 + size / b.gap);
  if (kind != Kind::rim) b.scale *= 1 + k * size;
  if (kind == Kind::apodized) b.scale *= 10;  // of pi^2
  const double alpha = s.scene.medium._dBcmMHz * 100 / kesto::decibels_per_neper * s.scene.medium._f0 / 1e6;
  if (kind == Kind::growing_rayleigh) b.scale *= std::exp(alpha * b.extent);
  if (kind == Kind::rim && !s.element.is_flat() && p.z < s.element.roc) {
    const double beyond = std::hypot(p.x, p.y, p.z - s.element.roc) - s.element.roc;
    if (beyond > 0) b.scale *= std::exp(alpha * beyond);
  }
  return b;
}

std::string described(const Scenario& s, const char* name, const std::string& what, const Point& p, double difference,
                      double allowed) {
  char text[400];
  std::snprintf(
      text, sizeof text,
      "%s of shape %d, %s, at (%.17g, %.17g, %.17g), %d nodes, %g Hz, outer %.17g inner %.17g roc %.17g: off by "
      "%.3g, allowed %.3g",
      name, static_cast<int>(s.element.shape), what.c_str(), p.x, p.y, p.z, s.scene.nodes, s.scene.medium._f0,
      s.element.outer, s.element.inner, s.element.roc, difference, allowed);
  return text;
}

bool is_off(double a, double b, double allowed) {
  if (!std::isfinite(a) && !std::isfinite(b)) return false;
  return !(std::fabs(a - b) <= allowed) && !(std::isinf(allowed) || std::isnan(allowed));
}

// ---- continuous waves

// How much a radiator_cw takes: nodes for the point that is nearest to the face.
bool is_affordable(const Scenario& s, const std::vector<Point>& points) {
  const double wavelength = s.scene.medium._soundspeed / s.scene.medium._f0;
  for (const Point& p : points) {
    if (!(p.z > 0)) continue;
    const double size = std::sqrt(4 * wavelength * p.z / s.scene.nodes);
    const double nodes = (2 * s.element.outer / size + 1) * (2 * s.element.height / size + 1);
    if (nodes > 40 && nodes < 4e9) return false;
  }
  return true;
}

// Whether rounding may decide on which side of the faces' boundary a point lies.
bool is_undecided(const Element& e, const Point& p, double extent) {
  const double on = 1e-12 * extent;
  if (e.is_flat()) return std::fabs(p.z) < on;
  const double z = p.z - e.roc;
  const auto on_plane = [&](double a) { return std::fabs(z + std::sqrt(e.roc * e.roc - a * a)) < on; };
  return std::fabs(std::hypot(p.x, p.y, z) - e.roc) < on || on_plane(e.outer) || (e.has_hole() && on_plane(e.inner)) ||
         std::fabs(z) < 1e-9;  // the reference wave's side
}

void compare_with_plain(const Scenario& s, const WaveMethod& method, const Outcome& field) {
  const bool is_cheap = method.kind != Kind::apodized && method.kind != Kind::radiators;
  if (!is_cheap || method.kind == Kind::floats) return;
  const Sum sum = plain_sum(s.scene);
  for (std::size_t i = 0; i < field.local.size(); ++i) {
    const Point& p = field.local[i];
    const Bound bound = bound_of(s, method.kind, p);
    if (!bound.is_for_forms() || is_undecided(s.element, p, bound.extent)) continue;
    const Complex expected = Complex(1, 1) + method.plain(s.element, sum, p), got = field.pressure(i);
    const double allowed = bound.between_forms() + 2 * DBL_EPSILON;
    require(!is_off(got.real(), expected.real(), allowed) && !is_off(got.imag(), expected.imag(), allowed),
            "a field is not its plain form's",
            described(s, method.name, "baseline", p, std::abs(got - expected), allowed));
  }
}

void fuzz_continuous_wave(Bytes& bytes) {
  const WaveMethod& method = method_of(bytes, wave_methods);
  Scenario s{element_of(bytes, shape_of(bytes, method)), {}};
  s.scene.medium = medium_of(bytes), s.scene.nodes = 1 + bytes.below(24);
  place_points(bytes, s.element, s.scene);
  const Outcome placed = run(s.scene, *s.element.face, [](Transducer&) { return 0; });
  if (method.kind == Kind::radiators && !is_affordable(s, placed.local)) return;
  const std::vector<Outcome> fields = computed(s, method.compute);
  if (fields[0].report.failed || fields[0].answer != 0) return;
  for (std::size_t width = 1; width < fields.size(); ++width) {
    for (std::size_t i = 0; i < fields[0].values.size(); ++i) {
      const Point& p = placed.local[i % placed.local.size()];
      const double a = fields[0].values[i], b = fields[width].values[i];
      const double allowed = method.kind == Kind::floats ? 0 : bound_of(s, method.kind, p).between_widths();
      require(!is_off(a, b, allowed), "widths differ",
              described(s, method.name, "width " + std::to_string(width), p, std::fabs(a - b), allowed));
    }
  }
  compare_with_plain(s, method, fields[0]);
}

// ---- transients

struct Pulses {
  ToneBurst tone;
  HanningPulse hanning;
  TCubedPulse cubed;
};

void fuzz_transient(Bytes& bytes) {
  const TransientMethod& method = method_of(bytes, transient_methods);
  Scenario s{element_of(bytes, shape_of(bytes, method)), {}};
  s.scene.medium = medium_of(bytes), s.scene.nodes = 1 + bytes.below(12);
  place_points(bytes, s.element, s.scene);
  const double width = bytes.between(0.2e-6, 4e-6), f0 = bytes.between(5e5, 4e6);
  Pulses pulses{{1, f0, width, 0, 1}, {1, f0, width, 0, 2}, {1 / (width * width * width), f0, width, 1 / width, 3}};
  const int which = bytes.below(3);
  ExcitationFunction* const choices[] = {&pulses.tone, &pulses.hanning, &pulses.cubed};
  s.scene.pulse = choices[which];
  s.scene.delay = bytes.one_in(2) ? bytes.between(-2e-6, 2e-6) : 0;
  const double step = bytes.between(1e-8, 4e-7), from = bytes.between(-2e-6, 2e-5), samples = 1 + bytes.below(64);
  std::vector<double>& times = s.scene.times;  // empty for equal steps
  if (bytes.one_in(4)) {
    for (int k = 0; k < samples; ++k) times.push_back(from + step * (bytes.one_in(8) ? bytes.number(1) : k));
  }
  if (times.empty() || bytes.one_in(2)) {
    s.scene.deltat = step, s.scene.tmin = from, s.scene.tmax = from + step * (samples - 0.5);
  }
  const std::vector<Outcome> fields = computed(s, method.compute);
  const Points& points = fields[0].local;
  if (points.empty() || fields[0].report.failed || fields[0].answer != 0) return;
  require(fields[0].values.size() == points.size() * static_cast<std::size_t>(samples), "number of samples");
  // A decomposed t-cubed pulse cancels terms of (t / width)^3, with factors e^{t / width} that cancel too.
  double latest = std::fabs(from) + step * samples;
  for (const double t : times) latest = std::fmax(latest, std::fabs(t));
  const double cancelled = latest / width;
  const bool decomposed = method.sums == Sums::decomposed, in_floats = method.tolerance > 1e-6;
  const double lost = !decomposed || which != 2 ? 1 : std::exp(cancelled) * std::pow(1 + cancelled, 3);
  // Sines of phases omega t: the decomposition takes them apart, to where epsilon omega t is what is left.
  const double phase = 1 + kesto::two_pi * (f0 + 1 / width) * latest;
  for (std::size_t width_index = 1; width_index < fields.size(); ++width_index) {
    for (std::size_t i = 0; i < fields[0].values.size(); ++i) {
      // A sample at no finite time is 0 times NaN or is left alone, depending on what shares its lanes.
      if (!times.empty() && !std::isfinite(times[i / points.size()])) continue;
      const Point& p = points[i % points.size()];
      const double a = fields[0].values[i], b = fields[width_index].values[i];
      const bool rayleigh = method.compute == &Transducer::rayleigh_transient;
      const Bound bound = bound_of(s, rayleigh ? Kind::rayleigh : Kind::rim, p);
      const double digits = in_floats ? 64 * FLT_EPSILON : 64 * DBL_EPSILON * (1 + phase);
      const double allowed = digits * lost * 4 * bound.scale;
      require(!is_off(a, b, allowed), "widths differ",
              described(s, method.name, "width " + std::to_string(width_index) + ", pulse " + std::to_string(which), p,
                        std::fabs(a - b), allowed));
    }
  }
}

// ---- the steady temperature

void fuzz_solver(Bytes& bytes) {
  kesto::BioheatProblem problem;
  for (int* const side : {&problem.n0, &problem.n1, &problem.n2}) *side = 1 + bytes.below(24);
  for (double* const step : {&problem.dx, &problem.dy, &problem.dz}) *step = bytes.number(1e-3);
  problem.absorption = bytes.number(5), problem.impedance = bytes.number(1.5e6);
  problem.perfusion = bytes.number(5), problem.specific_heat_of_blood = bytes.number(3700);
  problem.conductivity = bytes.number(0.5), problem.sweeps = 1 + bytes.below(40);
  const auto count = static_cast<std::size_t>(problem.n0 * problem.n1 * problem.n2);
  std::vector<double> real(count), imag(count), heat(count);
  const double a = bytes.number(1e5), b = bytes.between(-1e3, 1e3);
  for (std::size_t n = 0; n < count; ++n) real[n] = a + b * static_cast<double>(n % 31), imag[n] = b - a;
  for (int specials = bytes.below(4); specials > 0; --specials) {
    const std::size_t at = (bytes.next() * 256u + bytes.next()) % count;
    real[at] = bytes.number(1e5);
  }
  std::vector<double> first;
  for (const kesto::VectorTarget target : kesto::all_vector_targets) {
    if (!kesto::is_available(target)) continue;
    std::vector<double> temperature(count, -1);
    const Report report = guarded([&] {
      kesto::solve_steady_bioheat(problem, real.data(), imag.data(), heat.data(), temperature.data(), target);
    });
    require(report.clean(), "the solver's blocks", report.error);
    if (first.empty()) first = temperature;
    for (std::size_t n = 0; n < count; ++n) {
      const bool both_nan = std::isnan(first[n]) && std::isnan(temperature[n]);
      require(both_nan || std::memcmp(&first[n], &temperature[n], sizeof(double)) == 0,
              "the temperature differs between widths", kesto::name_of(target));
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Bytes bytes(data, size);
  switch (bytes.below(4)) {
    case 0:
    case 1: fuzz_continuous_wave(bytes); break;
    case 2: fuzz_transient(bytes); break;
    default: fuzz_solver(bytes);
  }
  return 0;
}
