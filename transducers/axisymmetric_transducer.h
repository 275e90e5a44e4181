// What pistons, annuli and shells refuse alike.
#pragma once

#include "core/transducer.h"

namespace kesto {

// The stages of a decomposition are for the shapes that keep tables between them: an error here.
class AxisymmetricTransducer : public DecliningTransducer {
 public:
  int init_fnm_tsd() override;
  int call_fnm_tsd() override;
  int free_fnm_tsd() override;
};

}  // namespace kesto
