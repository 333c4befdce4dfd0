#include <algorithm>
#include <numeric>

#include "base/Refusal.h"
#include "base/TextNumbers.h"
#include "plot/Drawing.h"
#include "plot/Gnuplot.h"
#include "plot/LabelPlaces.h"
#include "plot/Pages.h"
#include "plot/Plane.h"
#include "spectrum/Nuclei.h"

namespace peakbox {

namespace {

/// "1H" with its mass number raised, and the frequency.
std::string describeAxis(const MeasuredRun& run, std::uint8_t dim) {
  std::string name = nameDimensions(run.spectrum)[dim];
  const std::size_t digits = name.find_first_not_of("0123456789");
  if (digits > 0) name = "^{" + name.substr(0, digits) + "}" + name.substr(digits, name.find('_') - digits);
  return compose("title", dim + 1, " = '", name, " (ppm), ", realToText(run.axes.observeMHz[dim]), " MHz'\n");
}

/// The labels and the lines to them; peaks in trouble choose their places first.
std::string writeLabels(const MeasuredRun& run, const Window& window) {
  constexpr std::size_t kRoom = 22;
  std::vector<std::size_t> order(run.troubles.size());
  std::iota(order.begin(), order.end(), 0U);
  const auto isTroubled = [&](std::size_t j) { return !run.troubles[j].text.empty(); };
  std::stable_partition(order.begin(), order.end(), isTroubled);
  std::vector<Area> boxes(order.size());
  std::vector<Area> labels(order.size());
  std::vector<std::string_view> texts;
  for (std::size_t n = 0; n < order.size(); ++n) {
    const Report::Peak& peak = run.report->getPeaks()[order[n]];
    texts.push_back(order.size() > kMostLabels ? peak.number : peak.label);
    labels[n].half = {0.0027 * (1 + static_cast<double>(std::min(texts[n].size(), kRoom))), 0.0083};
    for (const auto d : kDims) {
      const double length = window.high[d] - window.low[d];
      const double share = (run.getBox(order[n], 0).low[d] + run.halfBox[d] - window.low[d]) / length;
      boxes[n].middle[d] = run.axes.pointToPpm(1, d) < run.axes.pointToPpm(0, d) ? share : 1 - share;
      boxes[n].half[d] = run.halfBox[d] / length;
    }
  }
  const std::vector<bool> arePlaced = placeLabels(boxes, labels);
  const auto at = [](const Area& area) { return compose(" graph ", area.middle[0], ",", area.middle[1]); };
  std::string text;
  for (std::size_t n = 0; n < order.size(); ++n) {
    if (!arePlaced[n]) continue;
    text += compose("set arrow from", at(boxes[n]), " to", at(labels[n]), " back nohead linecolor rgb middle\n",
                    "set label ", quote(texts[n], kRoom), " at", at(labels[n]), " center front boxed noenhanced ",
                    (isTroubled(order[n]) ? "font bold textcolor rgb red\n" : "textcolor rgb dark\n"));
  }
  return text;
}

}  // namespace

std::string writeMap(const MeasuredRun& run) {
  if (run.troubles.empty()) refuse(run.report->getName(), "has no peaks");
  Window window = run.getBox(0, 0);
  double tallest = 0;
  std::string calm;
  std::string troubled;
  for (std::size_t j = 0; j < run.troubles.size(); ++j) {
    const bool isCalm = run.troubles[j].text.empty();
    (isCalm ? calm : troubled) += writeOutline(run, run.getBox(j, 0), isCalm ? "calm" : "troubled");
    hold(window, run.getBox(j, 0));
    tallest = std::max(tallest, run.getHeight(j, 0));
  }
  for (const auto d : kDims) {
    const double margin = 0.05 * (window.high[d] - window.low[d]);
    window.low[d] = std::max(-0.5, window.low[d] - margin);
    window.high[d] = std::min(run.axes.sizes[d] - 0.5, window.high[d] + margin);
  }
  const double base = std::max(7 * run.series->getNoise(0), 1e-3 * tallest);
  return compose(describeAxis(run, 0), describeAxis(run, 1), "base = ", base,
                 "\nname = ", quote(run.settings.getSpectrumFile(0), 80), "\n",
                 writeWindow(run, window, base, 1.6, 400), calm, troubled, writeLabels(run, window), kMap);
}

}  // namespace peakbox
