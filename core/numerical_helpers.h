// What the inner loops of the field computations share.
#pragma once

#include <complex>

// e^(x + iy). A part that is 0 costs nothing and is exact: a lossless medium takes no exponential, phase 0 neither
// sine nor cosine.
std::complex<double> smart_exp(double x, double y);
std::complex<double> smart_exp(std::complex<double> z);
void smart_exp(double x, double y, double& re, double& im);
std::complex<float> smart_exp(float x, float y);
std::complex<float> smart_exp(std::complex<float> z);

// sin(z)/z for z = a + ib; (1, 0) at z = 0 itself. KEPT: with e^-b in place of e^-b / 2, which makes it
// (sin z - i e^(iz) / 2) / z.
std::complex<double> fast_sinc(double a, double b);
std::complex<double> fast_sinc(std::complex<double> z);

// -1, 0 or 1; 0 within 1e-10 of it.
double sign(double x);

bool isPowerOfTwo(int n);
