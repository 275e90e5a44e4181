#include "transducers/axisymmetric_transducer.h"

#include "core/internal/host.h"

namespace kesto {

namespace {

[[noreturn]] void refuse() { fail("Transducer shape not supported for this function\n"); }

}  // namespace

int AxisymmetricTransducer::init_fnm_tsd() { refuse(); }
int AxisymmetricTransducer::call_fnm_tsd() { refuse(); }
int AxisymmetricTransducer::free_fnm_tsd() { refuse(); }

}  // namespace kesto
