// The transient fields of a rectangle.
#include <algorithm>
#include <cstddef>

#include "core/internal/host.h"
#include "core/internal/pending_array.h"
#include "core/numerical_integration.h"
#include "excitation/excitation_function.h"
#include "transducers/rectangular_transducer.h"

using namespace kesto;

int RectangularTransducer::init_fnm_tsd() {
  if (integral == nullptr) fail("The transducer has no quadrature rule.\n");
  if (time_vector == nullptr) fail("The transducer has no time vector.\n");
  if (excitation == nullptr) fail("The transducer has no excitation.\n");
  const auto count = [](int n) { return static_cast<std::size_t>(std::max(n, 0)); };
  const std::size_t nodes = count(integral->get_npoints()), samples = count(time_vector->nt);
  const std::size_t terms = count(excitation->number_of_tsd_terms());
  const auto array = PendingArray::uninitialised;
  PendingArray arrays[] = {array(nodes), array(nodes), array(nodes),   array(nodes),
                           array(nodes), array(nodes), array(samples), array(terms),
                           array(terms), array(terms), array(terms),   array(terms * samples)};
  double** const fields[] = {&tsd_t_squared, &tsd_t_weight,  &tsd_x,         &tsd_x_weight,
                             &tsd_y,         &tsd_y_weight,  &tsd_trace,     &tsd_spatial_1,
                             &tsd_spatial_2, &tsd_spatial_3, &tsd_spatial_4, &tsd_temporal};
  for (std::size_t i = 0; i < std::size(fields); ++i) arrays[i].replace(*fields[i]);
  return 0;
}

int RectangularTransducer::free_fnm_tsd() {
  for (double** const field : {&tsd_t_squared, &tsd_t_weight, &tsd_x, &tsd_x_weight, &tsd_y, &tsd_y_weight, &tsd_trace,
                               &tsd_spatial_1, &tsd_spatial_2, &tsd_spatial_3, &tsd_spatial_4, &tsd_temporal}) {
    release(*field);
    *field = nullptr;
  }
  return 0;
}
