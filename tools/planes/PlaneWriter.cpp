#include "planes/PlaneWriter.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <map>
#include <string_view>

#include "base/Refusal.h"
#include "base/TextFile.h"
#include "spectrum/FileHeader.h"

namespace peakbox::planes {

namespace fs = std::filesystem;

namespace {

std::size_t hash(std::string_view bytes) { return std::hash<std::string_view>()(bytes); }

volatile std::sig_atomic_t caughtSignal = 0;

/// While it lives a signal that would end the program is only noted, and a file that grows too large is an error of
/// writing.
class SignalWatch {
 public:
  SignalWatch() {
    caughtSignal = 0;
    for (std::size_t n = 0; n < kSignals.size(); ++n) {
      before[n] = std::signal(kSignals[n], kSignals[n] == SIGXFSZ ? SIG_IGN : note);
      if (before[n] == SIG_IGN) std::signal(kSignals[n], SIG_IGN);
    }
  }
  ~SignalWatch() { restore(); }
  SignalWatch(const SignalWatch&) = delete;
  SignalWatch& operator=(const SignalWatch&) = delete;

  void restore() const {
    for (std::size_t n = 0; n < kSignals.size(); ++n) std::signal(kSignals[n], before[n]);
  }

 private:
  static constexpr std::array<int, 4> kSignals{SIGINT, SIGTERM, SIGHUP, SIGXFSZ};
  static void note(int signal) { caughtSignal = signal; }

  std::array<void (*)(int), 4> before{};
};

/// The files of a run, under other names until all are whole.
struct PlaneFiles {
  const std::string& folder;
  SignalWatch watch = {};
  std::vector<std::string> planes = {};
  std::vector<std::string> written = {};  // the same, by the names that they have
  bool isNewFolder = false;

  [[noreturn]] void giveUp(const std::string& place, const std::string& reason) const {
    std::error_code ignored;
    for (const std::string& path : written) fs::remove(path, ignored);
    if (isNewFolder) fs::remove(folder, ignored);
    watch.restore();
    if (caughtSignal != 0) std::raise(caughtSignal);
    refuse(place, reason);
  }

  void write(const std::string& path, const std::string& header, const std::vector<std::uint32_t>& points) {
    std::error_code failed;
    if (written.empty()) isNewFolder = fs::create_directory(folder, failed);
    if (failed || !fs::is_directory(folder, failed)) giveUp(folder, "is no folder and cannot be made one");
    const std::string part = path + ".part";
    std::FILE* const file = std::fopen(part.c_str(), "wbx");  // not over the file of another run
    if (file == nullptr)
      giveUp(fs::exists(part, failed) ? part : path, fs::exists(part, failed) ? "exists already" : "cannot be created");
    planes.push_back(path);
    written.push_back(part);
    const bool isWhole = std::fwrite(header.data(), header.size(), 1, file) == 1 &&
                         std::fwrite(points.data(), 4, points.size(), file) == points.size();
    if (std::fclose(file) != 0 || !isWhole || caughtSignal != 0) giveUp(path, "cannot be written");
  }

  void giveNames() {
    for (std::size_t n = 0; n < planes.size(); ++n) {
      std::error_code failed;
      if (fs::exists(fs::symlink_status(planes[n], failed))) giveUp(planes[n], "exists already");
      fs::rename(written[n], planes[n], failed);
      if (failed) giveUp(planes[n], "cannot be created");
      written[n] = planes[n];
    }
  }
};

}  // namespace

std::string namePlane(const std::string& folder, std::size_t plane) {
  const std::string digits = std::to_string(plane);
  return folder + "/" + std::string(digits.size() < 3 ? 3 - digits.size() : 0, '0') + digits + ".ft2";
}

std::vector<std::size_t> findPlanes(const std::string& folder) {
  std::vector<std::size_t> planes;
  std::error_code failed;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, failed)) {
    const std::string digits = entry.path().stem();
    if (digits.size() > 9 || digits.find_first_not_of("0123456789") != std::string::npos) continue;
    const std::size_t plane = std::strtoul(digits.c_str(), nullptr, 10);
    if (namePlane(folder, plane) == folder + "/" + entry.path().filename().string()) planes.push_back(plane);
  }
  std::sort(planes.begin(), planes.end());
  return planes;
}

namespace {

/// The planes in a folder by their data.
std::map<std::size_t, std::string> findContents(const std::string& folder) {
  std::map<std::size_t, std::string> contents;
  for (const std::size_t plane : findPlanes(folder)) {
    const std::string path = namePlane(folder, plane);
    std::error_code failed;
    const std::optional<std::string> bytes = fs::is_regular_file(path, failed) ? readFile(path) : std::nullopt;
    if (!bytes || bytes->size() <= FileHeader::kSize) continue;
    contents.try_emplace(hash(std::string_view(*bytes).substr(FileHeader::kSize)), path);
  }
  return contents;
}

}  // namespace

void writePlanes(const std::vector<Layout>& series, const std::string& folder, std::size_t number,
                 const std::string& lines) {
  std::map<std::size_t, std::string> before;
  if (number > 1) before = findContents(folder);
  PlaneFiles files{.folder = folder};
  std::vector<std::uint32_t> points;
  for (const Layout& source : series) {
    const std::string header = makeHeader(source);
    for (std::uint64_t k = 0; k < source.getPlaneCount(); ++k) {
      if (!readPlane(source, k, points)) files.giveUp(source.path, "cannot be read to its end");
      const auto same = before.find(hash({reinterpret_cast<const char*>(points.data()), 4 * points.size()}));
      if (same != before.end()) warn(source.path, "has the same data as " + same->second);
      files.write(namePlane(folder, number++), header, points);
    }
  }
  files.giveNames();
  if (!(std::cout << lines << std::flush)) files.giveUp("standard output", "cannot be written");
}

}  // namespace peakbox::planes
