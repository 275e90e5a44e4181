// The library's surroundings in a program of its own: the allocator, an exception, and hooks for text.
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <utility>

#include "core/internal/host.h"
#include "kesto/error.h"

namespace kesto {

namespace {

std::string without_newline(const char* text) {
  std::string line = text;
  while (!line.empty() && line.back() == '\n') line.pop_back();
  return line;
}

class Outlet {
 public:
  explicit Outlet(void (*standard)(const std::string&)) : standard_(standard) {}

  void set(TextHook hook) {
    const std::lock_guard<std::mutex> lock(mutex_);
    hook_ = std::move(hook);
  }
  void write(const std::string& text) {
    const std::lock_guard<std::mutex> lock(mutex_);
    hook_ ? hook_(text) : standard_(text);
  }

 private:
  std::mutex mutex_;
  TextHook hook_;
  void (*standard_)(const std::string&);
};

Outlet& warnings() {
  static Outlet outlet([](const std::string& text) { std::fprintf(stderr, "warning: %s\n", text.c_str()); });
  return outlet;
}
Outlet& console() {
  static Outlet outlet([](const std::string& text) { std::fputs(text.c_str(), stdout); });
  return outlet;
}

}  // namespace

void set_warning_hook(TextHook hook) { warnings().set(std::move(hook)); }
void set_print_hook(TextHook hook) { console().set(std::move(hook)); }

// NOLINTBEGIN(cppcoreguidelines-no-malloc): the seam's blocks are given back as they come
void* allocate(std::size_t bytes, bool zeroed) {
  return zeroed ? std::calloc(bytes != 0 ? bytes : 1, 1) : std::malloc(bytes != 0 ? bytes : 1);
}
void release(void* block) { std::free(block); }
// NOLINTEND(cppcoreguidelines-no-malloc)

void fail(const char* text) { throw Error(without_newline(text)); }
void warn(const char* text) { warnings().write(without_newline(text)); }

void print(const char* format, ...) {
  std::va_list values, again;
  va_start(values, format);
  va_copy(again, values);
  const int length = std::vsnprintf(nullptr, 0, format, values);
  va_end(values);
  std::string text(static_cast<std::size_t>(std::max(length, 0)) + 1, '\0');
  std::vsnprintf(text.data(), text.size(), format, again);
  va_end(again);
  text.pop_back();
  console().write(text);
}

}  // namespace kesto
