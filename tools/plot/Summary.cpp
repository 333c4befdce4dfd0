#include <algorithm>

#include "base/RobustSpread.h"
#include "base/TextNumbers.h"
#include "plot/Drawing.h"
#include "plot/Gnuplot.h"
#include "plot/Pages.h"

namespace peakbox {

namespace {

/// A value of a peak with its error, 0 where this is unknown.
struct Entry {
  double number;
  double value;
  double error;
  bool isRed;
};

std::vector<Entry> listEntries(const MeasuredRun& run) {
  std::vector<Entry> entries;
  for (std::size_t j = 0; j < run.results.peaks.size(); ++j) {
    const auto& [fit, readings, remark] = run.results.peaks[j];
    const bool isRed = !run.troubles[j].text.empty() || !remark.empty();
    const double number = textToReal(std::string(run.report->getPeaks()[j].number).c_str());
    const auto add = [&](double value, double error) {
      if (!std::isfinite(value)) return;
      entries.push_back({number, value, std::isfinite(error) ? error : 0, isRed});
    };
    if (fit) add(fit->rate, fit->error);
    for (const Reading& reading : readings) add(reading.value, reading.error);
  }
  return entries;
}

/// From the least to the greatest value of peaks without trouble, if there are any, and an error beyond.
std::array<double, 2> findRange(const std::vector<Entry>& entries) {
  const bool areAllRed = std::all_of(entries.begin(), entries.end(), [](const Entry& entry) { return entry.isRed; });
  std::vector<double> values;
  std::vector<double> errors;
  for (const Entry& entry : entries) {
    if (entry.isRed && !areAllRed) continue;
    values.push_back(entry.value);
    errors.push_back(entry.error);
  }
  const auto [least, greatest] = std::minmax_element(values.begin(), values.end());
  const double margin = 2 * takeMedian(errors) + 0.05 * (*greatest - *least);
  return {*least - margin, *greatest + margin};
}

}  // namespace

std::string writeSummary(const MeasuredRun& run) {
  const std::vector<Entry> entries = listEntries(run);
  if (entries.empty()) return "";
  const auto [low, high] = findRange(entries);
  std::string peaks;
  double first = INFINITY;
  double last = -INFINITY;
  for (const Entry& entry : entries) {
    const int beyond = entry.value > high ? 1 : entry.value < low ? -1 : 0;
    peaks += compose(entry.number, " ", std::clamp(entry.value, low, high), " ", entry.error, " ", entry.isRed, " ",
                     beyond, "\n");
    first = std::min(first, entry.number);
    last = std::max(last, entry.number);
  }
  const bool areRates = run.results.quantity == "R";
  const double margin = 0.5 + 0.01 * (last - first);
  return compose("$peaks << EOD\n", peaks, "EOD\nordinate = '", run.results.quantity,
                 areRates ? " (in the inverse of the unit of the parameters)" : "",
                 "'\ntitle = 'error bars: ", areRates ? "R_scaled" : run.results.quantity + "_err", "'\nset xrange [",
                 first - margin, ":", last + margin, "]\nset yrange [", low, ":", high, "]\n", kSummary);
}

}  // namespace peakbox
