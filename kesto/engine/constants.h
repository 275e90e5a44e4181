// Numbers of the engine, in full double precision.
#pragma once

namespace kesto {

constexpr double full_pi = 3.14159265358979323846;

// Half the distance of neighbouring numbers next to 1.
constexpr double unit_roundoff = 0x1p-53;
constexpr float unit_roundoff_single = 0x1p-24f;

}  // namespace kesto
