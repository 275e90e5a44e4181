// The field of a rectangle as that of many small radiators.
#include <climits>
#include <cmath>
#include <complex>
#include <optional>

#include "core/constants.h"
#include "core/internal/host.h"
#include "core/numerical_helpers.h"
#include "fields/context.h"
#include "fields/point_road.h"
#include "transducers/rectangle/tables.h"

namespace kesto {

namespace {

// The nodes in either direction for a point at height z, from the rule's own number.
int nodes_for(const RectangularTransducer& piston, double wavelength, double z, int given) {
  const double size = std::sqrt(4 * wavelength * z / given);
  const double count = (std::floor(piston.width / size) + 1) * (std::floor(piston.height / size) + 1);
  if (!(count >= 1 && count <= INT_MAX)) fail("radiator_cw needs more nodes than an index can count.\n");
  return static_cast<int>(count);
}

Complex sinc(Complex u) { return u == 0.0 ? 1.0 : std::sin(u) / u; }

}  // namespace

}  // namespace kesto

using namespace kesto;

int RectangularTransducer::radiator_cw() {
  const Medium& properties = medium_of(*this);
  const double wavelength = properties._soundspeed / frequency_of_wavelength(properties);
  if (is_silent(*this)) return 0;
  require_complex_output(*this);
  const Complex kappa(two_pi / wavelength, -attenuation_of(properties));
  const Complex exponent = kappa * Complex(0, 1), factor = rectangle_rayleigh_factor(*this);
  const int nodes = integral->get_npoints();
  std::optional<RectangleTables> tables;
  const auto in_front = [](const CartesianCoordinate& p) { return p.z > 0; };
  superpose_values(*this, in_front, [&](const CartesianCoordinate& p) {
    const int count = nodes_for(*this, wavelength, p.z, nodes);
    if (!tables || tables->n != count) {
      tables.reset();
      integral->allocate_memory(count);
      integral->gauss_quadrature();
      tables.emplace(*this);
    }
    const RectangleTables& t = *tables;
    Complex sum;
    for (int i = 0; i < count; ++i) {
      for (int j = 0; j < count; ++j) {
        const double dx = p.x - t.x[i], dy = p.y - t.y[j], distance = std::sqrt(dy * dy + dx * dx + p.z * p.z);
        // KEPT: a radiator's width times its offset from the middle, not from the point.
        const Complex u = t.x_weight[i] * t.x[i] * kappa / distance, v = t.y_weight[j] * t.y[j] * kappa / distance;
        const Complex wave = smart_exp(exponent.real() * distance, exponent.imag() * distance);
        sum += t.x_weight[i] * t.y_weight[j] * wave * sinc(u) * sinc(v) / distance;
      }
    }
    return sum * factor;
  });
  return 0;
}
