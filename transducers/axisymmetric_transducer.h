// What pistons, annuli and shells refuse alike.
#pragma once

#include "core/host_api.h"
#include "core/transducer.h"

namespace kesto {

// The stages of a decomposition are for the shapes that keep tables between them: an error here.
class AxisymmetricTransducer : public DecliningTransducer {
 public:
  int init_fnm_tsd() override { refuse(); }
  int call_fnm_tsd() override { refuse(); }
  int free_fnm_tsd() override { refuse(); }

 private:
  [[noreturn]] static void refuse() { fail("Transducer shape not supported for this function\n"); }
};

}  // namespace kesto
