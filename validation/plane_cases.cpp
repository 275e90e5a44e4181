// The library's fields in planes, near field included, against a far finer Rayleigh sum.
#include <algorithm>
#include <cmath>
#include <string>

#include "validation/cases.h"
#include "validation/computation.h"

namespace kesto::validation {

namespace {

constexpr int nodes = 512;
constexpr double azimuth = 0.6;  // of the oblique plane, rad

// Two resolutions of midpoint cells tell their order.
constexpr int few_cells = 160, many_cells = 320;

class PlaneCases {
 public:
  PlaneCases(Report& report, Table& table, const Geometry& geometry)
      : report_(report),
        table_(table),
        geometry_(geometry),
        straight_(every(geometry.plane, report.quick ? 9 : 1)),
        oblique_(turned(straight_, azimuth)) {}

  void run() {
    const Field lossless = rayleigh_sum(*geometry_.face, water, straight_);
    const Field attenuated = rayleigh_sum(*geometry_.face, lossy, straight_);
    compare_references(lossless);
    look_behind();
    if (geometry_.roc > 0 && geometry_.hole == 0) look_on_sphere();
    compare("fnm_cw, lossless", nearest(water, straight_), lossless, 1e-12);
    compare("fnm_cw, lossy", nearest(lossy, straight_), times(lossy.nearest_over_rayleigh(), attenuated), 1e-12);
    compare("fnm_cw, lossless, oblique plane", nearest(water, oblique_), rayleigh_sum(*geometry_.face, water, oblique_),
            1e-12);
    Fluid same_turn = water;
    same_turn.turn = turn_of_core;
    compare("fnm_cw, lossless, k of the fine sum with the core's pi", nearest(water, straight_),
            rayleigh_sum(*geometry_.face, same_turn, straight_), 1e-13);
    if (geometry_.name == "rectangle") {
      const double limit = 1e-12;
      compare("rayleigh_cw, lossless", rayleigh(water, nodes, plain), lossless, limit);
      compare("rayleigh_cw, lossy", rayleigh(lossy, nodes, plain), attenuated, limit);
      return;
    }
    compare_cells("rayleigh_cw, lossless", water, plain, lossless);
    if (geometry_.roc > 0) {
      compare_cells("rayleigh_cw, lossy", lossy, plain, attenuated);
      // The field of a surface of revolution is that of the straight plane; the sum takes x for the offset.
      const double off = error_of(library_field(geometry_, water, oblique_, many_cells, plain), lossless);
      table_.row("%s,\"rayleigh_cw in the oblique plane\",%.3g", geometry_.name.c_str(), off);
      report_.note(geometry_.name + ", rayleigh_cw in the oblique plane, where it is no Rayleigh sum", off);
      return;
    }
    Fluid growing = lossy;
    growing.attenuation = -lossy.attenuation;
    compare_cells("rayleigh_cw, lossy: grows", lossy, plain, rayleigh_sum(*geometry_.face, growing, straight_));
    compare_cells("rayleigh_cw_apodized 0, lossy", lossy, &Transducer::rayleigh_cw_apodized, attenuated);
  }

 private:
  static constexpr Method plain = &Transducer::rayleigh_cw;

  static Field times(Complex factor, Field field) {
    for (Complex& p : field) p *= factor;
    return field;
  }

  Field nearest(const Fluid& fluid, const Points& points) const {
    return library_field(geometry_, fluid, points, nodes, &Transducer::fnm_cw);
  }
  Field rayleigh(const Fluid& fluid, int n, Method method) const {
    return library_field(geometry_, fluid, straight_, n, method);
  }

  void compare(const std::string& what, const Field& field, const Field& reference, double limit) {
    const double error = error_of(field, reference);
    table_.row("%s,\"%s\",%.3g", geometry_.name.c_str(), what.c_str(), error);
    report_.add({geometry_.name + ", " + what, error, limit});
  }

  // The reference is sound: finer panels and, on the axis, the closed form agree with it.
  void compare_references(const Field& lossless) {
    compare("the fine sum itself, refined", lossless, rayleigh_sum(*geometry_.face, water, straight_, 2), 1e-13);
    Points axis;
    Field closed;
    for (const Point& p : straight_) {
      if (p.x != 0) continue;
      axis.push_back(p);
      closed.push_back(geometry_.on_axis(lossy, p.z) / lossy.nearest_over_rayleigh());
    }
    compare("the fine sum itself, on the axis, lossy", rayleigh_sum(*geometry_.face, lossy, axis), closed, 1e-12);
  }

  // Nothing is computed behind the face. A spherical annulus has two rim planes; between them the cap is left out and
  // the smaller one that it lacks is not.
  void look_behind() {
    Points behind, between_rims;
    const double rim = std::asin(geometry_.roc > 0 ? geometry_.radius / geometry_.roc : 1);
    const double hole_depth =
        geometry_.roc - std::sqrt(geometry_.roc * geometry_.roc - geometry_.hole * geometry_.hole);
    for (const double s : {0.25, 1.0, 4.0}) {
      for (const double part : spaced(0, 0.9, 10)) {
        const double beyond = s * water.wavelength(), theta = part * rim, r = geometry_.roc + beyond;
        const Point at_sphere = {r * std::sin(theta), 0, geometry_.roc - r * std::cos(theta)};
        const bool flat = geometry_.roc == 0;
        const Point p = flat ? Point{part * geometry_.radius, 0, -beyond} : at_sphere;
        (flat || geometry_.hole == 0 || p.z < hole_depth ? behind : between_rims).push_back(p);
      }
    }
    const double peak = largest(nearest(water, straight_));
    report_.add({geometry_.name + ", fnm_cw behind the face", largest(nearest(water, behind)) / peak, 0});
    if (between_rims.empty()) return;
    const std::string name = geometry_.name + ", fnm_cw behind the face, between its rim planes: not nothing";
    report_.note(name, largest(nearest(water, between_rims)) / peak);
  }

  // A point computed to lie on the sphere is off it by rounding, to either side.
  void look_on_sphere() {
    Points points;
    const double rim = std::asin(geometry_.radius / geometry_.roc);
    for (int i = 1; i < 1000; ++i) {
      const double theta = rim * i / 1001;
      points.push_back({geometry_.roc * std::sin(theta), 0, geometry_.roc - geometry_.roc * std::cos(theta)});
    }
    const Field field = library_field(geometry_, water, points, 64, &Transducer::fnm_cw);
    const auto nothing = std::count(field.begin(), field.end(), Complex());
    report_.note(geometry_.name + ", fnm_cw: of 999 points on the sphere so many get nothing",
                 static_cast<double>(nothing));
  }

  // Midpoint cells: a small error that falls with the square of their size.
  void compare_cells(const std::string& what, const Fluid& fluid, Method method, const Field& reference) {
    const double coarse = error_of(rayleigh(fluid, few_cells, method), reference);
    const double fine = error_of(rayleigh(fluid, many_cells, method), reference);
    const std::string cells = what + ", " + std::to_string(many_cells) + " x " + std::to_string(many_cells);
    table_.row("%s,\"%s\",%.3g", geometry_.name.c_str(), cells.c_str(), fine);
    report_.add({geometry_.name + ", " + cells, fine, 2e-3});
    report_.add({geometry_.name + ", " + what + ": order less 2", std::abs(std::log2(coarse / fine) - 2), 0.1});
  }

  Report& report_;
  Table& table_;
  const Geometry& geometry_;
  Points straight_, oblique_;
};

}  // namespace

void plane_cases(Report& report) {
  report.heading("B  fields in planes against a far finer Rayleigh sum: error over the largest amplitude");
  Table table(report.path("planes.csv"), "geometry,field,error");
  for (const Geometry& geometry : geometries()) PlaneCases(report, table, geometry).run();
  table.close();
}

}  // namespace kesto::validation
