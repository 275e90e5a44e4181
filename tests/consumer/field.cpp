// A program of somebody else's that has nothing of MEX.
#include <cmath>
#include <cstdio>

#include "kesto/kesto.h"
#if __has_include("mex.h") || __has_include("host/mex.h")
#error "a MEX header is within reach"
#endif

int main() {
  const kesto::Source bowl(kesto::bowl(32e-3, 64e-3), 0.04);
  const kesto::Medium medium = {1500, 1000};
  const kesto::Field field = kesto::pressure(bowl, kesto::Grid::box(0, 0, 64e-3), medium, 500e3);
  std::printf("%.0f Pa at the focus\n", std::abs(field[0]));
  return std::fabs(std::abs(field[0]) - 1077487.63) <= field.error() ? 0 : 1;
}
