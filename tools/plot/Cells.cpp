#include <algorithm>
#include <iomanip>
#include <iterator>

#include "base/TextNumbers.h"
#include "plot/Drawing.h"
#include "plot/Gnuplot.h"
#include "plot/Pages.h"
#include "plot/Plane.h"

namespace peakbox {

std::string writeCell(const MeasuredRun& run, std::size_t j) {
  const std::optional<PeakRate>& rate = run.rates[j];
  const Report::Peak& peak = run.report->getPeaks()[j];
  std::string note;
  for (const auto d : kDims) {
    const BoxExtent& area = run.series->getFirstArea(j)[d];
    const double position = run.peaks.getPosition(static_cast<int>(j), d);
    if (std::fabs(position - 0.5 * (area.low + area.high)) < 0.5) continue;
    note = compose("folded, listed at ", realToText(run.axes.pointToPpm(position, d)), " ppm");
  }
  const std::string& trouble = run.troubles[j].text;
  const std::string remark = rate ? rate->remark : "";
  std::string result;
  if (rate && rate->error > 0) {
    const int digits = std::clamp(1 - static_cast<int>(std::floor(std::log10(rate->error))), 0, 9);
    result = compose(std::fixed, std::setprecision(digits), "R = ", rate->rate, " ± ", rate->error);
    if (!run.uncertainties.empty() && rate->freedom > 0)
      result += compose(std::setprecision(3), ",  χ²/dof = ", rate->chi2 / rate->freedom);
  }
  return compose("name = ", quote(compose(peak.number, "   ", peak.label), 30),
                 "\nremark = ", quote(trouble + (trouble.empty() || remark.empty() ? "" : "; ") + remark, 70),
                 "\nisTroubled = ", !trouble.empty(), "\nisPoor = ", !remark.empty(), "\nnote = '", note,
                 "'\nresult = '", result, "'\n", kCell);
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
    if (isNear(0) && isNear(1)) boxes += writeOutline(run, its, other == j ? "own" : "others");
  }
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
  const std::optional<PeakRate>& rate = run.rates[j];
  const auto [first, last] = std::minmax_element(run.abscissas.begin(), run.abscissas.end());
  const bool isFitted = rate && std::isfinite(rate->getHeight(*first) + rate->getHeight(*last));
  double lowest = 0;
  double highest = 0;
  double farthest = 0;
  std::string values;
  for (std::size_t k = 0; k < run.abscissas.size(); ++k) {
    const double value = run.report->getSpectra()[k].rows[j].value;
    const double bar = run.uncertainties.empty() ? 0 : run.uncertainties[k];
    const double residual = isFitted ? value - rate->getHeight(run.abscissas[k]) : 0;
    lowest = std::min(lowest, value - bar);
    highest = std::max(highest, value + bar);
    farthest = std::max(farthest, bar > 0 ? std::fabs(residual) / bar + 1 : std::fabs(residual));
    values +=
        compose(run.abscissas[k], " ", value, " ", bar, " ", residual, " ", run.troubles[j].spectra.contains(k), "\n");
  }
  std::string line;
  for (int n = 0; isFitted && n <= 60; ++n) {  // closely where the curve is steep
    const double way = std::pow(n / 60.0, 4) * (*last - *first);
    const double t = rate->rate > 0 ? *first + way : *last - way;
    line += compose(t, " ", rate->getHeight(t), "\n");
  }
  if (lowest == highest) highest = 1;
  if (farthest == 0) farthest = 1;
  const double margin = *first < *last ? 0.05 * (*last - *first) : std::max(0.5, 0.05 * std::fabs(*first));
  return compose("lowest = ", lowest, "\nhighest = ", highest, "\nfarthest = ", farthest, "\nisFitted = ", isFitted,
                 "\nhasNoise = ", !run.uncertainties.empty(), "\nabscissa = '",
                 run.hasNumbers ? "parameter" : "spectrum", "'\n$values << EOD\n", values, "EOD\n$line << EOD\n", line,
                 "EOD\n", writeAxis('x', *first - margin, *last + margin, 0), kCurve);
}

}  // namespace peakbox
