#include <algorithm>
#include <cmath>
#include <iomanip>
#include <sstream>

#include "base/TextNumbers.h"
#include "check/Checks.h"
#include "integrate/PeakTroubles.h"
#include "integrate/Uphill.h"

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

/// With one decimal, and below or above the value as a limit asks for.
std::string roundDown(double value) { return realToText(std::floor(value * 10) / 10); }
std::string roundUp(double value) { return realToText(std::ceil(value * 10) / 10); }

/// "2 points (0.013 ppm) to higher ppm in dimension 1 and 1 point (0.1 ppm) to lower ppm in dimension 2"
std::string describeWay(const Axes& axes, const std::array<double, 2>& from, const std::array<double, 2>& to) {
  const auto getPoints = [&](std::size_t d) { return std::fabs(to[d] - from[d]); };
  std::ostringstream text;
  text << std::setprecision(2);
  for (const std::size_t d : {0U, 1U}) {
    const bool isLess = getPoints(d) < 0.5 && getPoints(d) <= getPoints(1 - d);
    if (isLess && (d == 0 || getPoints(0) > 0)) continue;
    const int dim = static_cast<int>(d);
    const double ppm = axes.pointToPpm(to[d], dim) - axes.pointToPpm(from[d], dim);
    const double points = std::round(getPoints(d) * 10) / 10;
    text << (text.str().empty() ? "" : " and ") << points << (points == 1 ? " point (" : " points (") << std::fabs(ppm)
         << " ppm) to " << (ppm > 0 ? "higher" : "lower") << " ppm in dimension " << d + 1;
  }
  return text.str();
}

/// The troubles of single peaks in words: first words that the manual has, what is to be seen, and what to do.
struct PeakWords {
  const Series& series;
  const RunSettings& settings;
  const ListedPeaks& peaks;

  std::string nameOther(const PeakTrouble& trouble) const {
    const std::size_t other = *trouble.other;
    return peaks.nameOf(other).append(" (line ").append(std::to_string(peaks.entries[other].line)).append(")");
  }

  std::string describe(std::size_t j, const PeakTrouble& trouble) const {
    switch (trouble.kind) {
      case TroubleKind::LeavesPlane:
        return "the run ends at this peak in " + describeSpectra(trouble.spectra) + ", " + describeLoss(j);
      case TroubleKind::SamePoint:
        return describeSamePoint(trouble);
      case TroubleKind::NoPeak:
        return describeNoPeak(j, trouble);
      case TroubleKind::OnFlank:
        return describeFlank(j, trouble);
      case TroubleKind::SharesPoints:
        return describeOverlap(trouble);
      case TroubleKind::Moved:
        return describeMovement(j, trouble);
    }
    return "";
  }

  /// What stands behind a worse trouble.
  std::string name(const PeakTrouble& trouble) const {
    switch (trouble.kind) {
      case TroubleKind::LeavesPlane:
        return "";
      case TroubleKind::SamePoint:
        return "at the same point as " + nameOther(trouble);
      case TroubleKind::NoPeak:
        return "no peak";
      case TroubleKind::OnFlank:
        return "on a flank";
      case TroubleKind::SharesPoints:
        return describeOverlap(trouble);
      case TroubleKind::Moved:
        return "moved out of its box";
    }
    return "";
  }

  /// How another peak is kept out of the search, in the first spectrum or in later ones.
  std::string describeRemedy(bool isFirst) const {
    const Axes& axes = series.getAxes();
    const bool follows =
        axes.hzToPoints(settings.getTolerance1(), 0) >= 1 || axes.hzToPoints(settings.getTolerance2(), 1) >= 1;
    return isFirst   ? "make the bounds narrower, or delete it"
           : follows ? "make TOLERANCE smaller"
                     : "correct its position";
  }

  std::string describeSamePoint(const PeakTrouble& trouble) const {
    return "measured at the same point as " + nameOther(trouble) + " in " + describeSpectra(trouble.spectra) +
           ", a peak that is nearer to it: " + describeRemedy(trouble.spectra.front() == 1);
  }

  std::string describeNoPeak(std::size_t j, const PeakTrouble& trouble) const {
    const double noise = series.getNoise(trouble.worst);
    const double height = std::fabs(series.getSighting(trouble.worst, j).height);
    const std::string ratio = noise > 0 ? roundDown(height / noise) : "0";
    return "no peak: " + ratio + " times the noise (" + realToText(noise) + ") in " + describeSpectra(trouble.spectra) +
           ", where it is strongest; at least " + realToText(kSureHeight) + " needed";
  }

  std::string describeFlank(std::size_t j, const PeakTrouble& trouble) const {
    const Sighting& seen = series.getSighting(trouble.worst, j);
    const bool isFirst = trouble.worst == 0;
    const std::array<double, 2> point{static_cast<double>(seen.point[0]), static_cast<double>(seen.point[1])};
    const std::string number = std::to_string(series.getIndices()[trouble.worst] + 1);
    const std::string text = "on a flank: in spectrum " + number + " the top lies " +
                             describeWay(series.getAxes(), point, seen.top) + ", where ";
    return trouble.other ? text + nameOther(trouble) + " is: " + describeRemedy(isFirst)
                         : text + "no listed peak is: correct the position or " +
                               (isFirst ? "widen the bounds" : "put that spectrum first");
  }

  std::string describeOverlap(const PeakTrouble& trouble) const {
    const std::int64_t size1 = std::int64_t{2} * settings.getBoxSize(0) + 1;
    const std::int64_t size2 = std::int64_t{2} * settings.getBoxSize(1) + 1;
    std::ostringstream text;
    text << "its box shares " << trouble.sharedPoints << " of " << size1 * size2 << " points with that of "
         << nameOther(trouble);
    if (trouble.moreOthers > 0) text << " and some with " << trouble.moreOthers << " more";
    return text.str();
  }

  std::string describeMovement(std::size_t j, const PeakTrouble& trouble) const {
    const Sighting& first = series.getSighting(0, j);
    const std::array<double, 2>& top = series.getSighting(trouble.worst, j).top;
    const std::array<double, 2> given{settings.getTolerance1(), settings.getTolerance2()};
    std::ostringstream text;
    text << "moved out of its box: " << describeWay(series.getAxes(), first.top, top) << " by spectrum "
         << series.getIndices()[trouble.worst] + 1 << "; it takes TOLERANCE";
    for (const std::size_t d : {0U, 1U}) {
      const double points = std::fabs(std::round(top[d]) - static_cast<double>(first.point[d]));
      text << ' ' << std::max(given[d], std::ceil(points * std::fabs(series.getAxes().hzPerPoint[d])));
    }
    return text.str();
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

/// Whether the peak at the same point has the same label, which the check of the list tells.
bool isListedTwice(const ListedPeaks& peaks, std::size_t j, const PeakTrouble& trouble) {
  const bool isSame = trouble.kind == TroubleKind::SamePoint && peaks.getLabel(j) == peaks.getLabel(*trouble.other);
  return isSame && !peaks.getLabel(j).empty() && !isNoiseLabel(peaks.getLabel(j));
}

/// Whether nothing is wrong with a peak but a box that another one's line names, which is the weaker or lies at its
/// point.
bool isSaidByOther(const Series& series, const std::vector<std::vector<PeakTrouble>>& troubles, std::size_t j) {
  const PeakTrouble& own = troubles[j].front();
  if (own.kind != TroubleKind::SharesPoints || own.moreOthers > 0 || troubles[j].size() > 1) return false;
  const auto getHeight = [&](std::size_t i) { return std::fabs(series.getSighting(own.worst, i).height); };
  const std::size_t other = *own.other;
  const bool isStronger = std::pair(getHeight(other), j) < std::pair(getHeight(j), other);
  return std::any_of(troubles[other].begin(), troubles[other].end(), [&](const PeakTrouble& its) {
    return its.other == j && (its.kind == TroubleKind::SamePoint || (its.kind == own.kind && isStronger));
  });
}

/// What the first spectrum shows of a peak by itself.
void tellFirst(const Series& series, const ListedPeaks& peaks, std::size_t j, const FileFindings& ofList) {
  constexpr double kSignalHeight = 10.0;  // times the noise of a point
  const std::int64_t line = peaks.entries[j].line;
  const std::string warning = "warning: " + peaks.nameOf(j) + ": ";
  const auto isEmpty = [](const BoxExtent& extent) { return extent.firstPoint() > extent.lastPoint(); };
  const auto hasWidth = [&](int dim) { return peaks.list.getBoundsWidth(static_cast<int>(j), dim) > 0; };
  const auto& [area1, area2] = series.getFirstArea(j);
  const bool hasNoPoint = (isEmpty(area1) || isEmpty(area2)) && hasWidth(0) && hasWidth(1);
  ofList.add(hasNoPoint && series.isSeen(0, j), line, warning,
             "no data point in its search area, so that the nearest two are searched");
  const double ratio = std::fabs(series.getSighting(0, j).height) / series.getNoise(0);
  const bool isHigh = ratio >= kSignalHeight && std::isfinite(ratio);
  ofList.add(isHigh && isNoiseLabel(peaks.getLabel(j)), line, warning, "no place for a noise peak: ", roundUp(ratio),
             " times the noise (", series.getNoise(0), "), where less than ", kSignalHeight, " is wanted");
}

}  // namespace

void tellPeaks(const Series& series, const ListedPeaks& peaks, const Explained& explained, const RunSettings& settings,
               Findings& findings) {
  const FileFindings ofList{findings, Findings::Peaks, peaks.file};
  const FileFindings measurement{findings, Findings::Measurement, peaks.file};
  const PeakWords words{series, settings, peaks};
  const auto troubles = findTroubles(series, settings, peaks.list, explained.planes);
  const auto begins = [](const std::vector<PeakTrouble>& one, TroubleKind kind) {
    return !one.empty() && one.front().kind == kind;
  };
  const auto isLow = [&](const auto& one) { return begins(one, TroubleKind::NoPeak); };
  const auto low = static_cast<std::size_t>(std::count_if(troubles.begin(), troubles.end(), isLow));
  const bool areLow = low >= kFewestPeaks && 2 * low > troubles.size() && !explained.list;
  measurement.add(areLow, 0, "warning: ", low, " of ", troubles.size(), " peaks are below ", kSureHeight,
                  " times the noise in every spectrum: too few scans, another sample or another reference?");
  std::size_t unsaid = 0;
  for (std::size_t j = 0; j < troubles.size(); ++j) {
    const std::vector<PeakTrouble>& its = troubles[j];
    const bool isLost = begins(its, TroubleKind::LeavesPlane);
    if (!explained.list) tellFirst(series, peaks, j, ofList);
    if (explained.list && !isLost) unsaid += !its.empty();
    if (its.empty() || (explained.list && !isLost)) continue;
    if ((areLow && isLow(its)) || isListedTwice(peaks, j, its.front()) || isSaidByOther(series, troubles, j)) continue;
    std::string text = (isLost ? "error: " : "warning: ") + peaks.nameOf(j) + ": " + words.describe(j, its.front());
    for (std::size_t i = 1; i < its.size(); ++i) text += (i == 1 ? "; also " : ", ") + words.name(its[i]);
    measurement.add(true, peaks.entries[j].line, text);
  }
  measurement.add(unsaid > 0, 0, "warning: ", unsaid, " of ", troubles.size(),
                  " peaks are in trouble, as is to be expected with such a list; mend it first");
}

}  // namespace peakbox
