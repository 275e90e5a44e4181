// The groups of cases. Each adds its verdicts to the report and writes its tables.
#pragma once

#include "validation/report.h"

namespace kesto::validation {

void axis_cases(Report& report);              // closed forms on the axis
void plane_cases(Report& report);             // a fine Rayleigh sum on planes
void far_field_cases(Report& report);         // Fraunhofer patterns
void bowl_cases(Report& report);              // the published bowl
void convergence_cases(Report& report);       // the error against the number of abscissas
void efficiency_cases(Report& report);        // the terms and the time that an accuracy takes
void abscissa_cases(Report& report);          // how many abscissas height and frequency ask for
void impulse_response_cases(Report& report);  // pulses as convolutions with the impulse response
void transient_cases(Report& report);         // pulses and bursts in closed form, by cells, decomposed
void kzk_cases(Report& report);               // nonlinear beams
void sampled_signal_cases(Report& report);    // sampled pulses and their clipping

}  // namespace kesto::validation
