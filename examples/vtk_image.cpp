#include "examples/vtk_image.h"

#include <cstdint>
#include <fstream>
#include <iomanip>
#include <limits>
#include <ostream>
#include <stdexcept>

namespace kesto::example {

namespace {

#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
constexpr const char* byte_order = "LittleEndian";
#else
constexpr const char* byte_order = "BigEndian";
#endif

// The file counts each array's bytes in front of it.
using ByteCount = std::uint64_t;

std::string extent(const Grid& grid) {
  std::string text;
  for (const std::size_t points : grid.points) text += (text.empty() ? "0 " : " 0 ") + std::to_string(points - 1);
  return text;
}

void write_header(std::ostream& out, const Grid& grid, const std::vector<PointArray>& arrays) {
  out << "<?xml version=\"1.0\"?>\n"
      << "<VTKFile type=\"ImageData\" version=\"1.0\" byte_order=\"" << byte_order << "\" header_type=\"UInt64\">\n"
      << "  <ImageData WholeExtent=\"" << extent(grid) << "\" Origin=\"" << grid.origin[0] << ' ' << grid.origin[1]
      << ' ' << grid.origin[2] << "\" Spacing=\"" << grid.spacing << ' ' << grid.spacing << ' ' << grid.spacing
      << "\">\n"
      << "    <Piece Extent=\"" << extent(grid) << "\">\n"
      << "      <PointData Scalars=\"" << arrays.front().name << "\">\n";
  ByteCount offset = 0;
  for (const PointArray& array : arrays) {
    out << "        <DataArray type=\"Float32\" Name=\"" << array.name << "\" format=\"appended\" offset=\"" << offset
        << "\"/>\n";
    offset += sizeof(ByteCount) + array.values->size() * sizeof(float);
  }
  out << "      </PointData>\n"
      << "    </Piece>\n"
      << "  </ImageData>\n";
}

void write_values(std::ostream& out, const std::vector<double>& values) {
  const std::vector<float> single(values.begin(), values.end());
  const ByteCount bytes = single.size() * sizeof(float);
  out.write(reinterpret_cast<const char*>(&bytes), sizeof bytes);
  out.write(reinterpret_cast<const char*>(single.data()), static_cast<std::streamsize>(bytes));
}

}  // namespace

void write_vtk_image(const std::string& path, const Grid& grid, const std::vector<PointArray>& arrays) {
  std::ofstream out(path, std::ios::binary);
  out << std::setprecision(std::numeric_limits<double>::max_digits10);
  write_header(out, grid, arrays);
  out << "  <AppendedData encoding=\"raw\">\n_";
  for (const PointArray& array : arrays) write_values(out, *array.values);
  out << "\n  </AppendedData>\n</VTKFile>\n";
  out.close();
  if (!out) throw std::runtime_error(path + ": cannot be written");
}

}  // namespace kesto::example
