#include "planes/PlaneWriter.h"

#include <cstdio>
#include <filesystem>
#include <iostream>

#include "base/Refusal.h"

namespace peakbox::planes {

namespace fs = std::filesystem;

std::string namePlane(const std::string& folder, std::size_t plane) {
  const std::string digits = std::to_string(plane);
  return folder + "/" + std::string(digits.size() < 3 ? 3 - digits.size() : 0, '0') + digits + ".ft2";
}

void writePlanes(const std::vector<PipeFile>& files, const std::string& folder, const std::string& lines) {
  std::vector<std::string> written;
  bool isNewFolder = false;
  std::error_code failed;
  const auto giveUp = [&](const std::string& place, const std::string& reason) {
    for (const std::string& path : written) fs::remove(path, failed);
    if (isNewFolder) fs::remove(folder, failed);
    refuse(place, reason);
  };
  std::vector<std::uint32_t> points;
  for (const PipeFile& source : files) {
    for (std::uint64_t k = 0; k < source.planeCount; ++k) {
      const std::string header = source.makeHeader();
      if (!source.readPlane(k, points)) giveUp(source.path, "cannot be read to its end");
      if (written.empty()) isNewFolder = fs::create_directory(folder, failed);
      if (failed || !fs::is_directory(folder, failed)) giveUp(folder, "is no folder and cannot be made one");
      const std::string path = namePlane(folder, written.size() + 1);
      std::FILE* const file = std::fopen(path.c_str(), "wbx");  // not over the file of another run
      if (file == nullptr) giveUp(path, "cannot be created");
      written.push_back(path);
      const bool isWhole = std::fwrite(header.data(), header.size(), 1, file) == 1 &&
                           std::fwrite(points.data(), 4, points.size(), file) == points.size();
      if (std::fclose(file) != 0 || !isWhole) giveUp(path, "cannot be written");
    }
  }
  if (!(std::cout << lines << std::flush)) giveUp("standard output", "cannot be written");
}

}  // namespace peakbox::planes
