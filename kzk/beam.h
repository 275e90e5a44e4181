// Nonlinear beams of axisymmetric sources: the KZK equation
//   d^2p/dz dtau = (c/2) lap_r p + absorption + (beta / 2 rho c^3) d^2(p^2)/dtau^2,  tau = t - z/c,
// marched plane by plane in the source's own frame, as harmonics of a continuous wave or as waveforms of a pulse.
#pragma once

#include <complex>
#include <cstddef>
#include <functional>
#include <limits>

class ExcitationFunction;
class Medium;

namespace kesto {

// A disc (inner radius 0, infinite curvature), a flat annulus, or a shell that radiates towards its centre of
// curvature. Its apex is the origin and its axis z.
struct BeamSource {
  double radius = 0;                                           // m
  double inner_radius = 0;                                     // m
  double curvature = std::numeric_limits<double>::infinity();  // radius of curvature, m
};

// Points with z <= 0 are skipped.
struct BeamPoints {
  std::size_t count = 0;
  const double *r = nullptr, *z = nullptr;  // m
};

// Told how far a march has come, from 0 to 1; false stops it.
using BeamProgress = std::function<bool(double done)>;

// What the caller asks for; 0 leaves the choice to the solver. Steps and radius are those at the source: in the beam's
// coordinates they scale with s(z), along z with s^2.
struct HarmonicSteps {
  double dz = 0, dr = 0, rmax = 0;  // m
  int harmonics = 0;
};

struct PulseSteps {
  double dz = 0, dr = 0, rmax = 0;  // m
  double dtau = 0, length = 0;      // step and length of the retarded time, s
};

// What a march used.
struct BeamReport {
  double dz = 0, dr = 0, rmax = 0, dtau = 0;
  int planes = 0, nodes = 0, harmonics = 0, samples = 0;
  std::size_t bytes = 0;  // of fields and tables
};

// Harmonics first..last, p = Re sum_n p_n e^{jn omega t}, of a source that vibrates with the complex normal velocity
// (m/s) at the medium's _f0: harmonic n of point i goes to pressure[(n - first) count + i], 0 for points that are
// skipped. Absorbs alpha(f0) n^y, y = _b when positive, else 1; _beta = 0 leaves the nonlinear step out. Prints a line
// with the choices it made. Errors come before anything is written; a warning says when the harmonics cannot carry the
// shock, or when points lie outside the domain. False when progress stopped the march: nothing is written then.
bool march_harmonics(const BeamSource& source, std::complex<double> velocity, const Medium& medium,
                     const HarmonicSteps& steps, const BeamPoints& points, int first, int last,
                     std::complex<double>* pressure, const BeamProgress& progress = {}, BeamReport* report = nullptr);

// The pressure of equal heating at each point, sqrt(sum_n alpha(n f0) / alpha(f0) |p_n|^2): to a heat source
// proportional to alpha(f0) |p|^2 it is the whole beam. `pressure` holds the harmonics from 1 on.
void equivalent_pressure(const Medium& medium, int harmonics, std::size_t count, const std::complex<double>* pressure,
                         double* equivalent);

// The waveforms of a source with the normal velocity amplitude v(t - delay): deliver(i, trace) once for each point that
// is not skipped, trace[k] the pressure at times[k], in any order of the points. Otherwise as above.
bool march_pulse(const BeamSource& source, const ExcitationFunction& velocity, double amplitude, double delay,
                 const Medium& medium, const PulseSteps& steps, const BeamPoints& points, const double* times,
                 int samples, const std::function<void(std::size_t point, const double* trace)>& deliver,
                 const BeamProgress& progress = {}, BeamReport* report = nullptr);

}  // namespace kesto
