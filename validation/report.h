// Cases and their verdicts, and the tables.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace kesto::validation {

struct Case {
  std::string name;
  double measured;
  double limit;  // held where measured does not exceed it; a NaN fails

  bool held() const { return measured <= limit; }
};

// A CSV file, written as rows come. Throws std::runtime_error when it cannot be.
class Table {
 public:
  Table(const std::string& path, const std::string& header);
  ~Table();
  Table(const Table&) = delete;
  Table& operator=(const Table&) = delete;

  __attribute__((format(printf, 2, 3))) void row(const char* format, ...);
  void close();

 private:
  std::string path_;
  std::FILE* file_;
};

// What every group of cases gets: where its tables go, how much to do, whom to tell.
class Report {
 public:
  Report(const std::string& output, bool quick_run) : quick(quick_run), directory(output) {}

  void heading(const char* text);
  void add(const Case& result);                               // prints the verdict
  void note(const std::string& name, double measured) const;  // what is known not to hold
  std::string path(const char* file) const { return directory + "/" + file; }

  void write_verdicts() const;
  std::size_t failures() const;
  std::size_t size() const { return cases_.size(); }

  const bool quick;
  const std::string directory;

 private:
  std::vector<Case> cases_;
  std::vector<std::string> headings_;  // of each case
  std::string heading_;
};

}  // namespace kesto::validation
