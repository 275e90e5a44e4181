// Quadrature rules, and the steps of the KZK solvers.
#pragma once

// Fill a rule with allocate_memory and then one of the rules. The arrays are the host's, so the object must not
// outlive the host's call.
class NumericalIntegration {
 public:
  NumericalIntegration() = default;
  ~NumericalIntegration();
  NumericalIntegration(const NumericalIntegration&) = delete;
  NumericalIntegration& operator=(const NumericalIntegration&) = delete;

  // Makes room for n nodes, releasing what was there; the values are unset until a rule fills them. An error when n is
  // less than 1.
  void allocate_memory(int n);

  // The Gauss-Legendre rule of n points on [-1, 1], nodes x descending, weights w: a closed-form guess and one
  // correction of high order. Worst error to n = 1000: 1e-16 in the nodes, 5e-16 in the weights. The correction leaves
  // nothing to gain, so the modified form is the same.
  void grule(int n, double* x, double* w) const;
  void modifiedgrule(int n, double* x, double* w) const;

  void gauss_quadrature();                    // grule on [-1, 1]
  void gauss_quadrature(double a, double b);  // mapped to [a, b]
  void gauss_quadrature_cylindrical();        // mapped to [0, pi], with the cosines of the nodes

  void midpoint_rule();  // on [-1, 1]
  // KEPT: one step below the midpoints of [a, b], from half a step below a to one and a half steps below b.
  void midpoint_rule(double a, double b);

  double get_abscissa(int i) const { return i >= 0 && i < npoints ? abscissa[i] : 0.0; }
  double get_weight(int i) const { return weight[i]; }  // no bound test
  int get_npoints() const { return npoints; }

  // Lengths in metres and seconds; 0 leaves the choice to the solver.
  void set_kzk_parameters(float dz, float dr, float rmax, float dtau, float tau_length);
  void cw_set_kzk_parameters(float dz, float dr, float rmax, int harmonics, int output_harmonic);

  float kzk_dz = 0, kzk_dr = 0, kzk_rmax = 0;      // axial and radial step, radius of the domain
  float kzk_dtau = 0, kzk_tau_length = 0;          // transient: step and length of the retarded time
  int kzk_harmonics = 0, kzk_output_harmonic = 0;  // continuous wave: how many are marched, which one is the result
  int npoints = 0;
  double *abscissa = nullptr, *weight = nullptr, *cos_abscissa = nullptr;
};
