// The whole library for programs that bring no host: fields of ultrasound transducers to a stated accuracy.
#pragma once

#include "kesto/beam.h"
#include "kesto/error.h"
#include "kesto/grid.h"
#include "kesto/impulse_response.h"
#include "kesto/medium.h"
#include "kesto/pressure.h"
#include "kesto/pulse.h"
#include "kesto/source.h"
