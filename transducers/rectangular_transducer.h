// A flat rectangular piston.
#pragma once

#include "core/transducer.h"

// The face lies in the local plane z = 0, centred on the origin, `width` along x and `height` along y, and radiates
// towards +z; points behind it (z < 0) get nothing. core/transducer.h says what an element needs before a computation.
// The rule is expected on [-1, 1]. Without f0 in the medium each computation warns and takes the wavelength of 1 MHz,
// while f0 as it is stored, 0, stays in attenuation and factors. Computations not listed here answer 1.
//
// Continuous waves are silent until the weight is set, by the last constructor or later.
class RectangularTransducer : public kesto::DecliningTransducer {
 public:
  RectangularTransducer() = default;
  RectangularTransducer(double width, double height);
  RectangularTransducer(double width, double height, double time_delay);
  RectangularTransducer(double width, double height, double amplitude, double phase);
  RectangularTransducer(const RectangularTransducer& other);
  RectangularTransducer& operator=(const RectangularTransducer& other);

  void debug(int) override;
  void mex_debug(int) override;

  // The fast nearest method: -(rho c w / 2 pi) times the sum over the four edges of
  //   int D / (D^2 + u^2) [E(R) - E(z)] du,  R^2 = z^2 + D^2 + u^2,  E(d) = e^{-(alpha + jk) d},
  // D the distance from the point's projection to the edge's line, u along it, split at the foot of the perpendicular
  // where that lies within the edge (McGough 2004).
  int fnm_cw() override;
  int fnm_cw_single() override;  // geometry in single precision, waves and sums in double
  // Single precision, four abscissas at a time, for any amplitude. A number of nodes that is no multiple of four is
  // filled up with nodes of no weight.
  int fnm_cw_sse() override;
  // Single precision, the terms of an abscissa at once. KEPT: attenuates the reference wave E(z) alone, not E(R).
  int fnm_cw_sse2() override;

  // The Fraunhofer approximation, j f0 rho (width height) w E(R) / R sinc(k a x / R) sinc(k b y / R), a and b half the
  // sides; nothing at the origin.
  int farfield_cw() override;
  virtual int farfield_cw_lossless();  // without attenuation

  // The Rayleigh integral by the rule in both directions. KEPT: a node that coincides with the point adds its weight to
  // both parts of the sum.
  int rayleigh_cw() override;
  // In single precision, four nodes at a time; those beyond a multiple of four are left out. No exception for a node at
  // the point. KEPT: prints the distances at point 0 on the host's console.
  int rayleigh_cw_sse() override;

  // Small radiators, each with its own far field, more of them for nearer points: s = sqrt(4 lambda z / n), m =
  // (floor(width / s) + 1) (floor(height / s) + 1) nodes in either direction, m^2 radiators. Leaves the rule with the m
  // nodes of the last point. Points with z = 0 get nothing. Error: more nodes than an index
  // can count, so close to the face. KEPT: the phase runs forward, e^{+jkR}, and attenuation grows with distance.
  int radiator_cw() override;

  // The earliest and the latest time at which a grid point hears the face, with the element's delay. An empty grid
  // leaves the largest double and 0.
  int impulse_begin_and_end_times() override;

  // The closed form of the velocity potential of a uniform unit velocity, c / 2 pi times the angle of the arc on which
  // the sphere of radius c t about the point cuts the face; times the amplitude, delayed.
  int impulse_response() override;

  // The edge integrals with the delayed signal for the exponentials,
  //   -(rho c amplitude / 2 pi) sum over the edges of int D / (D^2 + u^2) [v(t - R / c) - v(t - z / c)] du,
  // computed from the arrival of the nearest point of the face to the end of the pulse from its farthest corner. Times
  // need no common step here; those of a decomposition do.
  int fnm_transient() override;

  // The same by time-space decomposition, in three stages: init_fnm_tsd makes room for the tables, and again where they
  // are there already; call_fnm_tsd fills them and computes; free_fnm_tsd releases them. Grid, medium and pose may be
  // others at every call, and so may rule, time vector and signal of the same numbers of nodes, samples and terms;
  // other numbers than init_fnm_tsd found are an error, as is no init_fnm_tsd. fnm_tsd is the three in turn and ends
  // with the tables released. KEPT: the destructor does not release them.
  int init_fnm_tsd() override;
  int call_fnm_tsd() override;
  int free_fnm_tsd() override;
  int fnm_tsd() override;
  int fnm_fdtsd() override;              // the same by complex terms
  int fnm_tsd_low_precision() override;  // rays in single precision

  double width = 0;   // m
  double height = 0;  // m

  // The tables of a decomposition of the element's own, no part of its copies, between init_fnm_tsd and free_fnm_tsd,
  // else null.
  double *tsd_t_squared = nullptr, *tsd_t_weight = nullptr;   // of the rule's nodes on [0, 1]
  double *tsd_x = nullptr, *tsd_x_weight = nullptr;           // on [-a, a]
  double *tsd_y = nullptr, *tsd_y_weight = nullptr;           // on [-b, b]
  double* tsd_trace = nullptr;                                // one value to a time sample
  double *tsd_spatial_1 = nullptr, *tsd_spatial_2 = nullptr;  // one value to a term, of the signal ...
  double *tsd_spatial_3 = nullptr, *tsd_spatial_4 = nullptr;  // ... along four rays of an edge pair's node
  double* tsd_temporal = nullptr;                             // [term][time sample]

 private:
  // What init_fnm_tsd made room for.
  int tsd_nodes_ = 0, tsd_samples_ = 0, tsd_terms_ = 0;
};
