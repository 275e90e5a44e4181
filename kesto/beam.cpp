#include "kesto/beam.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <ostream>

#include "kesto/engine/constants.h"
#include "kesto/internal/gauss.h"
#include "kesto/internal/source_field.h"

namespace kesto {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double refined_accuracy = 1e-9;

double& coordinate(Point& p, int axis) { return axis == 0 ? p.x : axis == 1 ? p.y : p.z; }

class BeamFigures {
 public:
  BeamFigures(const Field& field, std::size_t index)
      : field_(field),
        waves_(field.source, field.medium, field.frequencies[index]),
        values_(field.values.data() + index * field.grid.size()) {
    for (int a = 0; a < 3; ++a) {
      sorted_[a] = field.grid.axis(a);
      std::sort(sorted_[a].begin(), sorted_[a].end());
      sorted_[a].erase(std::unique(sorted_[a].begin(), sorted_[a].end()), sorted_[a].end());
    }
  }

  double amplitude(std::size_t i) const { return std::abs(values_[i]); }

  // From the largest of the grid's values: of the neighbours at half a step the largest, until the steps are small.
  Point refined_place(double& peak) const {
    std::size_t largest = 0;
    for (std::size_t i = 1; i < field_.grid.size(); ++i) {
      if (amplitude(i) > amplitude(largest)) largest = i;
    }
    Point place = field_.grid.point(largest);
    peak = amplitude(largest);
    if (!field_.grid.is_box()) return place;
    double step[3];
    for (int a = 0; a < 3; ++a) {
      const std::vector<double>& v = sorted_[a];
      step[a] = v.size() > 1 ? (v.back() - v.front()) / static_cast<double>(v.size() - 1) / 2 : 0;
    }
    peak = std::abs(waves_.at({place}, refined_accuracy)[0]);
    for (int round = 0; round < 60; ++round) {
      std::vector<Point> around;
      for (int x = -1; x <= 1; ++x) {
        for (int y = -1; y <= 1; ++y) {
          for (int z = -1; z <= 1; ++z) {
            if ((step[0] == 0 && x != 0) || (step[1] == 0 && y != 0) || (step[2] == 0 && z != 0)) continue;
            around.push_back(inside(place + Point{x * step[0], y * step[1], z * step[2]}));
          }
        }
      }
      const std::vector<std::complex<double>> found = waves_.at(around, refined_accuracy);
      std::size_t best = found.size();
      for (std::size_t i = 0; i < found.size(); ++i) {
        if (std::abs(found[i]) > peak) peak = std::abs(found[i]), best = i;
      }
      if (best < found.size()) {
        place = around[best];
      } else {
        for (double& s : step) s /= 2;
      }
      if (std::max({step[0], step[1], step[2]}) < 2e-5 * waves_.wavelength()) break;
    }
    return place;
  }

  Extent extent(const Point& place, int axis, double level) const {
    const std::vector<double>& v = sorted_[axis];
    if (!field_.grid.is_box() || v.size() < 2) return {nan, nan};
    Point p = place;
    const double at = coordinate(p, axis);
    std::vector<double> below, above;  // from the place outward
    for (const double x : v) (x < at ? below : above).push_back(x);
    std::reverse(below.begin(), below.end());
    return {crossing(place, axis, below, level), crossing(place, axis, above, level)};
  }

  // The plane's power, z the direction; the velocity is the fourth-order difference of the pressure.
  double power_through(double z) const {
    const std::vector<double>&x = sorted_[0], &y = sorted_[1];
    const double omega = 2 * full_pi * field_.medium.sound_speed / waves_.wavelength();
    const double step = 0.02 * waves_.wavelength();
    const Grid planes = Grid::box(x, y, {z - 2 * step, z - step, z, z + step, z + 2 * step});
    std::vector<double> re(planes.size()), im(planes.size());
    waves_.add(points_of(planes), refined_accuracy, re.data(), im.data());
    const std::size_t n = x.size() * y.size();
    const auto at = [&](std::size_t plane, std::size_t i) {
      return std::complex<double>(re[plane * n + i], im[plane * n + i]);
    };
    double sum = 0;
    for (std::size_t i = 0; i < n; ++i) {
      const std::complex<double> slope = (8.0 * (at(3, i) - at(1, i)) - (at(4, i) - at(0, i))) / (12 * step);
      const std::complex<double> velocity = slope / std::complex<double>(0, -omega * field_.medium.density);
      const double area = cell(x, i % x.size()) * cell(y, i / x.size());
      sum += area * 0.5 * (at(2, i) * std::conj(velocity)).real();
    }
    return sum;
  }

  double radiated_power(double frequency) const {
    double sum = 0;
    for (const Element& e : field_.source.elements) {
      if (e.velocity == 0) continue;
      std::vector<double> areas;
      const std::vector<Point> places = nodes_on(e, areas);
      const std::vector<std::complex<double>> p = waves_.at(places, 1e-6);
      const std::complex<double> velocity = phasor_of(e, frequency);
      for (std::size_t i = 0; i < p.size(); ++i) sum += 0.5 * areas[i] * (p[i] * std::conj(velocity)).real();
    }
    return sum;
  }

 private:
  Point inside(Point p) const {
    for (int a = 0; a < 3; ++a) {
      coordinate(p, a) = std::clamp(coordinate(p, a), sorted_[a].front(), sorted_[a].back());
    }
    return p;
  }

  static double cell(const std::vector<double>& v, std::size_t i) {
    const double low = i == 0 ? v[0] : v[i - 1], high = i + 1 == v.size() ? v[i] : v[i + 1];
    return (high - low) / 2;
  }

  std::vector<double> along(const Point& place, int axis, const std::vector<double>& at) const {
    std::vector<Point> places(at.size(), place);
    for (std::size_t i = 0; i < at.size(); ++i) coordinate(places[i], axis) = at[i];
    std::vector<double> amplitudes;
    for (const std::complex<double> p : waves_.at(places, refined_accuracy)) amplitudes.push_back(std::abs(p));
    return amplitudes;
  }

  // The first fall below the level among places from the peak outward, then between two of them by eighths.
  double crossing(Point place, int axis, const std::vector<double>& outward, double level) const {
    if (outward.empty()) return nan;
    double near = coordinate(place, axis), far = near;
    const std::vector<double> coarse = along(place, axis, outward);
    std::size_t i = 0;
    for (; i < coarse.size() && coarse[i] >= level; ++i) near = outward[i];
    if (i == coarse.size()) return nan;
    far = outward[i];
    for (int round = 0; round < 9; ++round) {
      std::vector<double> between;
      for (int part = 1; part <= 8; ++part) between.push_back(near + (far - near) * part / 8);
      const std::vector<double> fine = along(place, axis, between);
      std::size_t j = 0;
      while (j + 1 < fine.size() && fine[j] >= level) ++j;
      far = between[j];
      if (j > 0) near = between[j - 1];
    }
    return (near + far) / 2;
  }

  // A rule on the face: Gauss across, as fine as the waves ask for.
  std::vector<Point> nodes_on(const Element& e, std::vector<double>& areas) const {
    const Shape& s = e.shape;
    const double per_node = waves_.wavelength() / 4;
    const auto nodes_for = [&](double across) {
      return static_cast<int>(std::clamp(6 + across / per_node, 6.0, 400.0));
    };
    const Pose pose = pose_of(e);
    std::vector<Point> places;
    const auto put = [&](double x, double y, double z, double area) {
      Point p = e.position;
      p = p + x * Point{pose.axes[0][0], pose.axes[0][1], pose.axes[0][2]};
      p = p + y * Point{pose.axes[1][0], pose.axes[1][1], pose.axes[1][2]};
      // Just before the face, so that rounding does not put the place behind it.
      p = p + (z + 1e-6 * waves_.wavelength()) * Point{pose.axes[2][0], pose.axes[2][1], pose.axes[2][2]};
      places.push_back(p);
      areas.push_back(area);
    };
    if (s.kind() == Shape::Kind::rectangle) {
      const GaussRule across(nodes_for(s.outer())), up(nodes_for(s.inner()));
      for (int i = 0; i < across.size(); ++i) {
        for (int j = 0; j < up.size(); ++j) {
          put(across.node(i) * s.outer() / 2, up.node(j) * s.inner() / 2, 0,
              across.weight(i) * up.weight(j) * s.area() / 4);
        }
      }
      return places;
    }
    // On a sphere as on a plane the area grows with the square of the chord.
    const double d = s.curvature();
    const auto height = [&](double a) { return d > 0 ? a * a / (d + std::sqrt((d - a) * (d + a))) : 0; };
    const auto chord2 = [&](double a) { return a * a + height(a) * height(a); };
    const double low = std::sqrt(chord2(s.inner())), high = std::sqrt(chord2(s.outer()));
    const GaussRule rule(nodes_for(s.outer() - s.inner()));
    const bool alone = field_.source.elements.size() == 1;  // then the field has the face's symmetry
    const int turns = alone ? 1 : nodes_for(2 * s.outer());
    for (int i = 0; i < rule.size(); ++i) {
      const double chord = (low + high) / 2 + rule.node(i) * (high - low) / 2;
      const double z = d > 0 ? chord * chord / (2 * d) : 0, r = std::sqrt(std::max(chord * chord - z * z, 0.0));
      const double area = full_pi * chord * rule.weight(i) * (high - low) / turns;
      for (int t = 0; t < turns; ++t) {
        const double angle = 2 * full_pi * (t + 0.5) / turns;
        put(r * std::cos(angle), r * std::sin(angle), z, area);
      }
    }
    return places;
  }

  const Field& field_;
  SourceField waves_;
  const std::complex<double>* values_;
  std::vector<double> sorted_[3];
};

}  // namespace

Beam beam(const Field& field, std::size_t index) {
  if (index >= field.frequencies.size()) {
    refuse(text_of("index is %zu: the field has %zu frequencies", index, field.frequencies.size()));
  }
  const std::size_t points = field.grid.size();
  if (field.values.size() != points * field.frequencies.size()) {
    refuse(text_of("field has %zu values: %zu points at %zu frequencies are expected", field.values.size(), points,
                   field.frequencies.size()));
  }
  const BeamFigures figures(field, index);
  Beam b{};
  b.frequency = field.frequencies[index];
  b.place = figures.refined_place(b.peak);
  for (int a = 0; a < 3; ++a) {
    b.minus_3_db[a] = figures.extent(b.place, a, b.peak * std::sqrt(0.5));
    b.minus_6_db[a] = figures.extent(b.place, a, b.peak / 2);
  }
  b.intensity = b.peak * b.peak / (2 * field.medium.density * field.medium.sound_speed);
  const double megahertz = b.frequency / 1e6;
  b.mechanical_index = b.peak / 1e6 / std::sqrt(megahertz);
  for (std::size_t i = 0; i < points; ++i) {
    const Point p = field.grid.point(i);
    const double derated = figures.amplitude(i) * std::pow(10, -0.3 * 100 * std::max(p.z, 0.0) * megahertz / 20);
    if (derated > b.derated_peak) b.derated_peak = derated, b.derated_place = p;
  }
  b.derated_mechanical_index = b.derated_peak / 1e6 / std::sqrt(megahertz);
  const bool plane = field.grid.is_box() && field.grid.x().size() >= 3 && field.grid.y().size() >= 3;
  b.power = plane ? figures.power_through(b.place.z) : nan;
  b.radiated_power = plane ? figures.radiated_power(b.frequency) : nan;
  return b;
}

std::ostream& operator<<(std::ostream& out, const Beam& b) {
  const Point& p = b.place;
  out << text_of("peak %.5g Pa at (%.3f, %.3f, %.3f) mm, %g MHz\n", b.peak, 1e3 * p.x, 1e3 * p.y, 1e3 * p.z,
                 b.frequency / 1e6);
  const auto extents = [&](const char* name, const Extent(&e)[3]) {
    for (int a = 0; a < 3; ++a) {
      if (std::isnan(e[a].from) && std::isnan(e[a].to)) continue;
      out << text_of("%s along %c: %.3f to %.3f mm, %.3f mm\n", name, "xyz"[a], 1e3 * e[a].from, 1e3 * e[a].to,
                     1e3 * e[a].length());
    }
  };
  extents("-3 dB", b.minus_3_db);
  extents("-6 dB", b.minus_6_db);
  out << text_of("intensity %.4g W/cm^2, mechanical index %.3f\n", b.intensity / 1e4, b.mechanical_index);
  out << text_of("derated by 0.3 dB/(cm MHz): %.4g Pa at z = %.3f mm, mechanical index %.3f\n", b.derated_peak,
                 1e3 * b.derated_place.z, b.derated_mechanical_index);
  if (!std::isnan(b.power)) {
    out << text_of("power through z = %.3f mm: %.4g W, of %.4g W radiated\n", 1e3 * p.z, b.power, b.radiated_power);
  }
  return out;
}

}  // namespace kesto
