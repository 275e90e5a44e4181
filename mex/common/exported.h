// The linkage of the module's entry points; everything else stays hidden inside the module.
#pragma once

#define KESTO_EXPORTED extern "C" __attribute__((visibility("default")))
