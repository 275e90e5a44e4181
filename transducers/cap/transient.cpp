// The transient fields of a spherical cap.
#include "fields/context.h"
#include "fields/decomposition.h"
#include "fields/direct_transient.h"
#include "fields/transient_road.h"
#include "transducers/cap/rays.h"

namespace kesto {

namespace {

int sum_directly(CapTransducer& element, BehindCap behind) {
  if (is_silent(element)) return 0;
  require_excited_output(element);
  const TimeAxis axis(element);
  DirectForm direct(element, axis, DelayOrder::time_delay_first, DirectWindow::every_sample);
  for_each_cap(element.face(), [&](const Cap& cap, double sign) {
    superpose_rays(element, CapRays(element, cap, sign, behind), direct);
  });
  return 0;
}

template <class Rays>
int decompose_cap(CapTransducer& element, CapFace face, BehindCap behind, DecompositionForm form) {
  if (is_silent(element)) return 0;
  require_excited_output(element);
  decompose(element, form, [&](Decomposition& decomposition) {
    for_each_cap(face, [&](const Cap& cap, double sign) {
      superpose_rays(element, Rays(element, cap, sign, behind), decomposition);
    });
  });
  return 0;
}

}  // namespace

int CapTransducer::fnm_transient() { return sum_directly(*this, BehindCap::skipped); }
int CapTransducer::fnm_transient_behind_source() { return sum_directly(*this, BehindCap::computed); }

int CapTransducer::fnm_tsd() { return decompose_cap<CapRays>(*this, face(), BehindCap::skipped, {}); }
int CapTransducer::fnm_tsd_behind_source() { return decompose_cap<CapRays>(*this, face(), BehindCap::computed, {}); }
int CapTransducer::fnm_fdtsd() {
  return decompose_cap<CapRays>(*this, face(), BehindCap::skipped, {DecompositionForm::Terms::through_complex});
}
int CapTransducer::fnm_tsd_low_precision() { return decompose_in_single_precision(face()); }
int CapTransducer::decompose_in_single_precision(CapFace face) {
  return decompose_cap<CapRaysInFloat>(*this, face, BehindCap::skipped, {});
}

}  // namespace kesto
