#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

#include "base/RobustSpread.h"
#include "base/TextNumbers.h"
#include "check/Checks.h"
#include "peaks/LineSplitter.h"

namespace peakbox {

namespace {

/// Whether the frequencies that a list was made for are the spectrum's the other way round; other ones are told.
bool hasExchangedMHz(const std::string& frequencyLine, const Axes& axes, const FileFindings& findings) {
  LineSplitter fields;
  fields.split(frequencyLine);
  if (fields.getFieldCount() < 2) return false;
  const auto read = [&](int i) { return textToReal(fields.getField(i) + (*fields.getField(i) == '{')); };
  const double listed[] = {read(0), read(1)};
  const auto fits = [&](int i, int dim) {
    const double own = std::fabs(axes.observeMHz[static_cast<std::size_t>(dim)]);
    return std::fabs(listed[i] - own) <= 0.01 * own;  // people round the MHz of a list
  };
  const bool isKnown = listed[0] > 0 && listed[1] > 0;
  const bool isExchanged = fits(0, 1) && fits(1, 0);
  const bool isOther = isKnown && !(fits(0, 0) && fits(1, 1));
  findings.add(isOther && !isExchanged, 5, "warning: the list was made at ", listed[0], " and ", listed[1],
               " MHz, but the spectrum has ", axes.observeMHz[0], " and ", axes.observeMHz[1], " MHz");
  return isOther && isExchanged;
}

/// Whether at least half of the peaks lie inside the spectrum with exchanged dimensions, and fewer as they are.
bool hasExchangedPositions(const PeakList& list, const Axes& axes) {
  const auto isInside = [&](int j, int dim, int target) {
    const double point = axes.ppmToPoint(axes.pointToPpm(list.getPosition(j, dim), dim), target);
    return point > -0.5 && point < axes.sizes[static_cast<std::size_t>(target)] - 0.5;
  };
  int straight = 0;
  int exchanged = 0;
  for (int j = 0; j < list.getCount(); ++j) {
    straight += isInside(j, 0, 0) && isInside(j, 1, 1);
    exchanged += isInside(j, 0, 1) && isInside(j, 1, 0);
  }
  return 2 * exchanged >= list.getCount() && 2 * straight < list.getCount();
}

/// The values of one dimension of the peaks that stand for signals.
struct ListedValues {
  const Axes& axes;
  std::array<std::vector<double>, 2> ppm{};
  std::array<std::vector<double>, 2> widths{};  // ppm

  ListedValues(const ListedPeaks& peaks, const Axes& spectrumAxes) : axes(spectrumAxes) {
    for (const ListedPeaks::Entry& entry : peaks.entries) {
      const int j = static_cast<int>(entry.position);
      if (!entry.hasNumbers || isNoiseLabel(peaks.list.getLabel(j))) continue;
      for (const int dim : {0, 1}) {
        const auto d = static_cast<std::size_t>(dim);
        ppm[d].push_back(axes.pointToPpm(peaks.list.getPosition(j, dim), dim));
        widths[d].push_back(peaks.list.getBoundsWidth(j, dim) * axes.hzPerPoint[d] / axes.observeMHz[d]);
      }
    }
  }

  /// The share of positions that are on the axis of a dimension when a unit is so many of its ppm.
  double findInside(std::size_t d, double unit, int dim) const {
    const auto isInside = [&](double value) {
      const double point = axes.ppmToPoint(value * unit, dim);
      return point > -1.5 && point < axes.sizes[static_cast<std::size_t>(dim)] + 0.5;
    };
    const auto inside = std::count_if(ppm[d].begin(), ppm[d].end(), isInside);
    return static_cast<double>(inside) / static_cast<double>(ppm[d].size());
  }

  /// In what the positions of a dimension are if not in ppm; empty where most of them are inside as they are.
  std::string findUnit(int dim) const {
    const auto d = static_cast<std::size_t>(dim);
    const double inside = findInside(d, 1, dim);
    if (inside > 0.3) return "";
    if (findInside(d, 1, 1 - dim) >= 0.9) return "ppm of the other dimension";
    const auto [least, most] = std::minmax_element(ppm[d].begin(), ppm[d].end());
    const double size = axes.sizes[d];
    const bool areHz = findInside(d, 1 / axes.observeMHz[d], dim) >= 0.9;
    const bool arePoints = *least >= 0 && *most <= size + 1 && (areHz || *most - *least > 0.3 * size);
    if (areHz && !arePoints) return "Hz";
    return arePoints ? "points" : inside < 0.1 ? "ppm of another nucleus" : "";
  }

  /// Whether the widths of a dimension would be reasonable in Hz.
  bool areWidthsInHz(int dim) const {
    const auto d = static_cast<std::size_t>(dim);
    std::vector<double> values = widths[d];
    const double median = takeMedian(values);
    const double inHz = std::fabs(median / axes.hzPerPoint[d]);  // points
    return std::fabs(axes.ppmWidthToPoints(median, dim)) > axes.sizes[d] / 4.0 && inHz > 0.5 &&
           inHz < axes.sizes[d] / 5.0;
  }
};

/// Tells of positions or widths that are not in ppm; whether some are.
bool tellUnits(const ListedPeaks& peaks, const Axes& axes, const FileFindings& findings) {
  constexpr std::size_t kFewest = 5;
  const ListedValues values(peaks, axes);
  if (values.ppm[0].size() < kFewest) return false;
  std::string units;
  std::string widths;
  for (const int dim : {0, 1}) {
    const std::string ofDimension = " (dimension " + std::to_string(dim + 1) + ")";
    const std::string unit = values.findUnit(dim);
    if (!unit.empty()) units.append(units.empty() ? "" : " and ").append(unit).append(ofDimension);
    if (values.areWidthsInHz(dim)) widths += ofDimension;
  }
  const bool areUnits = findings.add(!units.empty(), 0, "warning: positions lie outside the spectrum; they look like ",
                                     units, ", and the list needs ppm of its own dimension");
  const bool areWidths = !areUnits && findings.add(!widths.empty(), 0, "warning: widths (.B)", widths,
                                                   " span the spectrum; they look like Hz, and the list needs ppm");
  return areUnits || areWidths;
}

/// Places peak j; returns why a run would end at it, or what else is wrong with its place.
std::string place(int j, const PeakList& list, const Spectrum& spectrum, BoxTable& boxes) {
  constexpr double kMostSizes = 1e4;  // beyond which no spectrum can mean it, and folding it would take seconds
  for (const int dim : {0, 1}) {
    const double reach = std::fabs(list.getPosition(j, dim)) + std::fabs(list.getBoundsWidth(j, dim));
    const bool isFarOff = reach > kMostSizes * spectrum.getSize(dim) && std::isfinite(reach);
    if (isFarOff) return "more than 10000 spectral widths outside the spectrum";
  }
  const std::string end = tryStep([&] { boxes.placeBox(j, spectrum, list); });
  return end.empty() ? "" : "no place in the spectrum, which ends the run: " + end;
}

}  // namespace

void checkPlacement(ListedPeaks& peaks, const std::string& frequencyLine, const Spectrum& first,
                    const RunSettings& settings, const FileFindings& findings) {
  const bool frequencies = hasExchangedMHz(frequencyLine, first.getAxes(), findings);
  if (!peaks.isUsable) return;
  const bool positions = hasExchangedPositions(peaks.list, first.getAxes());
  findings.add(positions || frequencies, 2, "error: the dimensions are exchanged: the ",
               positions ? "positions" : "MHz of line 5",
               " fit the spectrum only the other way round; line 2 must name the direct dimension first, and the "
               "spectrum must not be transposed");
  ListedPeaks kept{.file = peaks.file, .isMisread = !positions && tellUnits(peaks, first.getAxes(), findings)};
  BoxTable boxes(static_cast<unsigned>(peaks.list.getCount()), settings.getTolerance1(), settings.getTolerance2());
  for (const ListedPeaks::Entry& entry : peaks.entries) {
    if (!entry.hasNumbers || positions) continue;
    const int j = static_cast<int>(entry.position);
    const std::string trouble = place(j, peaks.list, first, boxes);
    const std::string name = peaks.nameOf(entry.position);
    if (kept.isMisread && !trouble.empty()) continue;
    if (findings.add(!trouble.empty(), entry.line, "error: ", name, ": ", trouble)) continue;
    kept.list.addPeak(peaks.list, j);
    kept.entries.push_back(entry);
    const int folds[] = {std::abs(boxes.getFoldCount1(j)), std::abs(boxes.getFoldCount2(j))};
    for (const int dim : {0, 1}) {
      findings.add(folds[dim] > 1 && !kept.isMisread, entry.line, "warning: ", peaks.list.getLabel(j), ": folded ",
                   folds[dim], " times in dimension ", dim + 1, ", so that its position is probably wrong");
    }
  }
  takeMessages();
  peaks = kept;
  peaks.isUsable = !peaks.entries.empty();
}

}  // namespace peakbox
