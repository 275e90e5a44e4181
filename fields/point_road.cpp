#include "fields/point_road.h"

#include <typeinfo>

#include "transducers/circular_transducer.h"
#include "transducers/rectangular_transducer.h"
#include "transducers/ring_transducer.h"
#include "transducers/spherical_ring_transducer.h"
#include "transducers/spherical_transducer.h"

namespace kesto {

bool is_placed_as_base(const Transducer& element) {
  for (const std::type_info* own :
       {&typeid(CircularTransducer), &typeid(RectangularTransducer), &typeid(RingTransducer),
        &typeid(SphericalRingTransducer), &typeid(SphericalTransducer)}) {
    if (typeid(element) == *own) return true;
  }
  return false;
}

}  // namespace kesto
