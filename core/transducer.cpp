#include "core/transducer.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iostream>

#include "core/internal/host.h"
#include "core/medium.h"
#include "core/numerical_integration.h"

namespace {

void print(std::ostream& out, const char* name, const CartesianCoordinate& c) {
  out << name << ".x: " << c.x << '\n' << name << ".y: " << c.y << '\n' << name << ".z: " << c.z << '\n';
}

}  // namespace

void Transducer::debug(int) {
  std::ostream& out = std::cout;
  out << "Global information\n";
  print(out, "center", center);
  print(out, "euler", euler);
  out << "Local information\n"
      << "Amplitude: " << amplitude << '\n'
      << "Phase: " << phase << '\n'
      << "Parameters Used:\n";
  if (medium != nullptr) {
    out << "F0: " << medium->_f0 << '\n'
        << "FS: " << medium->_fs << '\n'
        << "c_sound: " << medium->_soundspeed << '\n'
        << "rho_den: " << medium->_rho_density << '\n'
        << "atten: " << medium->_dBcmMHz << '\n';
  }
  out << "Grid: " << static_cast<const void*>(global_coordinate_grid) << '\n'
      << "Parameters: " << static_cast<const void*>(medium) << '\n';
  if (global_coordinate_grid != nullptr) {
    const CoordinateGrid& g = *global_coordinate_grid;
    out << "Number of obs points: " << g.npoints << '\n'
        << "X-range:" << g.xmin << " to " << g.xmax << '\n'
        << "Y-range:" << g.ymin << " to " << g.ymax << '\n'
        << "Z-range:" << g.zmin << " to " << g.zmax << '\n';
  }
  out << "Integral info\n";
  if (integral != nullptr) out << "Number of abscissas: " << integral->get_npoints() << '\n';
  out.flush();
}

void Transducer::mex_debug(int) {
  kesto::print("Element center: (%e, %e, %e)\n", center.x, center.y, center.z);
  kesto::print("Element Euler angles: (%e, %e, %e)\n", euler.x, euler.y, euler.z);
  kesto::print("Amplitude: %e\n", amplitude);
  kesto::print("Phase: %e\n", phase);
  kesto::print("Complex Weight: %e + %e i\n", complex_weight.real(), complex_weight.imag());
  kesto::print("Time Delay: %e\n", time_delay);
  kesto::print("Parameters:\n");
  if (medium != nullptr) {
    kesto::print("f0: %f\n", medium->_f0);
    kesto::print("fs: %f\n", medium->_fs);
    kesto::print("c: %f\n", medium->_soundspeed);
    kesto::print("density: %f\n", medium->_rho_density);
    kesto::print("attenuation: %f\n", medium->_dBcmMHz);
  }
  kesto::print("\nCoordinate grid:\n");
  if (global_coordinate_grid != nullptr) {
    const CoordinateGrid& g = *global_coordinate_grid;
    kesto::print("x range: %f to %f\n", g.xmin, g.xmax);
    kesto::print("y range: %f to %f\n", g.ymin, g.ymax);
    kesto::print("z range: %f to %f\n", g.zmin, g.zmax);
  }
}

void Transducer::set_center(CartesianCoordinate position) { center = position; }
void Transducer::set_center(double* xyz) { center = CartesianCoordinate(xyz[0], xyz[1], xyz[2]); }
void Transducer::set_center(double x, double y, double z) { center = CartesianCoordinate(x, y, z); }
void Transducer::set_euler(CartesianCoordinate angles) { euler = angles; }
void Transducer::set_euler(double* angles) { euler = CartesianCoordinate(angles[0], angles[1], angles[2]); }
void Transducer::set_euler(double first, double second, double third) {
  euler = CartesianCoordinate(first, second, third);
}

void Transducer::set_amplitude(double a) {
  amplitude = a;
  complex_weight = {a * std::cos(phase), a * std::sin(phase)};
}

void Transducer::set_phase(double phi) {
  phase = phi;
  complex_weight = {amplitude * std::cos(phi), amplitude * std::sin(phi)};
}

void Transducer::set_complex_weight(double* re, double* im) {
  complex_weight = {*re, im != nullptr ? *im : 0.0};
  kesto::warn("KESTO no longer uses the complex_weight property. Please use phase and amplitude instead.");
}

void Transducer::set_time_delay(double seconds) { time_delay = seconds; }
void Transducer::set_piston_apodization_index(int index) { piston_apodization_index = index; }
double Transducer::get_amplitude() const { return amplitude; }
double Transducer::get_phase() const { return phase; }
int Transducer::get_piston_apodization_index() const { return piston_apodization_index; }

void Transducer::set_global_coordinate_grid(CoordinateGrid* grid) { global_coordinate_grid = grid; }
void Transducer::set_integral_pointer(NumericalIntegration* rule) { integral = rule; }
void Transducer::set_medium(Medium* properties) { medium = properties; }
void Transducer::set_time_vector(TimeSamples* samples) { time_vector = samples; }

void Transducer::set_complex_pressure_pointers(double* re, double* im) {
  complex_pressure_real = re;
  complex_pressure_imag = im;
  transient_pressure = nullptr;
}

void Transducer::set_transient_pressure_pointer(double* p) {
  transient_pressure = p;
  complex_pressure_real = nullptr;
  complex_pressure_imag = nullptr;
}

kesto::Placement Transducer::placement() const {
  kesto::Placement p = {center, {}};
  std::copy(&rotation_matrix[0][0], &rotation_matrix[0][0] + 9, &p.rotation[0][0]);
  return p;
}

CartesianCoordinate Transducer::rotateTranslate(const CartesianCoordinate& p) { return placement().local(p); }

template <class Sample>
void Transducer::superpose_samples(int i, const Sample* s, int samples) {
  const std::ptrdiff_t points = global_coordinate_grid->npoints;
  for (std::ptrdiff_t t = 0; t < samples; ++t) transient_pressure[i + t * points] += static_cast<double>(s[t]);
}

void Transducer::superpose_transient_pressure(const int& i, const double* s) {
  superpose_samples(i, s, time_vector->nt);
}

void Transducer::superpose_transient_pressure(const int& i, const float* s) {
  superpose_samples(i, s, time_vector->nt);
}

void Transducer::call_superpose_transient_pressure(const int& i, const double* s) {
  superpose_samples(i, s, time_vector->nt_local);
}

void Transducer::zerofill_complex_pressure() {
  std::fill_n(complex_pressure_real, global_coordinate_grid->npoints, 0.0);
  std::fill_n(complex_pressure_imag, global_coordinate_grid->npoints, 0.0);
}

void Transducer::zerofill_transient_pressure() {
  std::fill_n(transient_pressure, std::ptrdiff_t{global_coordinate_grid->npoints} * time_vector->nt, 0.0);
}

double Transducer::get_impulse_begin_time() const { return impulse_begin_time; }

double Transducer::get_impulse_end_time() const {
  if (impulse_end_time < 0) kesto::warn("Impulse end time used before impulse_begin_and_end_times was called.\n");
  return impulse_end_time;
}

double Transducer::get_time_delay() { return time_delay; }
CartesianCoordinate Transducer::get_center() { return center; }

// The rows are the element's own axes in global coordinates; the last is the direction in which it radiates.
void Transducer::InitializeRotationMatrix() {
  const double sa = std::sin(euler.x), ca = std::cos(euler.x);
  const double sb = std::sin(euler.y), cb = std::cos(euler.y);
  const double sc = std::sin(euler.z), cc = std::cos(euler.z);
  const double rows[3][3] = {{sa * sb * sc + ca * cc, cb * sc, ca * sb * sc - sa * cc},
                             {sa * sb * cc - ca * sc, cb * cc, sa * sc + ca * cc * sb},
                             {sa * cb, -sb, ca * cb}};
  std::copy(&rows[0][0], &rows[0][0] + 9, &rotation_matrix[0][0]);
}
