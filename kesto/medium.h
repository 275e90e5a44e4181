// What the waves travel in.
#pragma once

#include <iosfwd>
#include <string>

namespace kesto {

struct Medium {
  double sound_speed = 0;          // m/s
  double density = 0;              // kg/m^3
  double attenuation = 0;          // dB/(cm MHz^exponent)
  double exponent = 1;             // of the frequency in the attenuation
  double nonlinearity = 0;         // 1 + B/2A
  double specific_heat = 0;        // J/(kg K)
  double conductivity = 0;         // W/(m K)
  double perfusion = 0;            // of blood, kg/(m^3 s)
  double blood_specific_heat = 0;  // J/(kg K)
  std::string name = {};           // for what is printed
  std::string literature = {};     // where the numbers are from

  double nepers_per_metre(double frequency) const;
};

// Pure water at atmospheric pressure, 0 to 95 degrees Celsius.
Medium water(double temperature = 20);

// "blood", "brain", "fat", "liver" or "muscle", at body temperature. Measured values scatter by some per cent in sound
// speed and by a factor of two in attenuation.
Medium tissue(const std::string& name);

std::ostream& operator<<(std::ostream& out, const Medium& medium);

}  // namespace kesto
