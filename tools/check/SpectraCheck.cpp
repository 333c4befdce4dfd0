#include "check/SpectraCheck.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "check/InputFile.h"
#include "check/PlaneContents.h"
#include "spectrum/FileHeader.h"

namespace peakbox {

namespace {

/// Whether the data are those of several whole planes.
bool isCube(const Spectrum& spectrum, const std::string& file) {
  std::error_code failed;
  const std::uintmax_t bytes = std::filesystem::file_size(file, failed);
  const std::uintmax_t wanted = 4 * spectrum.countDataWords();
  return !failed && spectrum.getFormat() == SpectrumFormat::NMRPipe && wanted > 0 &&
         bytes > FileHeader::kSize + wanted && (bytes - FileHeader::kSize) % wanted == 0;
}

/// Whether points and ppm can be turned into each other.
bool hasAxes(const Spectrum& spectrum, const FileFindings& findings) {
  for (const int dim : {0, 1}) {
    const bool isEmpty = spectrum.getSize(dim) == 0;
    const bool isWrong = !isEmpty && !spectrum.getAxes().isUsable(dim);
    findings.add(isEmpty, 0, "error: dimension ", dim + 1, " has no data points");
    findings.add(isWrong, 0, "error: the sweep width or the frequency of dimension ", dim + 1, " is 0 or no number",
                 isWrong && isCube(spectrum, findings.file) ? " (peakbox-planes writes the planes of a cube)" : "");
  }
  return spectrum.getAxes().isUsable(0) && spectrum.getAxes().isUsable(1);
}

bool isWhole(const Spectrum& spectrum, const FileFindings& findings) {
  std::error_code failed;
  const std::uintmax_t bytes = std::filesystem::file_size(findings.file, failed);
  const std::uintmax_t wanted = FileHeader::kSize + 4 * spectrum.countDataWords();
  if (failed) return true;
  findings.add(bytes > wanted, 0, "warning: more data than one plane holds (", bytes - wanted, " bytes more): ",
               isCube(spectrum, findings.file)
                   ? "of a cube only the first plane is measured; peakbox-planes writes all of them"
                   : "what is behind it is not read");
  return !findings.add(bytes < wanted, 0, "error: truncated: ", wanted - bytes, " bytes are missing at its end");
}

/// Compares the axes with those of the first spectrum, by which peaks are placed.
void compareAxes(const Axes& axes, const Axes& first, const FileFindings& findings) {
  for (const int dim : {0, 1}) {
    const auto d = static_cast<std::size_t>(dim);
    const double mhz = axes.observeMHz[d];
    const double firstMHz = first.observeMHz[d];
    findings.add(std::fabs(mhz - firstMHz) > 0.01 * std::fabs(firstMHz), 0, "warning: dimension ", dim + 1,
                 " was recorded at ", mhz, " MHz, that of the first spectrum at ", firstMHz, " MHz");
    const double shift = axes.findShift(first, dim);
    findings.add(std::fabs(shift) > 0.1, 0, "warning: the axis of dimension ", dim + 1, " is off by up to ",
                 std::fabs(shift), " points from that of the first spectrum, and peaks are placed by the first");
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
  ofFile.add(!unusual.empty(), 0, unusual == kPipe ? "warning: " : "error: ", unusual);
  return unusual.empty() && load(k, ofFile) && checkHeader(ofFile) && checkContents(k, ofFile);
}

/// Without the first one's header the others are loaded alone, to find what is wrong with them.
bool SpectraCheck::load(int k, const FileFindings& ofFile) {
  const SpectrumFormat wanted = hasFirstHeader ? spectrum.getFormat() : SpectrumFormat::None;
  const std::string end = tryStep([&] {
    if (!hasFirstHeader) spectrum.readHeader(ofFile.file.c_str(), false);
    if (hasFirstHeader || k > 0) spectrum.loadData(ofFile.file.c_str(), false);
  });
  if (!end.empty()) return !ofFile.add(true, 0, "error: ", end, explainRefusal(ofFile.file, wanted));
  return hasFirstHeader || (k == 0 && hasAxes(spectrum, ofFile));
}

bool SpectraCheck::checkHeader(const FileFindings& ofFile) const {
  if (!hasAxes(spectrum, ofFile)) return false;
  const std::string order = spectrum.describeOrder();
  ofFile.add(!order.empty(), 0, "error: ", order);
  const bool isSound = isWhole(spectrum, ofFile) && order.empty();
  if (order.empty() && isFirstInOrder) compareAxes(spectrum.getAxes(), firstAxes, ofFile);
  for (const int dim : {0, 1}) {
    ofFile.add(spectrum.isComplex(dim), 0, "warning: complex data in dimension ", dim + 1,
               ", of which the real values are measured");
  }
  return isSound;
}

bool SpectraCheck::checkContents(int k, const FileFindings& ofFile) {
  const PlaneContents contents(spectrum);
  const double value = spectrum.getData()[0][0];
  if (ofFile.add(contents.isMisordered, 0,
                 "error: magnitudes that no spectrum has: its values are in the other byte order than its header")) {
    return false;
  }
  ofFile.add(contents.notFinite > 0, 0, "warning: ", contents.notFinite, " values are NaN or infinite");
  ofFile.add(contents.isConstant && value == 0, 0, "warning: nothing but zeros");
  ofFile.add(contents.isConstant && value != 0, 0, "warning: all values are ", value);
  if (contents.isConstant) return false;
  const bool isCutShort =
      ofFile.add(contents.zeroRows * 8 > spectrum.getSize(1), 0, "warning: the last ", contents.zeroRows, " of ",
                 spectrum.getSize(1), " rows are nothing but zeros: did its processing end early?");
  const int same = spectrumOfContents.emplace(contents.fingerprint, k).first->second;
  ofFile.add(same != k, 0, "error: the same data as spectrum ", same + 1, ", ", settings.getSpectrumFile(same));
  isTold = isCutShort || same != k;
  return true;
}

}  // namespace peakbox
