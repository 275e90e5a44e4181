#include "bench/plain_bioheat_o2.h"

#include "tests/plain_bioheat.h"

void plain_bioheat_o2(const kesto::BioheatProblem& p, const double* real, const double* imag, double* heat,
                      double* temperature) {
  plain_bioheat(p, real, imag, heat, temperature);
}
