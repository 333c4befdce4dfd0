#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>

#include "base/RobustSpread.h"
#include "base/TextNumbers.h"
#include "check/SampledSeries.h"

namespace peakbox {

namespace {

constexpr std::size_t kFewestOrderedPeaks = 8;

struct Middle {
  double median;
  double error;
};

Middle findMiddle(const std::vector<double>& values) {
  const Spread spread = takeMedianSpread(values);
  return {spread.centre,
          1.25 * spread.deviation / std::sqrt(static_cast<double>(std::max<std::size_t>(1, values.size())))};
}

/// The planes in the order of their parameters, or of the files where these are no numbers.
std::vector<std::size_t> orderByParameter(std::vector<std::size_t> planes, const std::vector<double>& parameters) {
  const auto isBefore = [&](std::size_t a, std::size_t b) { return parameters[a] < parameters[b]; };
  if (!parameters.empty()) std::stable_sort(planes.begin(), planes.end(), isBefore);
  return planes;
}

/// Heights as shares of the highest, with the sign that they have against the plane with the highest: a row a plane.
using Shares = std::vector<std::vector<double>>;

Shares findShares(const SampledSeries& all, const std::vector<StrongPeak>& peaks) {
  Shares shares(all.planes.size());
  std::size_t reference = 0;
  double highest = -1;
  for (std::size_t n = 0; n < shares.size(); ++n) {
    std::vector<double> sizes;
    for (const StrongPeak& peak : peaks) sizes.push_back(std::fabs(all.heightOf(n, peak.j)) / peak.height);
    const double middle = takeMedian(sizes);
    if (middle > highest) reference = n;
    highest = std::max(highest, middle);
  }
  for (std::size_t n = 0; n < shares.size(); ++n) {
    for (const StrongPeak& peak : peaks)
      shares[n].push_back(std::copysign(1.0, all.heightOf(reference, peak.j)) * all.heightOf(n, peak.j) / peak.height);
  }
  return shares;
}

bool isBetween(double value, double a, double b) {
  return value >= std::min(a, b) - 0.05 && value <= std::max(a, b) + 0.05;
}

/// Whether the magnitude of the i-th plane in order goes on where its neighbours lead, or hardly any changes.
bool goesOn(std::size_t i, const std::vector<double>& y) {
  const auto size = [&](std::size_t k) { return std::fabs(y[k]); };
  if (std::all_of(y.begin(), y.end(), [](double value) { return std::fabs(value) > 0.6; })) return true;
  const std::size_t last = y.size() - 1;
  if (i > 0 && i < last)
    return isBetween(size(i), size(i - 1), size(i + 1)) && size(i) > 0.5 * std::min(size(i - 1), size(i + 1));
  const std::size_t next = i == 0 ? 1 : last - 1;
  const std::size_t second = i == 0 ? 2 : last - 2;
  return isBetween(size(next), size(i), size(second)) && size(i) >= 0.5 * size(next) &&
         std::fabs(y[i] - y[next]) > 2 * std::fabs(y[next] - y[second]);
}

/// Where intensities of two planes differ by more than they may in repeats: by which share.
double findDifference(const SampledSeries& all, const std::vector<StrongPeak>& peaks, std::size_t a, std::size_t b) {
  std::vector<double> differences;
  for (const StrongPeak& peak : peaks) {
    if (std::max(std::fabs(all.heightOf(a, peak.j)), std::fabs(all.heightOf(b, peak.j))) <= 8) continue;
    const double sumA = all.series.getSighting(a, peak.j).sum;
    const double sumB = all.series.getSighting(b, peak.j).sum;
    differences.push_back(2 * (sumA - sumB) / (std::fabs(sumA) + std::fabs(sumB)));
  }
  if (differences.size() < 5) return 0;
  const Middle middle = findMiddle(differences);
  return std::fabs(middle.median) > std::max(0.2, 4 * middle.error) ? middle.median : 0;
}

/// Steps of the intensities of most peaks, up and down, through rows.
struct Steps {
  int up = 0;
  int down = 0;
  bool goBothWays() const { return up > 0 && down > 0; }
};

Steps countSteps(const Shares& rows) {
  Steps steps;
  for (std::size_t i = 1; i < rows.size(); ++i) {
    std::vector<double> differences;
    for (std::size_t k = 0; k < rows[i].size(); ++k) differences.push_back(rows[i][k] - rows[i - 1][k]);
    const Middle middle = findMiddle(differences);
    if (std::fabs(middle.median) <= std::max(0.03, 3 * middle.error)) continue;
    ++(middle.median > 0 ? steps.up : steps.down);
  }
  return steps;
}

/// The last number in a file's name.
double findNumberInName(const std::string& path) {
  constexpr const char* kDigits = "0123456789";
  const std::string name = path.substr(path.find_last_of('/') + 1);
  const std::string stem = name.substr(0, name.rfind('.'));
  const std::size_t last = stem.find_last_of(kDigits);
  if (last == std::string::npos) return -1;
  const std::size_t before = stem.find_last_not_of(kDigits, last);
  return textToReal(stem.substr(before == std::string::npos ? 0 : before + 1, last).c_str());
}

/// Box sums as shares of the greatest of the peak, a row a plane.
Shares findSums(const SampledSeries& all, const std::vector<StrongPeak>& peaks) {
  Shares rows(all.planes.size());
  for (const StrongPeak& peak : peaks) {
    double greatest = 0;
    for (std::size_t n = 0; n < rows.size(); ++n)
      greatest = std::max(greatest, std::fabs(all.series.getSighting(n, peak.j).sum));
    for (std::size_t n = 0; n < rows.size(); ++n) rows[n].push_back(all.series.getSighting(n, peak.j).sum / greatest);
  }
  return rows;
}

/// The mean row of each parameter, by its size.
Shares averageRepeats(const Shares& rows, const std::vector<double>& parameters) {
  std::map<double, std::vector<std::size_t>> planes;
  for (std::size_t n = 0; n < rows.size(); ++n) planes[parameters[n]].push_back(n);
  Shares means;
  for (const auto& [parameter, repeats] : planes) {
    std::vector<double> mean(rows[0].size());
    for (const std::size_t n : repeats) {
      for (std::size_t k = 0; k < mean.size(); ++k) mean[k] += rows[n][k] / static_cast<double>(repeats.size());
    }
    means.push_back(mean);
  }
  return means;
}

/// Whether intensities go steadily through planes in this order, although the parameters do not.
bool goesSteadily(const SampledSeries& all, const Shares& rows, const std::vector<std::size_t>& order) {
  constexpr int kFewestSteps = 3;
  Shares ordered;
  for (const std::size_t n : order) ordered.push_back(rows[n]);
  const Steps steps = countSteps(ordered);
  std::vector<double> first = ordered.front();
  std::vector<double> last = ordered.back();
  const double change = std::fabs(takeMedian(first) - takeMedian(last));
  return !steps.goBothWays() && steps.up + steps.down >= kFewestSteps && change > 0.3 && !all.planes.empty();
}

}  // namespace

void checkSigns(SampledSeries& all) {
  const std::vector<StrongPeak> peaks = all.findPeaks(15);
  const std::vector<std::size_t> order = orderByParameter(all.findFree(), all.readParameters());
  if (order.size() < 4 || peaks.size() < kFewestOrderedPeaks) return;
  const Shares shares = findShares(all, peaks);
  std::vector<double> middles;
  for (const std::size_t n : order) {
    std::vector<double> row = shares[n];
    middles.push_back(takeMedian(row));
  }
  const auto positive = std::count_if(middles.begin(), middles.end(), [](double value) { return value > 0; });
  if (positive != 1 && positive + 1 != std::ssize(middles)) return;
  const auto isOdd = [&](double value) { return (value > 0) == (positive == 1); };
  const auto i = static_cast<std::size_t>(std::find_if(middles.begin(), middles.end(), isOdd) - middles.begin());
  const std::size_t odd = order[i];
  const auto isRepeat = [&](std::size_t n) { return n != odd && all.areRepeats(n, odd); };
  const auto repeat = std::find_if(order.begin(), order.end(), isRepeat);
  std::size_t sure = 0;
  std::size_t agreeing = 0;
  for (std::size_t k = 0; k < peaks.size(); ++k) {
    if (std::fabs(all.heightOf(odd, peaks[k].j)) <= 4) continue;
    ++sure;
    agreeing += repeat == order.end() ? isOdd(shares[odd][k]) : shares[odd][k] * shares[*repeat][k] < 0;
  }
  const double asRepeat = repeat == order.end() ? 0 : middles[static_cast<std::size_t>(repeat - order.begin())];
  const bool doesFit = asRepeat == 0 ? goesOn(i, middles) : std::fabs(middles[i] / asRepeat + 1) < 0.2;
  if (sure < 5 || 10 * agreeing <= 9 * sure || !doesFit) return;
  all.tellPlanes({odd},
                 "its peaks have the other sign than in all other spectra, while their size goes on: "
                 "inverted, as by a phase that is off by 180 degrees; phase it like the others");
}

/// Compares each plane with the first of its repeats.
void checkRepeats(SampledSeries& all) {
  const std::vector<StrongPeak> peaks = all.findPeaks(8);
  const std::vector<std::size_t> planes = all.findFree();
  std::string text;
  std::vector<std::size_t> odd;
  for (auto a = planes.begin(); a != planes.end(); ++a) {
    const auto b = std::find_if(planes.begin(), a, [&](std::size_t n) { return all.areRepeats(*a, n); });
    const double difference = b == a ? 0 : findDifference(all, peaks, *a, *b);
    if (difference == 0) continue;
    if (odd.empty())
      text = all.nameOf(*a) + " repeats " + all.nameOf(*b) + " (" + all.getParameter(*a, 0) +
             "), but its intensities differ by " + writeSigned(100 * difference, 0) + " %: is the parameter right?";
    odd.push_back(*a);
  }
  if (odd.size() > 1) text += " So do " + std::to_string(odd.size() - 1) + " more.";
  if (!odd.empty()) all.tellParameter(odd[0], text);
  for (const std::size_t n : odd) all.taken[n] = true;
}

void checkOrder(const SampledSeries& all) {
  const std::vector<StrongPeak> peaks = all.findPeaks(10);
  if (all.findFree().size() < all.planes.size() || peaks.size() < kFewestOrderedPeaks) return;
  const std::vector<double> parameters = all.readParameters();
  std::vector<std::size_t> byLine;  // the first of repeats
  for (std::size_t n = 0; n < parameters.size(); ++n) {
    const auto end = parameters.begin() + static_cast<std::ptrdiff_t>(n);
    if (std::find(parameters.begin(), end, parameters[n]) == end) byLine.push_back(n);
  }
  if (byLine.size() >= 5) {
    const Shares rows = findSums(all, peaks);
    std::vector<std::size_t> byName = byLine;
    std::stable_sort(byName.begin(), byName.end(), [&](std::size_t a, std::size_t b) {
      return findNumberInName(all.nameOf(a)) < findNumberInName(all.nameOf(b));
    });
    for (const bool isByLine : {true, false}) {
      const std::vector<std::size_t>& order = isByLine ? byLine : byName;
      if (!goesSteadily(all, rows, order) || !countSteps(averageRepeats(rows, parameters)).goBothWays()) continue;
      std::size_t k = 1;
      const bool rises = parameters[order.back()] > parameters[order.front()];
      while (k + 1 < order.size() && (parameters[order[k]] > parameters[order[k - 1]]) == rises) ++k;
      all.tellParameter(order[k], std::string("intensities go steadily with the order of the ") +
                                      (isByLine ? "SPECTRUM lines" : "numbers in the names of the files") +
                                      ", but not with the parameters (" + all.getParameter(order[k], 0) + " follows " +
                                      all.getParameter(order[k - 1], 0) +
                                      "): parameters exchanged or in another order");
      return;
    }
  }
  std::vector<double> heights;
  for (const std::vector<double>& row : findShares(all, peaks)) {
    std::vector<double> sizes;
    for (const double value : row) sizes.push_back(std::fabs(value));
    heights.push_back(takeMedian(sizes));
  }
  const auto strongest = std::max_element(heights.begin(), heights.end());
  const bool isWeakest = std::min_element(heights.begin(), heights.end()) == heights.begin();
  if (heights.size() < 2 || !isWeakest || heights[0] >= 0.6 * *strongest) return;
  const auto best = static_cast<std::size_t>(strongest - heights.begin());
  all.tellParameter(0, all.nameOf(0) + ", in which the peaks are searched, is the weakest spectrum, with " +
                           std::to_string(std::lround(100 * heights[0] / *strongest)) + " % of the height in " +
                           all.nameOf(best) + ": put the line of the strongest first");
}

}  // namespace peakbox
