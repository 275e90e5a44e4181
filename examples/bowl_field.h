// The continuous-wave pressure of a focused bowl in a lossless fluid, by the Rayleigh integral.
//
// Apex of the bowl at z = 0, its axis along z, r the distance from the axis. Time dependence e^{+jwt}.
#pragma once

#include <complex>
#include <cstddef>
#include <functional>
#include <vector>

namespace kesto::example {

struct FocusedBowl {
  double curvature_radius;   // m
  double aperture_diameter;  // m
  double frequency;          // Hz
  double velocity;           // amplitude of the velocity normal to the surface, uniform, m/s
  double soundspeed;         // m/s
  double density;            // kg/m^3
};

// p = (j rho c k v / 2 pi) * integral over the bowl of e^{-jkR} / R dS: Gauss-Legendre in the polar angle of the bowl,
// midpoints in azimuth.
//
// Nodes are laid out for points no nearer to the bowl than a few wavelengths; `refinement` multiplies their number
// along both angles.
class BowlField {
 public:
  explicit BowlField(const FocusedBowl& bowl, int refinement = 1);

  std::complex<double> pressure(double r, double z) const;  // Pa

 private:
  // The bowl between two polar angles, shrunk to a circle.
  struct Ring {
    double radius, z;  // m
    double area;       // m^2
  };

  std::size_t azimuths(double r, const Ring& ring) const;

  double wavenumber_;            // rad/m
  std::complex<double> factor_;  // j rho c k v / 2 pi
  std::size_t refinement_;
  std::vector<Ring> rings_;
  std::vector<std::vector<double>> cosines_;  // [n]: of n azimuths spread over the half circle
};

struct AxialProfile {
  double focal_pressure;  // |p| at the centre of curvature, Pa
  double peak_pressure;   // largest |p|, Pa
  double peak_z;          // and its place, m
  double near_z, far_z;   // where |p| is half the peak (-6 dB), on either side of it, m
};
AxialProfile axial_profile(const FocusedBowl& bowl, const BowlField& field);

// The field in planes of constant z, tabulated along r; between the columns a cubic through the nearest four.
class RadialTable {
 public:
  using Progress = std::function<void(double done)>;  // from 0 to 1

  RadialTable(const BowlField& field, std::vector<double> planes, double radius, double step, const Progress& progress);

  // `plane` counts those given to the constructor; r up to the radius given there.
  std::complex<double> pressure(std::size_t plane, double r) const;

  // Largest deviation from `reference`, Pa, halfway between columns, where a cubic is at its worst; every `stride`-th
  // plane and column is looked at.
  double worst_error(const BowlField& reference, std::size_t stride) const;

 private:
  std::vector<double> planes_;
  double step_;
  std::size_t columns_;                       // from r = -step on: the field is even in r
  std::vector<std::complex<double>> values_;  // column + columns_ * plane
};

}  // namespace kesto::example
