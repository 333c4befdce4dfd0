#include "check/SampledSeries.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "base/TextNumbers.h"

namespace peakbox {

std::vector<std::size_t> SampledSeries::findFree() const {
  std::vector<std::size_t> free;
  for (std::size_t n = 0; n < planes.size(); ++n) {
    if (isFree(n)) free.push_back(n);
  }
  return free;
}

std::vector<double> SampledSeries::readParameters() const {
  std::vector<double> values;
  for (std::size_t n = 0; n < planes.size(); ++n) {
    const std::optional<double> value = textToDecimal(getParameter(n, 0));
    if (!value) return {};
    values.push_back(*value);
  }
  return values;
}

std::vector<StrongPeak> SampledSeries::findPeaks(double level) const {
  std::vector<StrongPeak> strong;
  for (std::size_t j = 0; j < series.getPeakCount(); ++j) {
    StrongPeak peak{j, 0, 0};
    for (std::size_t n = 0; n < planes.size(); ++n) {
      const double height = std::fabs(heightOf(n, j));
      if (height > peak.height) peak = {j, n, height};
    }
    if (peak.height > level && !series.getLoss(j) && !isNoiseLabel(peaks.getLabel(j))) strong.push_back(peak);
  }
  return strong;
}

void SampledSeries::tellPlanes(const std::vector<std::size_t>& odd, const std::string& text) {
  constexpr std::size_t kMostNames = 6;
  if (odd.empty()) return;
  std::string others = odd.size() > 1 ? "; so in " : "";
  for (std::size_t i = 1; i < std::min(odd.size(), kMostNames); ++i) others += (i > 1 ? ", " : "") + nameOf(odd[i]);
  if (odd.size() > kMostNames) others += " and " + std::to_string(odd.size() - kMostNames) + " more";
  findings.add(Findings::Measurement, nameOf(odd[0]), 0, "warning: " + text + others);
  for (const std::size_t n : odd) taken[n] = true;
}

void SampledSeries::tellParameter(std::size_t n, const std::string& text) const {
  const std::int64_t line = parameters.spectrumLines[static_cast<std::size_t>(series.getIndices()[n])];
  findings.add(Findings::Parameters, parameters.file, line, "warning: " + text);
}

std::string writeSigned(double value, int decimals) {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%+.*f", decimals, value);
  return text.data();
}

}  // namespace peakbox
