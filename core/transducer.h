// A radiating element: what every geometry shares.
#pragma once

#include <complex>

#include "core/coordinate_grid.h"
#include "core/time_samples.h"

class ExcitationFunction;
class Medium;
class NumericalIntegration;

namespace kesto {

// From global into an element's coordinates: the rows of the matrix are its axes.
struct Placement {
  CartesianCoordinate center;
  double rotation[3][3];

  CartesianCoordinate local(const CartesianCoordinate& p) const {
    const double dx = p.x - center.x, dy = p.y - center.y, dz = p.z - center.z;
    const auto along = [=](const double(&row)[3]) { return row[0] * dx + row[1] * dy + row[2] * dz; };
    return {along(rotation[0]), along(rotation[1]), along(rotation[2])};
  }
};

}  // namespace kesto

// Placement, complex weight and delay of an element, and what a computation reads and writes. Grid, medium, rule, time
// samples, signal and output buffers belong to the caller and outlive the computation; one that is missing is an error.
//
// Every computation adds to the output buffer, so that the fields of several elements called in turn sum up, and
// returns 0 when it ran and 1 when the geometry does not offer it.
class Transducer {
 public:
  Transducer() = default;
  virtual ~Transducer() = default;

  // Prints the element's parameters on the standard output, or on the host's console. The argument is not used.
  virtual void debug(int);
  virtual void mex_debug(int);

  virtual void set_center(CartesianCoordinate position);
  virtual void set_center(double* xyz);
  virtual void set_center(double x, double y, double z);
  virtual void set_euler(CartesianCoordinate angles);
  virtual void set_euler(double* angles);
  virtual void set_euler(double first, double second, double third);
  virtual void set_amplitude(double a);
  virtual void set_phase(double phi);
  // Leaves amplitude and phase alone; im may be null. Warns: phase and amplitude are the way to set the weight.
  virtual void set_complex_weight(double* re, double* im);
  virtual void set_time_delay(double seconds);
  virtual void set_piston_apodization_index(int index);
  virtual double get_amplitude() const;
  virtual double get_phase() const;
  virtual int get_piston_apodization_index() const;

  virtual void set_global_coordinate_grid(CoordinateGrid* grid);
  // Used as its owner left it, and expected on [-1, 1]. Discs and flat annuli fill it anew with the Gauss rule on [0,
  // pi] and leave it so, whatever it was; radiator_cw changes its number of nodes.
  virtual void set_integral_pointer(NumericalIntegration* rule);
  virtual void set_medium(Medium* properties);
  virtual void set_time_vector(TimeSamples* samples);
  // One double per observation point each. Clears the transient pointer.
  virtual void set_complex_pressure_pointers(double* re, double* im);
  // Time-major: sample t of point i at i + t * points. Clears the complex pointers.
  virtual void set_transient_pressure_pointer(double* p);

  virtual int farfield_cw() = 0;
  virtual int fnm_cw() = 0;
  virtual int fnm_cw_apodized() = 0;
  virtual int fnm_cw_single() = 0;
  virtual int fnm_cw_sse() = 0;
  virtual int fnm_cw_sse2() = 0;
  virtual int radiator_cw() = 0;
  virtual int rayleigh_cw() = 0;
  virtual int rayleigh_cw_apodized() = 0;
  virtual int rayleigh_cw_sse() = 0;
  virtual int impulse_begin_and_end_times() = 0;
  virtual int impulse_response() = 0;
  virtual int fnm_transient() = 0;
  virtual int fnm_transient_behind_source() = 0;
  virtual int fnm_fdtsd() = 0;
  virtual int fnm_tsd() = 0;
  virtual int init_fnm_tsd() = 0;
  virtual int call_fnm_tsd() = 0;
  virtual int free_fnm_tsd() = 0;
  virtual int fnm_tsd_behind_source() = 0;
  virtual int fnm_tsd_low_precision() = 0;
  virtual int fnm_tsd_sse() = 0;
  virtual int rayleigh_transient() = 0;
  virtual int kzk_transient() = 0;
  virtual int kzk_cw() = 0;

  // From global into local coordinates, where the face lies in z = 0 and radiates towards +z; with the rotation matrix
  // as InitializeRotationMatrix left it.
  virtual CartesianCoordinate rotateTranslate(const CartesianCoordinate& p);

  kesto::Placement placement() const;  // as rotateTranslate has it

  // Adds v, weighted already, to point i.
  void superpose_complex_pressure(const int& i, const std::complex<double>& v) {
    complex_pressure_real[i] += v.real();
    complex_pressure_imag[i] += v.imag();
  }
  // Adds the samples s, weighted and delayed already, to point i: nt of them.
  void superpose_transient_pressure(const int& i, const double* s);
  void superpose_transient_pressure(const int& i, const float* s);
  // The same with nt_local samples.
  void call_superpose_transient_pressure(const int& i, const double* s);
  void zerofill_complex_pressure();
  void zerofill_transient_pressure();

  double get_impulse_begin_time() const;
  double get_impulse_end_time() const;  // warns while it is negative: impulse_begin_and_end_times has not run
  double get_time_delay();
  CartesianCoordinate get_center();

  // From the Euler angles as they are now. Every computation starts with it.
  void InitializeRotationMatrix();

  ExcitationFunction* excitation = nullptr;
  CartesianCoordinate center;
  CartesianCoordinate euler;  // radians: x from +z towards +x, y towards -y, z about the element's own axis
  // amplitude e^{j phase} from the first set_amplitude or set_phase on. KEPT: zero before, so that the continuous waves
  // of a new element are silent.
  std::complex<double> complex_weight;
  double amplitude = 1.0;
  double phase = 0;       // radians
  double time_delay = 0;  // s
  double impulse_begin_time = -1.0;
  double impulse_end_time = -1.0;
  int piston_apodization_index = 0;
  CoordinateGrid* global_coordinate_grid = nullptr;
  Medium* medium = nullptr;
  NumericalIntegration* integral = nullptr;
  TimeSamples* time_vector = nullptr;
  double* complex_pressure_real = nullptr;
  double* complex_pressure_imag = nullptr;
  double* transient_pressure = nullptr;
  double rotation_matrix[3][3] = {};  // global to local

 private:
  template <class Sample>
  void superpose_samples(int i, const Sample* s, int samples);
};

namespace kesto {

// Answers 1, not offered, to every computation; a geometry overrides what it offers.
class DecliningTransducer : public Transducer {
 public:
  int farfield_cw() override { return 1; }
  int fnm_cw() override { return 1; }
  int fnm_cw_apodized() override { return 1; }
  int fnm_cw_single() override { return 1; }
  int fnm_cw_sse() override { return 1; }
  int fnm_cw_sse2() override { return 1; }
  int radiator_cw() override { return 1; }
  int rayleigh_cw() override { return 1; }
  int rayleigh_cw_apodized() override { return 1; }
  int rayleigh_cw_sse() override { return 1; }
  int impulse_begin_and_end_times() override { return 1; }
  int impulse_response() override { return 1; }
  int fnm_transient() override { return 1; }
  int fnm_transient_behind_source() override { return 1; }
  int fnm_fdtsd() override { return 1; }
  int fnm_tsd() override { return 1; }
  int init_fnm_tsd() override { return 1; }
  int call_fnm_tsd() override { return 1; }
  int free_fnm_tsd() override { return 1; }
  int fnm_tsd_behind_source() override { return 1; }
  int fnm_tsd_low_precision() override { return 1; }
  int fnm_tsd_sse() override { return 1; }
  int rayleigh_transient() override { return 1; }
  int kzk_transient() override { return 1; }
  int kzk_cw() override { return 1; }
};

}  // namespace kesto
