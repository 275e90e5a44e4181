// The embedded host's book of what is alive, shared by its memory, array and call halves.
#pragma once

#include <cstddef>
#include <unordered_map>
#include <unordered_set>

#include "host/embedded_host.h"

namespace kesto::host {

// The books of one guarded call. The outermost ones, never closed, belong to the program outside any call.
struct Ledger {
  Report report;
  std::unordered_map<void*, std::size_t> blocks;  // live blocks and their sizes
  std::unordered_set<mxArray*> arrays;            // arrays alive that nothing else owns
  std::size_t bytes = 0;                          // held in blocks and array data now
  Ledger* outer = nullptr;

  void add_bytes(std::size_t n) {
    bytes += n;
    if (bytes > report.peak_bytes) report.peak_bytes = bytes;
  }
  void release_blocks();
  void release_arrays_except(const std::vector<mxArray*>& kept);
};

Ledger& ledger();  // of the innermost call that runs

// Opens books for a scope.
class OpenLedger {
 public:
  OpenLedger();
  ~OpenLedger();
  OpenLedger(const OpenLedger&) = delete;
  OpenLedger& operator=(const OpenLedger&) = delete;
  Ledger* operator->() { return &own_; }

  // Runs `body`, catching Error alone into the report; then counts what is left alive.
  void run(const std::function<void()>& body);

 private:
  Ledger own_;
};

}  // namespace kesto::host
