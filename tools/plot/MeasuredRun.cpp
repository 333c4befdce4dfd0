#include "plot/MeasuredRun.h"

#include <algorithm>
#include <numeric>
#include <sstream>

#include "base/Messages.h"
#include "base/Refusal.h"
#include "base/TextNumbers.h"
#include "integrate/PeakTroubles.h"
#include "plot/Gnuplot.h"

namespace peakbox {

namespace {

/// The worst that is wrong with each peak; of boxes that share points only if it is more than half.
std::vector<Trouble> describeTroubles(const MeasuredRun& run) {
  const double boxSize = 4 * run.halfBox[0] * run.halfBox[1];
  std::vector<Trouble> troubles;
  for (const std::vector<PeakTrouble>& found : findTroubles(*run.series, run.settings, run.peaks)) {
    Trouble& trouble = troubles.emplace_back();
    for (const PeakTrouble& one : found) {
      const bool isShared = one.kind == TroubleKind::SharesPoints;
      if (!trouble.text.empty() || (isShared && 2 * static_cast<double>(one.sharedPoints) <= boxSize)) continue;
      const std::string other(one.other ? run.report->getPeaks()[*one.other].label : "");
      trouble.text = one.kind == TroubleKind::SamePoint ? "same point as " + other
                     : isShared                         ? "box half shared with " + other
                     : one.kind == TroubleKind::OnFlank ? "on a flank"
                     : one.kind == TroubleKind::Moved   ? "moved out of its box"
                                                        : "no peak";
      trouble.text += compose(", in ", one.spectra.size(), " of ", run.abscissas.size(), " spectra");
      for (const int number : one.spectra) trouble.spectra.insert(static_cast<std::size_t>(number - 1));
    }
  }
  return troubles;
}

}  // namespace

MeasuredRun::MeasuredRun(const std::string& parameterFile, const std::string& reportFile) {
  std::string text = readReportText(reportFile);
  const char* const arguments[] = {"peakbox", "-i", parameterFile.c_str()};
  settings.parseArguments(3, arguments);
  // The option alone is added: a pipe can be read only once.
  const char* const additions[] = {"peakbox", "-abs", "-i", "/dev/null"};
  RunSettings absoluteSettings = settings;
  absoluteSettings.parseArguments(4, additions);
  halfBox = {settings.getBoxSize(0) + 0.5, settings.getBoxSize(1) + 0.5};
  spectrum.readHeader(settings.getSpectrumFile(0), false);
  axes = spectrum.getAxes();
  if (!axes.isUsable(0) || !axes.isUsable(1)) refuse(settings.getSpectrumFile(0), "its axes are not usable");
  peaks.read(settings.getPeakListFile(), spectrum, false);
  series.emplace(settings, spectrum, peaks);
  std::ostringstream plain;
  std::ostringstream absolute;
  for (int k = 0; k < settings.getSpectrumCount(); ++k) {
    spectrum.loadData(settings.getSpectrumFile(k), false);
    series->measure(k, spectrum);
    for (std::size_t j = 0; j < series->getPeakCount(); ++j) {
      if (const auto& loss = series->getLoss(j)) fail(loss->end.message);
    }
    series->getBoxes().writeSpectrumTable(k, plain, settings, spectrum, peaks);
    series->getBoxes().writeSpectrumTable(k, absolute, absoluteSettings, spectrum, peaks);
    const std::optional<double> parameter = textToDecimal(settings.getParameter(k, 0));
    hasNumbers = hasNumbers && parameter;
    abscissas.push_back(parameter.value_or(0));
  }
  if (!hasNumbers) std::iota(abscissas.begin(), abscissas.end(), 1.0);
  const auto findEnd = [&](const std::string& wanted) {
    return std::mismatch(text.begin(), text.end(), wanted.begin(), wanted.end()).first - text.begin();
  };
  const auto end = std::max(findEnd(plain.str()), findEnd(absolute.str()));
  if (text != plain.str() && text != absolute.str()) {
    if (text.begin() + end == text.end())
      refuse(reportFile, "is incomplete: it ends within the run of " + parameterFile);
    refuse(reportFile,
           compose("line ", 1 + std::count(text.begin(), text.begin() + end, '\n'), " is not what a run of ",
                   parameterFile, " writes: this is the report of another run, or its files have changed since"));
  }
  report.emplace(std::move(text), reportFile);
  troubles = describeTroubles(*this);
  results.peaks.resize(troubles.size());
}

Window MeasuredRun::getBox(std::size_t j, std::size_t k) const {
  const auto [point1, point2] = series->getSighting(k, j).point;
  const double middle1 = static_cast<double>(point1);
  const double middle2 = static_cast<double>(point2);
  return {{middle1 - halfBox[0], middle2 - halfBox[1]}, {middle1 + halfBox[0], middle2 + halfBox[1]}};
}

std::set<std::size_t> MeasuredRun::findDrawn(std::size_t j) const {
  const std::size_t last = abscissas.size() - 1;
  const std::set<std::size_t>& troubled = troubles[j].spectra;
  std::set<std::size_t> drawn{0, last};
  if (!troubled.empty() && !troubled.contains(0) && !troubled.contains(last)) drawn.insert(*troubled.begin());
  return drawn;
}

}  // namespace peakbox
