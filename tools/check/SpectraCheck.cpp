#include "check/SpectraCheck.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "check/InputFile.h"
#include "check/PlaneContents.h"
#include "spectrum/FileHeader.h"

namespace peakbox {

namespace {

/// Whether points and ppm can be turned into each other.
bool hasAxes(const Spectrum& spectrum, const FileFindings& findings) {
  for (const int dim : {0, 1}) {
    if (spectrum.getAxes().isUsable(dim)) continue;
    const std::string name = "dimension " + std::to_string(dim + 1);
    findings.add(0, "error: ",
                 spectrum.getSize(dim) == 0 ? name + " has no data points"
                                            : "the sweep width or the frequency of " + name + " is 0 or no number");
  }
  return spectrum.getAxes().isUsable(0) && spectrum.getAxes().isUsable(1);
}

bool isWhole(const Spectrum& spectrum, const FileFindings& findings) {
  std::error_code failed;
  const std::uintmax_t bytes = std::filesystem::file_size(findings.file, failed);
  const std::uintmax_t wanted = FileHeader::kSize + 4 * spectrum.countDataWords();
  if (failed || bytes == wanted) return true;
  if (bytes < wanted) {
    findings.add(0, "error: truncated: ", wanted - bytes, " bytes are missing at its end");
  } else {
    findings.add(0, "warning: more data than one plane holds (", bytes - wanted,
                 " bytes more): of a cube only the first plane is measured; peakbox-planes writes all of them");
  }
  return bytes > wanted;
}

/// Compares the axes with those of the first spectrum, by which peaks are placed.
void compareAxes(const Axes& axes, const Axes& first, const FileFindings& findings) {
  for (const int dim : {0, 1}) {
    const auto d = static_cast<std::size_t>(dim);
    if (std::fabs(axes.observeMHz[d] - first.observeMHz[d]) > 0.01 * std::fabs(first.observeMHz[d])) {
      findings.add(0, "warning: dimension ", dim + 1, " was recorded at ", axes.observeMHz[d],
                   " MHz, that of the first spectrum at ", first.observeMHz[d], " MHz");
    }
    const int last = axes.sizes[d] - 1;
    const double firstPpm = first.pointToPpm(0, dim);
    const double lastPpm = first.pointToPpm(last, dim);
    const double ppmPerPoint = (firstPpm - lastPpm) / std::max(last, 1);
    const double shift1 = (axes.pointToPpm(0, dim) - firstPpm) / ppmPerPoint;
    const double shift2 = (axes.pointToPpm(last, dim) - lastPpm) / ppmPerPoint;
    const double worst = std::fabs(shift1) > std::fabs(shift2) ? shift1 : shift2;
    if (!(std::fabs(worst) > 0.1)) continue;
    findings.add(0, "warning: the axis of dimension ", dim + 1, " is off by up to ", worst,
                 " points from that of the first spectrum, and peaks are placed by the first");
  }
}

}  // namespace

bool SpectraCheck::readFirstHeader() {
  const std::string path = settings.getSpectrumCount() > 0 ? settings.getSpectrumFile(0) : "";
  if (path.empty() || !describeUnusual(path).empty()) return false;
  const bool isRead = tryStep([&] { spectrum.readHeader(path.c_str(), false); }).empty();
  firstAxes = spectrum.getAxes();
  hasFirstHeader = isRead && firstAxes.isUsable(0) && firstAxes.isUsable(1);
  isFirstInOrder = spectrum.describeOrder().empty();
  return hasFirstHeader && isFirstInOrder;
}

bool SpectraCheck::check(int k) {
  const FileFindings ofFile{findings, Findings::Spectra, settings.getSpectrumFile(k)};
  const std::string unusual = describeUnusual(ofFile.file);
  if (!unusual.empty()) ofFile.add(0, unusual == kPipe ? "warning: " : "error: ", unusual);
  return unusual.empty() && load(k, ofFile) && checkHeader(ofFile) && checkContents(k, ofFile);
}

/// Without the first one's header the others are loaded alone, to find what is wrong with them.
bool SpectraCheck::load(int k, const FileFindings& ofFile) {
  const SpectrumFormat wanted = hasFirstHeader ? spectrum.getFormat() : SpectrumFormat::None;
  const std::string end = tryStep([&] {
    if (!hasFirstHeader) spectrum.readHeader(ofFile.file.c_str(), false);
    if (hasFirstHeader || k > 0) spectrum.loadData(ofFile.file.c_str(), false);
  });
  if (!end.empty()) ofFile.add(0, "error: ", end, explainRefusal(ofFile.file, wanted));
  if (end.empty() && !hasFirstHeader && k == 0) hasAxes(spectrum, ofFile);
  return end.empty() && hasFirstHeader;
}

bool SpectraCheck::checkHeader(const FileFindings& ofFile) const {
  if (!hasAxes(spectrum, ofFile)) return false;
  const std::string order = spectrum.describeOrder();
  if (!order.empty()) ofFile.add(0, "error: ", order);
  const bool isSound = isWhole(spectrum, ofFile) && order.empty();
  if (order.empty() && isFirstInOrder) compareAxes(spectrum.getAxes(), firstAxes, ofFile);
  for (const int dim : {0, 1}) {
    if (!spectrum.isComplex(dim)) continue;
    ofFile.add(0, "warning: complex data in dimension ", dim + 1, ", of which the real values are measured");
  }
  return isSound;
}

bool SpectraCheck::checkContents(int k, const FileFindings& ofFile) {
  const PlaneContents contents(spectrum);
  const double value = spectrum.getData()[0][0];
  if (contents.notFinite > 0) ofFile.add(0, "warning: ", contents.notFinite, " values are NaN or infinite");
  if (contents.isConstant && value == 0) ofFile.add(0, "warning: nothing but zeros");
  if (contents.isConstant && value != 0) ofFile.add(0, "warning: all values are ", value);
  if (contents.isConstant) return false;
  if (contents.zeroRows * 8 > spectrum.getSize(1)) {
    ofFile.add(0, "warning: the last ", contents.zeroRows, " of ", spectrum.getSize(1),
               " rows are nothing but zeros: did its processing end early?");
  }
  const int same = spectrumOfContents.emplace(contents.fingerprint, k).first->second;
  if (same != k) ofFile.add(0, "error: the same data as spectrum ", same + 1, ", ", settings.getSpectrumFile(same));
  return true;
}

}  // namespace peakbox
