#include <charconv>
#include <cmath>
#include <fstream>
#include <string>

#include "integrate/BoxTable.h"

namespace peakbox {

namespace {

/// Appends a number of a magnitude from 1 to 999999 in six significant digits. Does nothing and returns false for any
/// other, and where arithmetic in doubles leaves open how the last digit is rounded.
bool appendPlainNumber(std::string& text, double value) {
  constexpr double kPowersOfTen[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5};
  const double magnitude = std::fabs(value);
  if (!(magnitude >= 1.0 && magnitude <= 999999.0)) return false;
  int decimals = 0;
  while (magnitude * kPowersOfTen[decimals] < 1e5) ++decimals;
  const double scaled = magnitude * kPowersOfTen[decimals];  // below 1e6 and off by less than 1e-10

  const double rounded = std::floor(scaled + 0.5);
  if (rounded > 999999.0 || std::fabs(scaled - rounded) > 0.499999) return false;
  char digits[16];
  const char* end = std::to_chars(digits, digits + sizeof digits, static_cast<int>(rounded)).ptr;
  for (; decimals > 0 && end[-1] == '0'; --decimals) --end;

  if (value < 0.0) text += '-';
  const char* point = end - decimals;
  text.append(static_cast<const char*>(digits), point);
  if (decimals > 0) text.append(1, '.').append(point, end);
  return true;
}

/// Appends `value` as a stream's default format writes it, in six significant digits. Nearly all numbers of a report
/// are plain ones, which take a fourth of the time that to_chars takes.
void appendNumber(std::string& text, double value) {
  if (appendPlainNumber(text, value)) return;
  char digits[32];
  const std::to_chars_result end = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general, 6);
  text.append(digits, end.ptr);
}

}  // namespace

void BoxTable::writeReport(const RunSettings& settings, Spectrum& spectrum, const PeakList& peaks) {
  std::ofstream report(settings.getOutputFile());
  const int peakCount = peaks.getCount();
  const std::int32_t halfWidth1 = settings.getBoxSize(0);
  const std::int32_t halfWidth2 = settings.getBoxSize(1);
  for (int k = 0; k < settings.getSpectrumCount(); ++k) {
    spectrum.loadData(settings.getSpectrumFile(k), settings.getVerbose());
    for (int j = 0; j < peakCount; ++j) {
      if (j + 1 < peakCount) prefetchBox(j + 1, spectrum, halfWidth1, halfWidth2);
      integratePeak(j, spectrum, halfWidth1, halfWidth2);
    }
    // Later spectra are searched around the points found in the first.
    if (k == 0) recentreBoxes(peakCount);
    writeSpectrumTable(k, report, settings, spectrum, peaks);
  }
}

void BoxTable::writeSpectrumTable(int index, std::ostream& out, const RunSettings& settings, const Spectrum& spectrum,
                                  const PeakList& peaks) const {
  constexpr std::size_t kTextBuffer = 1 << 16;

  if (index == 0) settings.writeFieldHeader(out);
  settings.writeSpectrumHeader(index, out);
  settings.writeParametersHeader(index, out);

  std::string text = "# Num\tLabel\tPos1\tPos2\tInt\n";
  for (int j = 0; j < peaks.getCount(); ++j) {
    const std::string& label = peaks.getLabel(j);
    const bool isNoise = label.find("noise") != std::string::npos;
    const double intensity = getIntensity(j);

    text.append("  ").append(std::to_string(peaks.getNumber(j))).append("\t").append(label).append("\t");
    appendNumber(text, spectrum.pointToPpm(getExtent1(j).centre, 0));
    text += '\t';
    appendNumber(text, spectrum.pointToPpm(getExtent2(j).centre, 1));
    text += '\t';
    appendNumber(text, settings.getAbsoluteIntensity() && !isNoise ? std::fabs(intensity) : intensity);
    text += '\n';
    if (text.size() >= kTextBuffer) {
      out << text;
      text.clear();
    }
  }
  out << text << '\n' << std::flush;
}

}  // namespace peakbox
