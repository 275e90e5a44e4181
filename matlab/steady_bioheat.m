function temperature = steady_bioheat(pressure, medium, dx, dy, dz, iterations)
% STEADY_BIOHEAT  Steady-state temperature rise of tissue heated by ultrasound.
%
%   T = STEADY_BIOHEAT(P, MEDIUM, DX, DY, DZ, ITERATIONS) solves the Pennes
%   bioheat balance
%
%       kappa * laplacian(T) - wb * cb * T + alpha * |P|^2 / (rho * c) = 0
%
%   on a regular grid, with T = 0 on the boundary, by exactly ITERATIONS sweeps
%   of successive over-relaxation (factor 1.86, points in memory order). There
%   is no convergence test: docs/solver.md tells how many sweeps a grid needs.
%
%   Arguments
%     P           pressure, Pa: 3-D complex double array, D0 x D1 x D2, with
%                 fewer than 2^31 elements (make a real field complex with
%                 COMPLEX(P))
%     MEDIUM      structure with the fields
%                   soundspeed             c, m/s
%                   density                rho, kg/m^3
%                   attenuationdBcmMHz     alpha, used as it stands: for T in
%                                          kelvin give it in Np/m at the
%                                          frequency of P
%                   bloodperfusion         wb, kg/(m^3 s)
%                   specificheat           of the tissue, J/(kg K)
%                   specificheatofblood    cb, J/(kg K)
%                   thermalconductivity    kappa, W/(m K)
%                   nonlinearityparameter  not used here, but required
%                   powerlawexponent       not used here, but required
%                 Values are not checked.
%     DX, DY, DZ  spacings along the first, second and third dimension, m.
%                 The value of DZ is not checked.
%     ITERATIONS  number of sweeps, truncated towards zero
%
%   Result
%     T           D0 x D1 x D2 real double array: temperature above that of
%                 the boundary and the blood, K. All zero when a dimension is
%                 below 3.
%
%   Errors
%     This function requires exactly one output parameter.
%     This function requires exactly 6 arguments. See the documentation for details.
%     Input pressure must have three dimensions.
%     Input pressure must have fewer than 2^31 elements.
%     Input pressure must be a complex double array.  (Octave words it its own way.)
%     Medium must be a MATLAB structure.
%     Medium object is not structured correctly. Please see the documentation for the correct structure.
%     dx must be numeric.                 dx must be positive and non-zero.
%     dy must be numeric.                 dy must be positive and non-zero.
%     dz must be numeric.                 dz must be positive and non-zero.
%     Number of iterations must be numeric.
%     (A count below 1 is reported as "dz must be positive and non-zero.")
%
%   The environment variable KESTO_VECTOR_TARGET (baseline, avx2, avx512) forces
%   an instruction set. The result is the same, to the last bit.
%
%   Example: a warm spot of 1 MPa and 10 mm width in perfused tissue
%     x = (-20:20) * 1e-3;
%     [X, Y, Z] = ndgrid(x, x, x);
%     p = complex(1e6 * exp(-(X.^2 + Y.^2 + Z.^2) / (2 * 5e-3^2)));
%     medium = struct('soundspeed', 1540, 'density', 1060, ...
%       'attenuationdBcmMHz', 5.8, 'bloodperfusion', 5, 'specificheat', 3600, ...
%       'specificheatofblood', 3617, 'thermalconductivity', 0.51, ...
%       'nonlinearityparameter', 0, 'powerlawexponent', 1);
%     T = steady_bioheat(p, medium, 1e-3, 1e-3, 1e-3, 300);
%     max(T(:))

error('steady_bioheat:notBuilt', ...
  ['The compiled module of steady_bioheat is not on the path. Build it (see README.md) and add the folder ' ...
   'that holds it beside this file.']);
end
