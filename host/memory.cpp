// The allocator and the console of the embedded host, and the books they are kept in.
#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "host/ledger.h"

namespace kesto::host {

namespace {

Ledger*& innermost() {
  // The books outside any call. Never closed: static objects of the program may still free what they hold.
  static Ledger* current = new Ledger;
  return current;
}

bool within_a_call() { return ledger().outer != nullptr; }

}  // namespace

Ledger& ledger() { return *innermost(); }

OpenLedger::OpenLedger() {
  own_.outer = innermost();
  innermost() = &own_;
}

// What is still alive becomes the surrounding scope's.
OpenLedger::~OpenLedger() {
  innermost() = own_.outer;
  Ledger& outer = ledger();
  outer.blocks.merge(own_.blocks);
  outer.arrays.merge(own_.arrays);
  outer.report.peak_bytes = std::max(outer.report.peak_bytes, outer.bytes + own_.report.peak_bytes);
  outer.bytes += own_.bytes;
}

void OpenLedger::run(const std::function<void()>& body) {
  try {
    body();
  } catch (const Error& error) {
    own_.report.failed = true;
    own_.report.error = error.what();
  }
  own_.report.live_blocks = own_.blocks.size();
  for (const auto& block : own_.blocks) own_.report.live_bytes += block.second;
}

void Ledger::release_blocks() {
  for (const auto& block : blocks) {
    bytes -= block.second;
    std::free(block.first);
  }
  blocks.clear();
}

void Ledger::release_arrays_except(const std::vector<mxArray*>& kept) {
  std::vector<mxArray*> temporary;
  for (mxArray* const array : arrays) {
    if (std::find(kept.begin(), kept.end(), array) == kept.end()) temporary.push_back(array);
  }
  for (mxArray* const array : temporary) mxDestroyArray(array);
  report.temporary_arrays = temporary.size();
}

Report guarded(const std::function<void()>& body) {
  OpenLedger books;
  books.run(body);
  if (books->report.failed) books->release_blocks();
  books->report.temporary_arrays = books->arrays.size();
  return books->report;
}

namespace {

// The books that hold `block`, from the innermost outwards; null, and counted as a bad free, when none does.
Ledger* holder(void* block) {
  for (Ledger* books = &ledger(); books != nullptr; books = books->outer) {
    if (books->blocks.count(block) != 0) return books;
  }
  ++ledger().report.bad_frees;
  return nullptr;
}

void* entered(Ledger& books, void* block, std::size_t bytes) {
  if (block == nullptr) mexErrMsgTxt("Out of memory.");
  books.blocks.emplace(block, bytes);
  books.add_bytes(bytes);
  return block;
}

void strike_out(Ledger& books, void* block) {
  books.bytes -= books.blocks[block];
  books.blocks.erase(block);
}

}  // namespace

}  // namespace kesto::host

using kesto::host::ledger;

extern "C" {

void* mxMalloc(size_t bytes) { return kesto::host::entered(ledger(), std::malloc(bytes != 0 ? bytes : 1), bytes); }

void* mxCalloc(size_t count, size_t size) {
  if (size != 0 && count > SIZE_MAX / size) mexErrMsgTxt("Out of memory.");
  const size_t bytes = count * size;
  return kesto::host::entered(ledger(), std::calloc(bytes != 0 ? bytes : 1, 1), bytes);
}

void* mxRealloc(void* block, size_t bytes) {
  if (block == nullptr) return mxMalloc(bytes);
  kesto::host::Ledger* const books = kesto::host::holder(block);
  if (books == nullptr) return nullptr;
  const size_t old_bytes = books->blocks[block];
  kesto::host::strike_out(*books, block);
  void* const resized = std::realloc(block, bytes != 0 ? bytes : 1);
  if (resized == nullptr) {
    books->blocks.emplace(block, old_bytes);  // the old block stays alive
    books->bytes += old_bytes;
  }
  return kesto::host::entered(*books, resized, bytes);  // it stays its owner's, whoever resizes it
}

void mxFree(void* block) {
  if (block == nullptr) return;
  kesto::host::Ledger* const books = kesto::host::holder(block);
  if (books == nullptr) return;
  kesto::host::strike_out(*books, block);
  std::free(block);
}

void mexErrMsgTxt(const char* text) { throw kesto::host::Error(text); }

void mexWarnMsgTxt(const char* text) {
  if (kesto::host::within_a_call()) {
    ledger().report.warnings.emplace_back(text);
  } else {
    std::fprintf(stderr, "Warning: %s\n", text);
  }
}

int mexPrintf(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  std::string text(length > 0 ? static_cast<size_t>(length) + 1 : 1, '\0');
  std::vsnprintf(&text[0], text.size(), format, again);
  va_end(again);
  va_end(arguments);
  text.pop_back();
  if (kesto::host::within_a_call()) {
    ledger().report.console += text;
  } else {
    std::fputs(text.c_str(), stdout);
  }
  return length;
}

}  // extern "C"
