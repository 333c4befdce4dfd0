#include "peaks/PeakListWriter.h"

#include "base/TextNumbers.h"

namespace peakbox {

namespace {

std::string writePair(double first, double second) {
  return std::string("{").append(realToText(first)).append("} {").append(realToText(second)).append("}\n");
}

}  // namespace

std::string writeListHeader(const Axes& axes, const std::array<std::string, 2>& names, const std::string& dataset) {
  std::string text = "label dataset sw sf\n" + names[0] + " " + names[1] + "\n" + dataset + "\n";
  // Divided, a width comes back to the digit from which the points were made.
  text += writePair(axes.sizes[0] / axes.hzToPoints(1, 0), axes.sizes[1] / axes.hzToPoints(1, 1));
  text += writePair(axes.observeMHz[0], axes.observeMHz[1]);
  for (const std::string& name : names) {
    for (const char* column : {".L ", ".P ", ".W ", ".B ", ".E ", ".J ", ".U "}) text += name + column;
  }
  return text + "vol int stat comment flag0\n";
}

std::string writeListLine(const ListEntry& entry) {
  std::string line = std::to_string(entry.number);
  for (const std::size_t d : {0U, 1U}) {
    line.append(" {").append(entry.label).append("} ").append(entry.ppm[d]).append(" ").append(entry.lineWidth[d]);
    line.append(" ").append(entry.bounds[d]).append(" ++ {0.0} {}");
  }
  return line + " 0.0 0.0 0 {} 0\n";
}

}  // namespace peakbox
