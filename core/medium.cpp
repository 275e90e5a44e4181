#include "core/medium.h"

#include "core/internal/host.h"

void Medium::mexDebug() const {
  kesto::print("f0 (_f0): %f\n", _f0);
  kesto::print("fs (_fs): %f\n", _fs);
  kesto::print("soundspeed (_soundspeed): %f\n", _soundspeed);
  kesto::print("attenuation (_dBcmMHz): %f\n", _dBcmMHz);
  kesto::print("power law coefficient (_powerlawcoeff): %f\n", _powerlawcoeff);
  kesto::print("density (_rho_density): %f\n", _rho_density);
  kesto::print("specific heat(_ct): %f\n", _ct);
  kesto::print("blood perfusion (_wb): %f\n", _wb);
  kesto::print("power law exponent (_b): %f\n", _b);
  kesto::print("thermal conductivity (_kappa): %f\n", _kappa);
  kesto::print("nonlinearity param (_beta): %f\n", _beta);
}
