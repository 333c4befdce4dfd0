#include "planes/Series.h"

#include <cmath>
#include <filesystem>
#include <optional>
#include <set>

#include "base/Refusal.h"
#include "base/TextNumbers.h"
#include "spectrum/Axes.h"

namespace peakbox::planes {

namespace fs = std::filesystem;

namespace {

Axes toAxes(const Layout& layout) {
  Axes axes;
  for (const std::size_t d : {0U, 1U}) {
    const Axis& axis = layout.axes[d];
    axes.sizes[d] = static_cast<std::int32_t>(axis.size);
    axes.observeMHz[d] = axis.observeMHz;
    const double width = axis.sweepWidthHz;
    axes.hzPerPoint[d] = width / static_cast<double>(axis.size);
    axes.originPpm[d] = (width + axis.originHz) / axis.observeMHz;
  }
  return axes;
}

std::string describeDifferences(const Axis& axis, const Axis& first) {
  const std::tuple<const char*, const char*, double> words[] = {
      {"sweep width", " Hz", double{axis.sweepWidthHz} - first.sweepWidthHz},
      {"frequency", " MHz", double{axis.observeMHz} - first.observeMHz},
      {"last point", " Hz", double{axis.originHz} - first.originHz}};
  std::string text;
  for (const auto& [name, unit, difference] : words) {
    if (difference != 0)
      text.append(text.empty() ? "" : ", ").append(name).append(" by ").append(realToText(difference)).append(unit);
  }
  return text;
}

void refuseOtherAxes(const Layout& file, const Layout& first) {
  for (const std::size_t d : {0U, 1U}) {
    const std::string dimension = d == 0 ? "direct dimension" : "indirect dimension";
    const std::string size = std::to_string(file.axes[d].size);
    const std::string firstSize = std::to_string(first.axes[d].size);
    if (size != firstSize) {
      refuse(file.path, "its " + dimension + " has " + size + " points, and that of " + first.path + " " + firstSize);
    }
    const double shift = toAxes(file).findShift(toAxes(first), static_cast<int>(d));
    const float mhz = first.axes[d].observeMHz;
    const bool isOtherField = std::fabs(file.axes[d].observeMHz - mhz) > 0.01F * std::fabs(mhz);
    if (!(std::fabs(shift) > 0.1) && !isOtherField) continue;
    refuse(file.path, "its " + dimension + " differs from that of " + first.path + ", by up to " +
                          realToText(std::fabs(shift)) +
                          " points: " + describeDifferences(file.axes[d], first.axes[d]));
  }
}

}  // namespace

std::vector<Layout> readSeries(const std::vector<std::string>& names, const std::string& before) {
  std::vector<Layout> series;
  std::optional<Layout> first;
  if (!before.empty()) first = readLayout(before);
  std::set<fs::path> known;
  for (const std::string& name : names) {
    const Layout& file = series.emplace_back(readLayout(name));
    std::error_code isNameless;  // a file that has been removed, and is still open, has no path
    const fs::path path = fs::canonical(file.path, isNameless);
    if (!known.insert(isNameless ? fs::path(name) : path).second) refuse(name, "is given twice");
    if (file.getPlaneCount() > 1 && names.size() > 1)
      refuse(name, "this is a whole cube, which can only be given alone");
    refuseOtherAxes(file, first ? *first : series[0]);
  }
  return series;
}

std::vector<std::string> nameSources(const std::vector<Layout>& series) {
  std::vector<std::string> sources;
  for (const Layout& file : series) sources.push_back(file.path);
  const std::string name = sources[0] + ", plane ";
  if (series[0].getPlaneCount() > 1) sources.clear();
  while (sources.size() < series[0].getPlaneCount()) sources.push_back(name + std::to_string(sources.size() + 1));
  const std::string claimed = std::to_string(series[0].claimedCount);
  const std::string count = std::to_string(sources.size());
  if (series[0].claimedCount > 1 && claimed != count) {
    warn(series[0].path, "its header counts " + claimed + " planes, and there are " + count);
  }
  return sources;
}

}  // namespace peakbox::planes
