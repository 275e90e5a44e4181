// Checks of arguments: an error or a warning names the argument, its value and what was expected.
#pragma once

#include <cstddef>
#include <set>
#include <string>

namespace kesto {

// printf into a string.
std::string text_of(const char* format, ...) __attribute__((format(printf, 1, 2)));
// A bound in one digit, rounded up.
std::string one_digit(double bound);
[[noreturn]] void refuse(const std::string& text);

// A quantity's limits: beyond [least, most] is an error, beyond [usual_least, usual_most] is a warning.
struct Limits {
  double least, most, usual_least, usual_most;
  const char* unit;  // "m"
  const char* hint;  // follows the question in the message
};

// One public call; it says each warning once.
class Checks {
 public:
  void within(const std::string& name, double value, const Limits& limits);
  void finite(const std::string& name, double value);
  void warn_once(const std::string& key, const std::string& text);

 private:
  std::set<std::string> said_;
};

extern const Limits frequency_limits, element_length_limits, time_limits;
void check_accuracy(double accuracy);

// Fails if so many numbers cannot be held in this machine's memory; `what` they are for.
void check_memory(double bytes, const std::string& what);

}  // namespace kesto
