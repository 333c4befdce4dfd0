#include <algorithm>
#include <cmath>
#include <tuple>

#include "check/Checks.h"
#include "check/MovementCheck.h"
#include "integrate/PeakTroubles.h"

namespace peakbox {

namespace {

/// "spectra 1, 3 to 5 and 8"
std::string describeSpectra(const std::vector<int>& numbers) {
  std::string text = numbers.size() == 1 ? "spectrum " : "spectra ";
  for (std::size_t i = 0; i < numbers.size();) {
    std::size_t end = i + 1;
    while (end < numbers.size() && numbers[end] == numbers[end - 1] + 1) ++end;
    if (end < i + 3) end = i + 1;
    if (i > 0) text += end == numbers.size() ? " and " : ", ";
    text += std::to_string(numbers[i]) + (end > i + 1 ? " to " + std::to_string(numbers[end - 1]) : "");
    i = end;
  }
  return text;
}

/// The findings about single peaks.
struct PeakWords {
  const Series& series;
  const RunSettings& settings;
  const ListedPeaks& peaks;
  const FileFindings& findings;

  /// What the first spectrum shows of a peak by itself.
  void tellFirst(std::size_t j, bool isLow, const FileFindings& ofList) const {
    constexpr double kSignalHeight = 10.0;  // times the noise of a point
    const std::int64_t line = peaks.entries[j].line;
    const std::string warning = "warning: " + peaks.nameOf(j) + ": ";
    const auto isEmpty = [](const BoxExtent& extent) { return extent.firstPoint() > extent.lastPoint(); };
    const auto hasWidth = [&](int dim) { return peaks.list.getBoundsWidth(static_cast<int>(j), dim) > 0; };
    const auto& [area1, area2] = series.getFirstArea(j);
    const bool hasNoPoint = (isEmpty(area1) || isEmpty(area2)) && hasWidth(0) && hasWidth(1);
    ofList.add(hasNoPoint && series.isSeen(0, j), line, warning,
               "no data point in its search area, so that the nearest two are searched");
    const double height = series.getSighting(0, j).height;
    const double noise = series.getNoise(0);
    const bool isHigh = noise > 0 && std::fabs(height) >= kSignalHeight * noise;
    findings.add(isHigh && isNoiseLabel(peaks.getLabel(j)), line, warning, "its height ", height,
                 " is above 10 times the noise, ", noise, ": no place for a noise peak");
    findings.add(isLow, line, warning, "height ", height, " is below 5 times the noise of the first spectrum, ", noise);
  }

  void tell(std::size_t j, const PeakTrouble& trouble) const {
    const std::int64_t line = peaks.entries[j].line;
    const std::string warning = "warning: " + peaks.nameOf(j) + ": ";
    const std::string error = "error: " + peaks.nameOf(j) + ": ";
    const std::string spectra = describeSpectra(trouble.spectra);
    const std::string otherLine = " (line " + std::to_string(peaks.entries[trouble.other].line) + ") in ";
    const std::string other = peaks.nameOf(trouble.other) + otherLine + spectra;
    const auto is = [&](TroubleKind kind) { return trouble.kind == kind; };
    if (is(TroubleKind::LeavesPlane))
      findings.add(true, line, error, "the run ends at this peak in ", spectra, ", ", describeLoss(j));
    findings.add(is(TroubleKind::SamePoint), line, error, "measured at the same point as ", other);
    if (is(TroubleKind::SharesPoints)) {
      // Both boxes lie in the plane, so they have no more points than that.
      const std::int64_t size1 = std::int64_t{2} * settings.getBoxSize(0) + 1;
      const std::int64_t size2 = std::int64_t{2} * settings.getBoxSize(1) + 1;
      findings.add(true, line, warning, "its box shares up to ", trouble.sharedPoints, " of ", size1 * size2,
                   " points with that of ", other);
    }
    findings.add(is(TroubleKind::OnFlank), line, warning, "its point is no local extreme but on a flank in ", spectra);
  }

  /// peakbox's text with the number that the peak has in the list as it is, where peaks count that cannot be placed.
  std::string describeLoss(std::size_t j) const {
    const Loss& loss = *series.getLoss(j);
    const std::string start = "peak #";
    std::string text = textOf(loss.end);
    const std::size_t place = text.find(start + std::to_string(j) + " ") + start.size();
    text.replace(place, std::to_string(j).size(), std::to_string(peaks.entries[j].position));
    return settings.getSpectrumFile(loss.index) + (": " + text);
  }
};

}  // namespace

void tellPeaks(const Series& series, const ListedPeaks& peaks, const MovementCheck& movement,
               const RunSettings& settings, Findings& findings) {
  const FileFindings ofList{findings, Findings::Peaks, peaks.file};
  const FileFindings measurement{findings, Findings::Measurement, peaks.file};
  const PeakWords words{series, settings, peaks, measurement};
  const std::vector<std::vector<PeakTrouble>> troubles = findTroubles(series, settings, peaks.list);
  std::size_t low = 0;
  std::vector<std::tuple<std::size_t, std::size_t, const PeakTrouble*>> pairs;
  for (std::size_t j = 0; j < troubles.size(); ++j) {
    bool isLow = false;
    for (const PeakTrouble& trouble : troubles[j]) {
      const bool isPair = trouble.kind == TroubleKind::SamePoint || trouble.kind == TroubleKind::SharesPoints;
      if (isPair) pairs.emplace_back(trouble.other, j, &trouble);
      isLow = isLow || trouble.kind == TroubleKind::NoPeak;
    }
    low += isLow;
    words.tellFirst(j, isLow, ofList);
  }
  const auto tellAll = [&](TroubleKind kind) {
    for (std::size_t j = 0; j < troubles.size(); ++j) {
      for (const PeakTrouble& trouble : troubles[j]) {
        if (trouble.kind == kind) words.tell(j, trouble);
      }
    }
  };
  tellAll(TroubleKind::LeavesPlane);
  movement.tell(findings);
  measurement.add(low >= kFewestPeaks && 2 * low > troubles.size(), 0, "warning: ", low, " of ", troubles.size(),
                  " peaks are in the noise of the first spectrum: a list of another sample, or another reference?");
  std::sort(pairs.begin(), pairs.end());
  for (const auto& [other, j, trouble] : pairs) words.tell(j, *trouble);
  tellAll(TroubleKind::OnFlank);
}

}  // namespace peakbox
