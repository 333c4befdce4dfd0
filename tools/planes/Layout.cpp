#include "planes/Layout.h"

#include <bit>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "base/Refusal.h"
#include "spectrum/PipeWords.h"

namespace peakbox::planes {

namespace fs = std::filesystem;

namespace {

bool isOfBruker(const std::string& path) {
  const std::string name = fs::path(path).filename();
  for (const char* known :
       {"fid", "ser", "1r", "1i", "2rr", "2ri", "2ir", "2ii", "3rrr", "3rri", "3rir", "3irr", "3iii"}) {
    if (name == known) return true;
  }
  return false;
}

bool isUcsf(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  std::string start(8, '\0');
  return stream.read(start.data(), 8) && start == "UCSF NMR";
}

Layout readAnyLayout(const std::string& path) {
  std::error_code failed;
  if (!fs::exists(path, failed)) refuse(path, "there is no such file");
  if (fs::is_directory(path, failed)) return readBruker(path);
  if (!fs::is_regular_file(path, failed)) refuse(path, "this is no regular file");
  if (!std::ifstream(path).is_open()) refuse(path, "cannot be read");
  return isUcsf(path) ? readUcsf(path) : isOfBruker(path) ? readBruker(path) : readPipe(path);
}

}  // namespace

Layout readLayout(const std::string& path) {
  Layout layout = readAnyLayout(path);
  std::istringstream header(makeHeader(layout));
  const bool isReadable = pipe::findByteOrder(FileHeader(header)) == (std::endian::native == std::endian::big);
  if (!isReadable) refuse(path, "its size or frequency is beyond those of planes of NMRPipe");
  return layout;
}

Axis makeAxis(const std::string& path, const std::string& name, std::uint64_t size, double observeMHz,
              double sweepWidthHz, double firstPpm) {
  Axis axis{.size = size, .observeMHz = static_cast<float>(observeMHz)};
  // All in terms of the rounded frequency, by which readers divide.
  const double widthPpm = sweepWidthHz / observeMHz;
  axis.sweepWidthHz = static_cast<float>(widthPpm * axis.observeMHz);
  const auto points = static_cast<double>(size);
  axis.originHz = static_cast<float>((firstPpm - widthPpm * (points - 1) / points) * axis.observeMHz);
  const bool isFinite = std::isfinite(double{axis.sweepWidthHz} + axis.originHz + axis.observeMHz);
  if (isFinite && axis.sweepWidthHz > 0 && axis.observeMHz > 0) return axis;
  refuse(path, name + " has no sweep width or frequency above 0, or no reference");
}

void refuseOtherLength(const Layout& layout) {
  // Beyond what a double counts exactly no file is as long.
  double words = 1;
  for (const std::size_t n : {0U, 1U, 2U}) {
    const std::uint64_t tiles = (layout.sizes[n] + layout.tiles[n] - 1) / layout.tiles[n];
    words *= static_cast<double>(tiles * layout.tiles[n]);
  }
  const double wanted = static_cast<double>(layout.start) + words * (layout.word == Word::Double ? 8 : 4);
  std::error_code failed;
  const std::uintmax_t bytes = fs::file_size(layout.path, failed);
  if (!failed && static_cast<double>(bytes) == wanted) return;
  char count[48];
  std::snprintf(count, sizeof count, "%.0f", wanted);
  refuse(layout.path, "has " + std::to_string(bytes) + " bytes, and by its parameters it has " + count +
                          (static_cast<double>(bytes) < wanted ? ": it is cut" : ""));
}

}  // namespace peakbox::planes
