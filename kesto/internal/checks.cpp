#include "kesto/internal/checks.h"

#include <cmath>
#include <cstdarg>
#include <cstdio>

#if defined(__unix__) || defined(__APPLE__)
#include <unistd.h>
#endif

#include "core/internal/host.h"

namespace kesto {

const Limits frequency_limits = {100, 1e10, 1e4, 1e9, "Hz", "frequencies are in hertz, 1 MHz is 1e6"};
const Limits element_length_limits = {1e-9, 10, 1e-6, 1, "m", "lengths are in metres"};
const Limits time_limits = {-1, 1, -1e-2, 1e-2, "s", "times are in seconds"};

std::string text_of(const char* format, ...) {
  std::va_list values, again;
  va_start(values, format);
  va_copy(again, values);
  const int length = std::vsnprintf(nullptr, 0, format, values);
  va_end(values);
  std::string text(static_cast<std::size_t>(length > 0 ? length : 0) + 1, '\0');
  std::vsnprintf(text.data(), text.size(), format, again);
  va_end(again);
  text.pop_back();
  return text;
}

std::string one_digit(double bound) {
  if (!(bound > 0 && std::isfinite(bound))) return text_of("%g", bound);
  const double digit = std::pow(10, std::floor(std::log10(bound)));
  return text_of("%g", std::ceil(bound / digit) * digit);
}

void refuse(const std::string& text) { fail(text.c_str()); }

void Checks::warn_once(const std::string& key, const std::string& text) {
  if (said_.insert(key).second) warn(text.c_str());
}

void Checks::finite(const std::string& name, double value) {
  if (!std::isfinite(value)) refuse(text_of("%s is %g: a finite number is expected", name.c_str(), value));
}

void Checks::within(const std::string& name, double value, const Limits& limits) {
  finite(name, value);
  if (limits.least > 0 && value <= 0) {
    refuse(text_of("%s is %g: a positive number is expected (%s)", name.c_str(), value, limits.unit));
  }
  if (limits.least == 0 && value < 0) {
    refuse(text_of("%s is %g: it cannot be negative (%s)", name.c_str(), value, limits.unit));
  }
  const std::string question = text_of("%s is %g: %g %s? %s", name.c_str(), value, value, limits.unit, limits.hint);
  if (value < limits.least || value > limits.most) refuse(question);
  if (value < limits.usual_least || value > limits.usual_most) warn_once(name, question);
}

void check_accuracy(double accuracy) {
  if (accuracy >= 1e-13 && accuracy <= 0.5) return;
  refuse(
      text_of("accuracy is %g: the largest error over the field's peak is expected, between 1e-13 and 0.5", accuracy));
}

void check_memory(double bytes, const std::string& what) {
  double memory = 0x1p46;
#if defined(_SC_PHYS_PAGES) && defined(_SC_PAGESIZE)
  const long pages = sysconf(_SC_PHYS_PAGES), page = sysconf(_SC_PAGESIZE);
  if (pages > 0 && page > 0) memory = static_cast<double>(pages) * static_cast<double>(page);
#endif
  if (bytes <= memory) return;
  refuse(text_of("%s would take %.0f bytes (%.3g GB): this machine has %.3g GB", what.c_str(), bytes, bytes / 1e9,
                 memory / 1e9));
}

}  // namespace kesto
