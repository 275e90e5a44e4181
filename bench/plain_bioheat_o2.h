// The plain loops, compiled at -O2 whatever the rest is compiled with.
#pragma once

#include "heat/bioheat_solver.h"

void plain_bioheat_o2(const kesto::BioheatProblem& p, const double* real, const double* imag, double* heat,
                      double* temperature);
