// The medium belongs to the field core as much as to the gateway; this is where the gateway's callers look for it.
#pragma once

#include "core/medium.h"
