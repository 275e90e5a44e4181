#include "validation/plots.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>

namespace kesto::validation {

void draw_plots(const std::string& directory, const std::string& script) {
  const std::filesystem::path here = std::filesystem::current_path();
  std::filesystem::current_path(directory);
  std::string program = "gnuplot", file = script;
  char* const arguments[] = {program.data(), file.data(), nullptr};
  pid_t child = 0;
  const bool started = posix_spawnp(&child, program.c_str(), nullptr, nullptr, arguments, environ) == 0;
  std::filesystem::current_path(here);
  if (!started) throw std::runtime_error("gnuplot is not installed: no pictures");
  int status = 0;
  if (waitpid(child, &status, 0) != child || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    throw std::runtime_error("gnuplot failed: no pictures");
  }
}

}  // namespace kesto::validation
