#include "validation/report.h"

#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <stdexcept>

namespace kesto::validation {

namespace {

const char* verdict(const Case& c) { return c.held() ? "held" : "FAILED"; }

}  // namespace

Table::Table(const std::string& path, const std::string& header) : path_(path), file_(std::fopen(path.c_str(), "w")) {
  if (file_ == nullptr) throw std::runtime_error(path + ": cannot be written");
  std::fprintf(file_, "%s\n", header.c_str());
}

Table::~Table() {
  if (file_ != nullptr) std::fclose(file_);
}

void Table::row(const char* format, ...) {
  va_list values;
  va_start(values, format);
  std::vfprintf(file_, format, values);
  va_end(values);
  std::fputc('\n', file_);
}

void Table::close() {
  const bool written = std::ferror(file_) == 0;
  const bool closed = std::fclose(file_) == 0;
  file_ = nullptr;
  if (!written || !closed) throw std::runtime_error(path_ + ": cannot be written");
}

void Report::heading(const char* text) {
  heading_ = text;
  std::printf("\n%s\n  %-78s %10s %10s\n", text, "", "measured", "limit");
}

void Report::add(const Case& result) {
  std::printf("  %-78s %10.2g %10.2g  %s\n", result.name.c_str(), result.measured, result.limit, verdict(result));
  std::fflush(stdout);
  cases_.push_back(result);
  headings_.push_back(heading_);
}

void Report::note(const std::string& name, double measured) const {
  std::printf("  %-78s %10.2g\n", name.c_str(), measured);
}

void Report::write_verdicts() const {
  Table table(path("verdicts.csv"), "group,case,measured,limit,verdict");
  for (std::size_t i = 0; i < cases_.size(); ++i) {
    const Case& c = cases_[i];
    table.row("\"%s\",\"%s\",%.6g,%.6g,%s", headings_[i].c_str(), c.name.c_str(), c.measured, c.limit, verdict(c));
  }
  table.close();
}

std::size_t Report::failures() const {
  return static_cast<std::size_t>(std::count_if(cases_.begin(), cases_.end(), [](const Case& c) { return !c.held(); }));
}

}  // namespace kesto::validation
