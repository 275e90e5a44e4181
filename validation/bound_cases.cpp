// Draws random cases and compares fields and their error bounds with the arc integral.
//
//   bound_cases [points] [seed]
//
// Faces, frequencies, media, poses, accuracies of 1e-2 to 1e-10 (bowls: of the focal value) and points are random, many
// of them on or next to rims, edges, faces, axis, focus, shadow line, or behind. Prints how many errors pass their
// bound, and how tight the bound is; fails if one does, or if the field differs from a quadrature of the surface.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "kesto/engine/engine.h"
#include "validation/arc_integral.h"
#include "validation/points.h"
#include "validation/rayleigh_sum.h"

namespace {

using namespace kesto;
using validation::Point;

class Draw {
 public:
  explicit Draw(unsigned long seed) : engine_(seed) {}
  double between(double low, double high) { return std::uniform_real_distribution<double>(low, high)(engine_); }
  double in_ratio(double low, double high) { return std::exp(between(std::log(low), std::log(high))); }
  double signed_in_ratio(double low, double high) { return (chance(0.5) ? 1 : -1) * in_ratio(low, high); }
  bool chance(double p) { return between(0, 1) < p; }
  int below(int n) { return std::uniform_int_distribution<int>(0, n - 1)(engine_); }

 private:
  std::mt19937_64 engine_;
};

enum Shape { disc, annulus, rectangle, bowl, bowl_annulus, shapes };
constexpr const char* names[shapes] = {"disc", "annulus", "rectangle", "bowl", "bowl annulus"};

Face draw_face(Draw& draw, Shape shape, double k) {
  const double a = draw.in_ratio(0.1, 500) / k, inner = a * draw.between(0.05, 0.98);
  const double half_angle =
      draw.chance(0.15) ? validation::pi / 2 - draw.in_ratio(1e-6, 0.5) : draw.in_ratio(0.02, 1.5);
  const double d = a / std::sin(half_angle);
  switch (shape) {
    case disc: return Face::disc(a);
    case annulus: return Face::annulus(inner, a);
    case rectangle: {
      const double b = a * draw.in_ratio(0.01, 1);
      return draw.chance(0.5) ? Face::rectangle(2 * a, 2 * b) : Face::rectangle(2 * b, 2 * a);
    }
    case bowl: return Face::bowl(a, d);
    default: return Face::bowl_annulus(inner, a, d);
  }
}

// The wave that comes together in the focus; 1 for flat faces.
double gain_of(const Face& face, double k) {
  if (face.kind != Face::Kind::bowl) return 1;
  const double d = face.curvature, h = std::sqrt(std::max((d - face.outer) * (d + face.outer), 0.0));
  return std::max(1.0, k * (d - h));
}

// A point where something is about to happen, or any.
Point draw_point(Draw& draw, const Face& face) {
  const double size = std::max(face.outer, face.inner),
               a = draw.chance(0.3) && face.inner > 0 ? face.inner : face.outer;
  const bool is_rectangle = face.kind == Face::Kind::rectangle, is_bowl = face.kind == Face::Kind::bowl;
  const double d = face.curvature, depth = is_bowl ? d - std::sqrt(std::max((d - a) * (d + a), 0.0)) : 0;
  const double angle = draw.between(0, 2 * validation::pi);
  const auto off = [&] { return draw.chance(0.2) ? 0 : size * draw.signed_in_ratio(1e-9, 1); };
  const auto at = [&](double r, double z) { return Point{r * std::cos(angle), r * std::sin(angle), z}; };
  const auto height = [&] { return draw.chance(0.5) ? draw.between(0, 4) * size : size * draw.in_ratio(1e-6, 1e3); };
  switch (draw.below(8)) {
    case 0:  // the rim or an edge
      if (!is_rectangle) return at(a + off(), depth + off());
      if (draw.chance(0.5)) return {face.outer + off(), draw.between(-1.5, 1.5) * face.inner, off()};
      return {draw.between(-1.5, 1.5) * face.outer, -face.inner + off(), off()};
    case 1:  // over the rim, or a corner
      if (!is_rectangle) return at(a + off(), depth + height());
      return {face.outer + off(), face.inner + off(), draw.chance(0.5) ? off() : height()};
    case 2: return {draw.chance(0.5) ? 0 : off(), draw.chance(0.5) ? 0 : off(), height()};  // the axis
    case 3: {                                                                               // the face
      if (!is_bowl)
        return {draw.between(-1.2, 1.2) * face.outer, draw.between(-1.2, 1.2) * (is_rectangle ? face.inner : a), 0};
      const double polar = draw.between(0, 1.1) * std::asin(std::min(a / d, 1.0)),
                   radius = d + (draw.chance(0.5) ? 0 : off());
      return at(radius * std::sin(polar), d - radius * std::cos(polar));
    }
    case 4:  // the focus
      if (is_bowl) return {draw.chance(0.3) ? 0 : off() * 0.01, 0, d + (draw.chance(0.3) ? 0 : off() * 0.01)};
      return {draw.between(-2, 2) * face.outer, draw.between(-2, 2) * size, -height()};
    case 5:  // the shadow line: through the rim and the centre of curvature
      if (is_bowl) {
        const double along = draw.between(-2, 1.5);
        return at(std::fabs(along) * a + off() * 0.01, d + along * (d - depth) + off() * 0.01);
      }
      return {draw.between(-1, 1) * face.outer, draw.between(-1, 1) * size, height()};
    default:
      return {draw.signed_in_ratio(1e-3, 10) * size, draw.signed_in_ratio(1e-3, 10) * size,
              (draw.chance(0.15) ? -1 : 1) * height()};
  }
}

Pose draw_pose(Draw& draw, double size) {
  Pose pose;
  if (draw.chance(0.7)) return pose;
  for (double& c : pose.centre) c = draw.between(-3, 3) * size;
  double q[4], norm = 0;
  for (double& x : q) x = draw.between(-1, 1), norm += x * x;
  for (double& x : q) x /= std::sqrt(norm);
  for (int i = 0; i < 3; ++i) {  // the rotation of a quaternion
    for (int j = 0; j < 3; ++j) {
      const int l = 3 - i - j;
      if (i == j) {
        pose.axes[i][i] = 1 - 2 * (q[1 + (i + 1) % 3] * q[1 + (i + 1) % 3] + q[1 + (i + 2) % 3] * q[1 + (i + 2) % 3]);
      } else {
        pose.axes[i][j] = 2 * (q[1 + i] * q[1 + j] + ((j + 1) % 3 == i ? 1 : -1) * q[0] * q[1 + l]);
      }
    }
  }
  return pose;
}

// The engine at 1e-12 beside a plain quadrature of the surface, lossless and lossy: the largest difference over the
// peak.
double difference_from_surface(const Face& face, const validation::Face& surface, const validation::Fluid& fluid) {
  const validation::Points points = {{0, 0, 0.02}, {0.002, 0.001, 0.005}, {0.009, -0.004, 0.03}, {-0.02, 0.011, 0.06}};
  const validation::Field reference = validation::rayleigh_sum(surface, fluid, points);
  const FieldElement element;
  const FieldRequest request = {fluid.frequency, {fluid.soundspeed, fluid.density, fluid.alpha()}, 1e-12};
  double worst = 0;
  for (std::size_t i = 0; i < points.size(); ++i) {
    double re = 0, im = 0;
    add_field(face, &element, 1, FieldPoints::list(1, &points[i].x, &points[i].y, &points[i].z), request, {&re, &im});
    const double d = std::abs(std::complex<double>(re, im) - reference[i]) / validation::largest(reference);
    if (!(d <= worst)) worst = d;
  }
  return worst;
}

bool agrees_with_surface() {
  bool agrees = true;
  for (const validation::Fluid& fluid : {validation::water, validation::lossy}) {
    const double differences[] = {
        difference_from_surface(Face::disc(7.5e-3), validation::FlatRing(0, 7.5e-3), fluid),
        difference_from_surface(Face::rectangle(5e-3, 10e-3), validation::FlatRectangle(5e-3, 10e-3), fluid),
        difference_from_surface(Face::bowl(15e-3, 40e-3), validation::SphericalZone(0, 15e-3, 40e-3), fluid)};
    std::printf("from a quadrature of the surface, %g dB/(cm MHz): disc %.2g, rectangle %.2g, bowl %.2g of the peak\n",
                fluid.attenuation, differences[0], differences[1], differences[2]);
    for (const double d : differences) agrees = agrees && d <= 1e-10;
  }
  return agrees;
}

struct Count {
  long points = 0, violations = 0, beyond_accuracy = 0;
  double worst = 0;
  std::vector<double> bound_by_error;
};

}  // namespace

int main(int argc, char** argv) {
  const long wanted = argc > 1 ? std::atol(argv[1]) : 10000;
  Draw draw(argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 1);
  Count counts[shapes];
  constexpr int most = 24;
  for (long done = 0; done < wanted;) {
    const Shape shape = static_cast<Shape>(draw.below(shapes));
    const double frequency = draw.in_ratio(1e4, 1e7), c = 1500, rho = 1000;
    const double k = 2 * validation::pi * frequency / c, velocity = draw.in_ratio(1e-3, 1);
    const Face face = draw_face(draw, shape, k);
    const double size = std::max(face.outer, face.inner), reach = 2 * face.curvature + size;
    const double attenuation = draw.chance(0.6) ? 0 : std::min(draw.in_ratio(1e-5, 0.3) * k, 50 / reach);
    const double asked = draw.in_ratio(1e-10, 1e-2) * gain_of(face, k);
    const FieldElement element = {draw_pose(draw, size), velocity};
    // Neighbours share a choice of rule: some lists are clusters, of any size.
    double x[most], y[most], z[most], re[most] = {}, im[most] = {}, bound[most] = {};
    const int count = 1 + draw.below(most);
    const bool cluster = draw.chance(0.5);
    const double spread = size * draw.in_ratio(1e-6, 1);
    Point centre = draw_point(draw, face);
    for (int i = 0; i < count; ++i) {
      Point p = cluster ? Point{centre.x + spread * draw.between(-1, 1), centre.y + spread * draw.between(-1, 1),
                                centre.z + spread * draw.between(-1, 1)}
                        : draw_point(draw, face);
      const double local[3] = {p.x, p.y, p.z};
      double global[3];
      for (int axis = 0; axis < 3; ++axis) {
        global[axis] = element.pose.centre[axis];
        for (int row = 0; row < 3; ++row) global[axis] += element.pose.axes[row][axis] * local[row];
      }
      x[i] = global[0], y[i] = global[1], z[i] = global[2];
    }
    FieldRequest request = {frequency, {c, rho, attenuation}, asked, Behind::as_integral};
    add_field(face, &element, 1, FieldPoints::list(static_cast<std::size_t>(count), x, y, z), request, {re, im, bound});
    for (int i = 0; i < count; ++i) {
      long double local[3];
      for (int row = 0; row < 3; ++row) {
        const double* const axis = element.pose.axes[row];
        local[row] = static_cast<long double>(axis[0]) * (static_cast<long double>(x[i]) - element.pose.centre[0]) +
                     static_cast<long double>(axis[1]) * (static_cast<long double>(y[i]) - element.pose.centre[1]) +
                     static_cast<long double>(axis[2]) * (static_cast<long double>(z[i]) - element.pose.centre[2]);
      }
      const long double exact_k = 6.283185307179586476925286766559L * frequency / c;
      const std::complex<double> reference =
          rho * c * velocity * validation::arc_integral(face, exact_k, attenuation, local[0], local[1], local[2]);
      const double error = std::abs(std::complex<double>(re[i], im[i]) - reference);
      Count& s = counts[shape];
      ++s.points;
      const double ratio = error / bound[i];
      if (!(ratio <= 1)) {
        if (++s.violations <= 5) {
          std::printf(
              "%s: error %.3g, bound %.3g, asked %.3g (rho c v = 1); ka %.4g, inner/outer %.6g, d/a %.9g, loss %.3g, "
              "cluster %d, pose %d, at (%.17g, %.17g, %.17g) a, |p| %.3g\n",
              names[shape], error / (rho * c * velocity), bound[i] / (rho * c * velocity), asked, k * face.outer,
              face.inner / face.outer, face.curvature / face.outer, attenuation / k, cluster,
              element.pose.centre[0] != 0, double(local[0]) / face.outer, double(local[1]) / face.outer,
              double(local[2]) / face.outer, std::abs(reference) / (rho * c * velocity));
        }
      }
      if (bound[i] > rho * c * velocity * asked * 1.001) ++s.beyond_accuracy;
      s.worst = ratio <= s.worst ? s.worst : ratio;
      s.bound_by_error.push_back(1 / std::max(ratio, 1e-9));
      ++done;
    }
  }
  const bool agrees = agrees_with_surface();
  long violations = 0;
  std::printf("%-14s%10s%12s%14s%16s%18s\n", "", "points", "violations", "worst", "median", "bound > asked");
  for (int shape = 0; shape < shapes; ++shape) {
    const Count& s = counts[shape];
    std::printf("%-14s%10ld%12ld%14.3g%16.3g%18ld\n", names[shape], s.points, s.violations, s.worst,
                s.bound_by_error.empty() ? 0 : validation::median(s.bound_by_error), s.beyond_accuracy);
    violations += s.violations;
  }
  std::printf("worst: error / bound; median: bound / error; bound > asked: where rounding leaves no more\n");
  return violations == 0 && agrees ? 0 : 1;
}
