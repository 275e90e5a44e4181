// The transient fields of a rectangle.
#include <algorithm>
#include <cstddef>
#include <iterator>

#include "core/internal/host.h"
#include "core/internal/pending_array.h"
#include "core/numerical_integration.h"
#include "fields/context.h"
#include "fields/decomposition.h"
#include "fields/direct_transient.h"
#include "fields/transient_road.h"
#include "transducers/rectangle/rays.h"

namespace kesto {

namespace {

template <class Rays>
int decompose_rectangle(RectangularTransducer& element, bool rounded, DecompositionForm::Terms terms) {
  if (is_silent(element)) return 0;
  require_excited_output(element);
  const RectangleTables tables(element, rounded);
  tables.scale_weights(rectangle_transient_factor(*element.medium));
  const Rays rays(tables.nodes(), element.medium->_soundspeed);
  decompose(element, {terms, DecompositionForm::Samples::as_computed, ReferenceStart::first_arrival},
            [&](Decomposition& decomposition) { superpose_rays(element, rays, decomposition); });
  return 0;
}

// The tables of a decomposition go with the scope.
struct ReleasedTables {
  RectangularTransducer& element;
  explicit ReleasedTables(RectangularTransducer& owner) : element(owner) {}
  ReleasedTables(const ReleasedTables&) = delete;
  ReleasedTables& operator=(const ReleasedTables&) = delete;
  ~ReleasedTables() { element.RectangularTransducer::free_fnm_tsd(); }
};

}  // namespace

}  // namespace kesto

using namespace kesto;

int RectangularTransducer::fnm_transient() {
  if (is_silent(*this)) return 0;
  require_excited_output(*this);
  const TimeAxis axis(*this);
  const RectangleTables tables(*this);
  tables.scale_weights(rectangle_transient_factor(*medium));
  DirectForm direct(*this, axis, DelayOrder::travel_time_first, DirectWindow::of_arrivals_where_regular);
  superpose_rays(*this, RectangleRays(tables.nodes(), medium->_soundspeed), direct);
  return 0;
}

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
  tsd_nodes_ = integral->get_npoints(), tsd_samples_ = time_vector->nt, tsd_terms_ = excitation->number_of_tsd_terms();
  return 0;
}

int RectangularTransducer::call_fnm_tsd() {
  if (tsd_temporal == nullptr) fail("call_fnm_tsd needs the tables of init_fnm_tsd, which has not been called.\n");
  if (is_silent(*this)) return 0;
  require_excited_output(*this);
  if (integral->get_npoints() != tsd_nodes_ || time_vector->nt != tsd_samples_ ||
      excitation->number_of_tsd_terms() != tsd_terms_) {
    fail("The quadrature rule, time vector or excitation is of another size than init_fnm_tsd made room for.\n");
  }
  const RectangleTables tables(*this);
  tables.scale_weights(rectangle_transient_factor(*medium));
  const RectangleNodes filled = tables.nodes();
  const auto copy = [&](const double* from, double* to) { std::copy_n(from, std::max(filled.n, 0), to); };
  copy(filled.t_squared, tsd_t_squared), copy(filled.t_weight, tsd_t_weight);
  copy(filled.x, tsd_x), copy(filled.x_weight, tsd_x_weight);
  copy(filled.y, tsd_y), copy(filled.y_weight, tsd_y_weight);
  const RectangleNodes nodes = {tables.a, tables.b,     tables.n, tsd_t_squared, tsd_t_weight,
                                tsd_x,    tsd_x_weight, tsd_y,    tsd_y_weight};
  const TimeAxis axis(*this);
  const DecompositionArrays arrays = {
      tsd_temporal, {tsd_spatial_1, tsd_spatial_2, tsd_spatial_3, tsd_spatial_4}, tsd_trace};
  DecompositionForm form;
  form.reference = ReferenceStart::first_arrival;
  Decomposition decomposition(*this, axis, {0, axis.samples}, form, &arrays);
  superpose_rays(*this, RectangleRays(nodes, medium->_soundspeed), decomposition);
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

int RectangularTransducer::fnm_tsd() {
  if (is_silent(*this)) return 0;
  require_excited_output(*this);
  init_fnm_tsd();
  const ReleasedTables released(*this);
  return call_fnm_tsd();
}

int RectangularTransducer::fnm_fdtsd() {
  return decompose_rectangle<RectangleRays>(*this, false, DecompositionForm::Terms::through_complex);
}

int RectangularTransducer::fnm_tsd_low_precision() {
  return decompose_rectangle<RectangleRaysInFloat>(*this, true, DecompositionForm::Terms::real);
}
