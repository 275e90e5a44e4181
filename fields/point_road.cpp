#include "fields/point_road.h"

#include <cstddef>
#include <cstring>

namespace kesto {

namespace {

// The function that a call of this virtual member of the element runs, by the C++ ABI that every supported compiler
// follows: an object starts with its table, and a pointer to a virtual member holds an offset in it (plus 1, but on
// arm64, where the mark is elsewhere).
template <class Member>
const void* function_run(const Transducer& element, Member member) {
  const char* table;
  std::memcpy(&table, static_cast<const void*>(&element), sizeof table);
  std::ptrdiff_t words[2];
  static_assert(sizeof member == sizeof words);
  std::memcpy(words, &member, sizeof words);
  const void* function;
  std::memcpy(&function, table + (words[0] & ~std::ptrdiff_t{1}), sizeof function);
  return function;
}

}  // namespace

bool is_placed_as_base(const Transducer& element) {
  static const DecliningTransducer base;
  return function_run(element, &Transducer::rotateTranslate) == function_run(base, &Transducer::rotateTranslate);
}

}  // namespace kesto
