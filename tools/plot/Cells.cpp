#include <algorithm>
#include <iomanip>
#include <iterator>

#include "base/TextNumbers.h"
#include "plot/Drawing.h"
#include "plot/Gnuplot.h"
#include "plot/Pages.h"
#include "plot/Plane.h"

namespace peakbox {

namespace {

/// What was found and its error, in as many digits as this makes sense.
std::string describeResult(const MeasuredRun& run, std::size_t j) {
  const auto& [fit, readings, remark] = run.results.peaks[j];
  if (!fit && readings.size() != 1) return "";
  const double value = fit ? fit->rate : readings[0].value;
  const double error = fit ? fit->error : readings[0].error;
  if (!(error > 0)) return std::isfinite(value) ? compose(run.results.quantity, " = ", value, " ± ?") : "";
  const int digits = std::clamp(1 - static_cast<int>(std::floor(std::log10(error))), 0, 9);
  const std::string text =
      compose(run.results.quantity, std::fixed, std::setprecision(digits), " = ", value, " ± ", error);
  if (!fit || run.uncertainties.empty() || !(fit->freedom > 0)) return text;
  return text + compose(std::setprecision(3), ",  χ²/dof = ", fit->chi2 / fit->freedom);
}

/// What is drawn of a peak, by its name: readings that are known, else its intensities.
std::pair<std::string, std::vector<Reading>> findReadings(const MeasuredRun& run, std::size_t j) {
  std::vector<Reading> readings;
  for (const Reading& reading : run.results.peaks[j].readings) {
    if (std::isfinite(reading.value)) readings.push_back(reading);
  }
  if (!readings.empty()) return {run.results.quantity, readings};
  for (std::size_t k = 0; k < run.abscissas.size(); ++k) {
    const double error = run.uncertainties.empty() ? 0 : run.uncertainties[k];
    readings.push_back({k, run.report->getSpectra()[k].rows[j].value, error});
  }
  return {"intensity", readings};
}

}  // namespace

std::string writeCell(const MeasuredRun& run, std::size_t j) {
  const Report::Peak& peak = run.report->getPeaks()[j];
  std::string note;
  for (const auto d : kDims) {
    const BoxExtent& area = run.series->getFirstArea(j)[d];
    const double position = run.peaks.getPosition(static_cast<int>(j), d);
    if (std::fabs(position - 0.5 * (area.low + area.high)) < 0.5) continue;
    note = compose("folded, listed at ", realToText(run.axes.pointToPpm(position, d)), " ppm");
  }
  const std::string& trouble = run.troubles[j].text;
  const std::string& remark = run.results.peaks[j].remark;
  return compose("name = ", quote(compose(peak.number, "   ", peak.label), 30),
                 "\nremark = ", quote(trouble + (trouble.empty() || remark.empty() ? "" : "; ") + remark, 60),
                 "\nisTroubled = ", !trouble.empty(), "\nisPoor = ", !remark.empty(), "\nnote = '", note,
                 "'\nresult = '", describeResult(run, j), "'\n", kCell);
}

std::string writePanel(const MeasuredRun& run, std::size_t j, std::size_t k) {
  const std::set<std::size_t> drawn = run.findDrawn(j);
  const Window box = run.getBox(j, k);
  Window window = run.getBox(j, 0);
  Window area;
  Window listed;
  for (const auto d : kDims) {
    const BoxExtent& first = run.series->getFirstArea(j)[d];
    const BoxExtent searched = k == 0 ? first : run.series->getLaterArea(j)[d];
    area.low[d] = std::max(-1.0, searched.low);  // a tolerance may be infinite
    area.high[d] = std::min<double>(run.axes.sizes[d], searched.high);
    listed.low[d] = first.low;
    listed.high[d] = first.high;
    const double reach = std::clamp(0.65 * (first.high - first.low), 6 * run.halfBox[d] + 3, 60.0) - run.halfBox[d];
    window.low[d] -= reach;
    window.high[d] += reach;
  }
  for (const std::size_t n : drawn) hold(window, run.getBox(j, n));
  std::string boxes;
  for (std::size_t other = 0; other < run.troubles.size(); ++other) {
    const Window its = run.getBox(other, k);
    const auto isNear = [&](std::uint8_t d) { return its.high[d] > window.low[d] && its.low[d] < window.high[d]; };
    if (other != j && isNear(0) && isNear(1)) boxes += writeOutline(run, its, "others");
  }
  boxes += writeOutline(run, box, "own");  // above those at the same point
  const double base = std::max(3 * run.series->getNoise(k), 0.08 * run.getHeight(j, k));
  const std::string name = k == 0 ? "first" : k + 1 == run.abscissas.size() ? "last" : compose("no. ", k + 1);
  const std::string& parameter = run.settings.getParameter(static_cast<int>(k), 0);
  const Window plane{{-0.5, -0.5}, {run.axes.sizes[0] - 0.5, run.axes.sizes[1] - 0.5}};
  return compose(writeWindow(run, window, base, 1.5, 120), writeOutline(run, plane, "edges"), boxes,
                 writeOutline(run, area, "area"), "set label at ", writeMiddle(run, listed), " @listed\nset label at ",
                 writeMiddle(run, box), " @found\npanels = ", drawn.size(),
                 "\npanel = ", std::distance(drawn.begin(), drawn.find(k)),
                 "\nisShown = ", run.troubles[j].spectra.contains(k),
                 "\ntitle = ", quote(name + (parameter.empty() ? "" : ": " + parameter), 17), "\n", kPanel);
}

std::string writeCurve(const MeasuredRun& run, std::size_t j) {
  const std::optional<PeakFit>& fit = run.results.peaks[j].fit;
  const auto [ordinate, readings] = findReadings(run, j);
  std::vector<double> abscissas;
  for (const Reading& reading : readings) abscissas.push_back(run.abscissas[reading.spectrum]);
  if (!run.hasNumbers) abscissas = {1, static_cast<double>(run.abscissas.size())};
  const auto [first, last] = std::minmax_element(abscissas.begin(), abscissas.end());
  const bool isFitted = fit && std::isfinite(fit->getHeight(*first) + fit->getHeight(*last));
  double lowest = 0;
  double highest = 0;
  double farthest = 0;
  std::string values;
  for (const auto& [k, value, error] : readings) {
    const double bar = error > 0 ? error : 0;
    const double residual = isFitted ? value - fit->getHeight(run.abscissas[k]) : 0;
    lowest = std::min(lowest, value - bar);
    highest = std::max(highest, value + bar);
    farthest = std::max(farthest, bar > 0 ? std::fabs(residual) / bar + 1 : std::fabs(residual));
    values +=
        compose(run.abscissas[k], " ", value, " ", bar, " ", residual, " ", run.troubles[j].spectra.contains(k), "\n");
  }
  std::string line;
  for (int n = 0; isFitted && n <= 60; ++n) {  // closely where the curve is steep
    const double way = std::pow(n / 60.0, 4) * (*last - *first);
    const double t = fit->rate > 0 ? *first + way : *last - way;
    line += compose(t, " ", fit->getHeight(t), "\n");
  }
  if (lowest == highest) highest = 1;
  if (farthest == 0) farthest = 1;
  const double margin =
      run.hasNumbers && *first < *last ? 0.05 * (*last - *first) : std::max(0.5, 0.05 * std::fabs(*first));
  return compose("lowest = ", lowest, "\nhighest = ", highest, "\nfarthest = ", farthest, "\nisFitted = ", isFitted,
                 "\nhasNoise = ", !run.uncertainties.empty(), "\nordinate = '", ordinate, "'\nabscissa = '",
                 run.hasNumbers ? "parameter" : "spectrum", "'\n$values << EOD\n", values, "EOD\n$line << EOD\n", line,
                 "EOD\n", writeAxis('x', *first - margin, *last + margin, 0), kCurve);
}

}  // namespace peakbox
