#include <algorithm>
#include <cmath>
#include <tuple>

#include "check/Checks.h"
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
  const ListedPeaks& peaks;
  const RunSettings& settings;
  Findings& findings;

  template <typename... Parts>
  void add(Findings::Stage stage, std::size_t j, const char* level, const Parts&... parts) const {
    FileFindings{findings, stage, peaks.file}.add(peaks.entries[j].line, level, peaks.nameOf(j), ": ", parts...);
  }

  template <typename... Parts>
  void warn(std::size_t j, const Parts&... parts) const {
    add(Findings::Measurement, j, "warning: ", parts...);
  }

  template <typename... Parts>
  void refuse(std::size_t j, const Parts&... parts) const {
    add(Findings::Measurement, j, "error: ", parts...);
  }

  /// What the first spectrum shows besides troubles.
  void tellFirst(std::size_t j) const {
    constexpr double kSignalHeight = 10.0;  // times the noise of a point
    const auto isEmpty = [](const BoxExtent& extent) { return extent.firstPoint() > extent.lastPoint(); };
    const auto hasWidth = [&](int dim) { return peaks.list.getBoundsWidth(static_cast<int>(j), dim) > 0; };
    const auto& [area1, area2] = series.getFirstArea(j);
    if (series.isSeen(0, j) && (isEmpty(area1) || isEmpty(area2)) && hasWidth(0) && hasWidth(1)) {
      add(Findings::Peaks, j, "warning: ", "no data point in its search area, so that the nearest two are searched");
    }
    const double height = series.getSighting(0, j).height;
    const double noise = series.getNoise(0);
    if (isNoiseLabel(peaks.getLabel(j)) && noise > 0 && std::fabs(height) >= kSignalHeight * noise) {
      warn(j, "its height ", height, " is above 10 times the noise, ", noise, ": no place for a noise peak");
    }
  }

  void tell(std::size_t j, const PeakTrouble& trouble) const {
    const std::string spectra = describeSpectra(trouble.spectra);
    const ListedPeaks::Entry& neighbour = peaks.entries[trouble.other];
    const std::string other =
        peaks.nameOf(trouble.other) + " (line " + std::to_string(neighbour.line) + ") in " + spectra;
    switch (trouble.kind) {
      case TroubleKind::LeavesPlane:
        return refuse(j, "the run ends at this peak in ", spectra, ", ", describeLoss(j));
      case TroubleKind::NoPeak:
        return warn(j, "height ", series.getSighting(0, j).height,
                    " is below 5 times the noise of the first spectrum, ", series.getNoise(0));
      case TroubleKind::SamePoint:
        return refuse(j, "measured at the same point as ", other);
      case TroubleKind::SharesPoints:
        return warn(j, "its box shares up to ", trouble.sharedPoints, " of ", countBoxPoints(), " points with that of ",
                    other);
      case TroubleKind::OnFlank:
        return warn(j, "its point is no local extreme but on a flank in ", spectra);
    }
  }

  /// peakbox's text has the number that the peak has among those that can be placed.
  std::string describeLoss(std::size_t j) const {
    const Loss& loss = *series.getLoss(j);
    const std::string number = "peak #" + std::to_string(j) + " ";
    std::string text = textOf(loss.end);
    const std::size_t place = std::min(text.find(number), text.size());
    text.replace(place, number.size(), "peak #" + std::to_string(peaks.entries[j].position) + " ");
    return settings.getSpectrumFile(loss.index) + (": " + text);
  }

  /// Boxes that share points lie in the plane, so they have no more points than that.
  std::int64_t countBoxPoints() const {
    return (std::int64_t{2} * settings.getBoxSize(0) + 1) * (std::int64_t{2} * settings.getBoxSize(1) + 1);
  }
};

}  // namespace

void tellPeaks(const Series& series, const ListedPeaks& peaks, const MovementCheck& movement,
               const RunSettings& settings, Findings& findings) {
  const std::vector<std::vector<PeakTrouble>> troubles = findTroubles(series, settings, peaks.list);
  const PeakWords words{series, peaks, settings, findings};
  // In this order they count where there are more than are printed: alone by spectrum, pairs by the first peak, flanks.
  std::vector<std::tuple<int, std::size_t, std::size_t, const PeakTrouble*>> order;
  std::size_t low = 0;
  for (std::size_t j = 0; j < troubles.size(); ++j) {
    words.tellFirst(j);
    for (const PeakTrouble& trouble : troubles[j]) {
      const bool isAlone = trouble.kind == TroubleKind::LeavesPlane || trouble.kind == TroubleKind::NoPeak;
      const int turn = isAlone ? 0 : trouble.kind == TroubleKind::OnFlank ? 2 : 1;
      const auto spectrum = static_cast<std::size_t>(trouble.spectra[0]);
      order.emplace_back(turn, turn == 0 ? spectrum : trouble.other, j, &trouble);
      low += trouble.kind == TroubleKind::NoPeak;
    }
  }
  std::sort(order.begin(), order.end());
  for (const int turn : {0, 1, 2}) {
    for (const auto& [ofTrouble, key, j, trouble] : order) {
      if (ofTrouble == turn) words.tell(j, *trouble);
    }
    if (turn > 0) continue;
    movement.tell(findings);
    if (low < kFewestPeaks || 2 * low <= troubles.size()) continue;
    FileFindings{findings, Findings::Measurement, peaks.file}.add(
        0, "warning: ", low, " of ", troubles.size(),
        " peaks are in the noise of the first spectrum: a list of another sample, or another reference?");
  }
}

}  // namespace peakbox
