// The version manifest, in a section of its own that MATLAB looks for in the module file: a ZIP archive that holds
// mexVersioning/manifest.json. Made by the compiler, so that it is the same bytes wherever and whenever that runs.
#include <cstddef>
#include <cstdint>

#include "manifest_text.h"

namespace {

constexpr char folder_name[] = "mexVersioning/";
constexpr char file_name[] = "mexVersioning/manifest.json";

template <std::size_t N>
constexpr std::size_t length(const char (&)[N]) {
  return N - 1;
}

struct Entry {
  const char* name;
  std::size_t name_length;
  const char* data;
  std::size_t size;
  std::uint32_t attributes;
  std::size_t offset = 0;

  constexpr std::uint32_t crc() const {
    std::uint32_t remainder = 0xffffffff;
    for (std::size_t n = 0; n < size; ++n) {
      remainder ^= static_cast<unsigned char>(data[n]);
      for (int bit = 0; bit < 8; ++bit) remainder = (remainder >> 1) ^ ((remainder & 1) != 0 ? 0xedb88320 : 0);
    }
    return ~remainder;
  }
};

constexpr std::size_t local_header = 30, central_header = 46, end_record = 22;

struct Archive {
  unsigned char bytes[2 * (local_header + central_header + length(folder_name) + length(file_name)) +
                      length(manifest_text) + end_record] = {};
};

struct Writer {
  Archive archive;
  std::size_t end = 0;

  constexpr void number(std::size_t value, int width) {
    for (int n = 0; n < width; ++n) archive.bytes[end++] = static_cast<unsigned char>(value >> 8 * n);
  }
  constexpr void text(const char* from, std::size_t count) {
    for (std::size_t n = 0; n < count; ++n) archive.bytes[end++] = static_cast<unsigned char>(from[n]);
  }
  // What both headers of an entry say: version 2.0, stored, of 1 January 1980, how long it is and its name.
  constexpr void description(const Entry& entry) {
    number(20, 2);
    number(0, 4);
    number(0x210000, 4);
    number(entry.crc(), 4);
    number(entry.size, 4);
    number(entry.size, 4);
    number(entry.name_length, 2);
    number(0, 2);
  }
  constexpr void stored(Entry& entry) {
    entry.offset = end;
    number(0x04034b50, 4);
    description(entry);
    text(entry.name, entry.name_length);
    text(entry.data, entry.size);
  }
  constexpr void listed(const Entry& entry) {
    number(0x02014b50, 4);
    number(0x0314, 2);  // made by version 2.0 with Unix attributes
    description(entry);
    number(0, 6);
    number(entry.attributes, 4);
    number(entry.offset, 4);
    text(entry.name, entry.name_length);
  }
};

constexpr Archive make_archive() {
  Entry entries[] = {{folder_name, length(folder_name), "", 0, 040755u << 16 | 0x10},
                     {file_name, length(file_name), manifest_text, length(manifest_text), 0100644u << 16}};
  Writer writer;
  for (Entry& entry : entries) writer.stored(entry);
  const std::size_t directory = writer.end;
  for (const Entry& entry : entries) writer.listed(entry);
  const std::size_t directory_size = writer.end - directory;
  writer.number(0x06054b50, 4);
  writer.number(0, 4);
  writer.number(2, 2);
  writer.number(2, 2);
  writer.number(directory_size, 4);
  writer.number(directory, 4);
  writer.number(0, 2);
  return writer.archive;
}

#if defined(__APPLE__)
#define KESTO_MANIFEST_SECTION "__TEXT,us_resources"
#else
#define KESTO_MANIFEST_SECTION "us_resources"
#endif
__attribute__((section(KESTO_MANIFEST_SECTION), used, aligned(1))) constexpr Archive archive = make_archive();

}  // namespace
