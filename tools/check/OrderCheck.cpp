#include <algorithm>
#include <cmath>
#include <map>
#include <set>

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

/// Values of a row for each plane, in a column for each peak.
using Rows = std::vector<std::vector<double>>;

/// What planes show of peaks as shares of the greatest magnitude that the peak has in them.
Rows findShares(const SampledSeries& all, const std::vector<StrongPeak>& peaks, const std::vector<std::size_t>& planes,
                double Sighting::*value) {
  Rows rows(planes.size());
  for (const StrongPeak& peak : peaks) {
    double greatest = 0;
    const auto at = [&](std::size_t n) { return all.series.getSighting(n, peak.j).*value; };
    for (const std::size_t n : planes) greatest = std::max(greatest, std::fabs(at(n)));
    for (std::size_t i = 0; i < planes.size(); ++i) rows[i].push_back(greatest > 0 ? at(planes[i]) / greatest : 0);
  }
  return rows;
}

/// The median magnitude of each row.
std::vector<double> findSizes(const Rows& rows) {
  std::vector<double> sizes;
  for (std::vector<double> row : rows) {
    for (double& value : row) value = std::fabs(value);
    sizes.push_back(takeMedian(row));
  }
  return sizes;
}

/// Gives every peak the sign that it has against the row in which most are strongest.
void compareSigns(Rows& rows) {
  const std::vector<double> sizes = findSizes(rows);
  const std::vector<double> reference =
      rows[static_cast<std::size_t>(std::max_element(sizes.begin(), sizes.end()) - sizes.begin())];
  for (std::vector<double>& row : rows) {
    for (std::size_t k = 0; k < row.size(); ++k) row[k] = std::copysign(1.0, reference[k]) * row[k];
  }
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

Steps countSteps(const Rows& rows) {
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

/// The mean row of each parameter, by its size.
Rows averageRepeats(const Rows& rows, const std::vector<double>& parameters) {
  std::map<double, std::vector<std::size_t>> planes;
  for (std::size_t n = 0; n < rows.size(); ++n) planes[parameters[n]].push_back(n);
  Rows means;
  for (const auto& [parameter, repeats] : planes) {
    std::vector<double> mean(rows[0].size());
    for (const std::size_t n : repeats) {
      for (std::size_t k = 0; k < mean.size(); ++k) mean[k] += rows[n][k] / static_cast<double>(repeats.size());
    }
    means.push_back(mean);
  }
  return means;
}

/// Whether intensities rise, or fall, through planes in this order.
bool goSteadily(const Rows& rows, const std::vector<std::size_t>& order) {
  constexpr int kFewestSteps = 3;
  Rows ordered;
  for (const std::size_t n : order) ordered.push_back(rows[n]);
  const Steps steps = countSteps(ordered);
  const double change = std::fabs(takeMedian(ordered.front()) - takeMedian(ordered.back()));
  return !steps.goBothWays() && steps.up + steps.down >= kFewestSteps && change > 0.3;
}

/// The first plane of each parameter.
std::vector<std::size_t> findFirsts(const std::vector<double>& parameters) {
  std::vector<std::size_t> firsts;
  std::set<double> seen;
  for (std::size_t n = 0; n < parameters.size(); ++n) {
    if (seen.insert(parameters[n]).second) firsts.push_back(n);
  }
  return firsts;
}

/// Tells where parameters turn back in an order in which intensities do not.
void tellOrder(const SampledSeries& all, const std::vector<std::size_t>& order, const std::vector<double>& parameters,
               const std::string& what) {
  std::size_t k = 1;
  const bool rises = parameters[order.back()] > parameters[order.front()];
  while (k + 1 < order.size() && (parameters[order[k]] > parameters[order[k - 1]]) == rises) ++k;
  all.tellParameter(order[k], "intensities go steadily with the order of the " + what +
                                  ", but not with the parameters (" + all.getParameter(order[k], 0) + " follows " +
                                  all.getParameter(order[k - 1], 0) + "): parameters exchanged or in another order");
}

}  // namespace

void checkSigns(SampledSeries& all) {
  const std::vector<StrongPeak> peaks = all.findPeaks(15);
  const std::vector<std::size_t> order = orderByParameter(all.findFree(), all.readParameters());
  if (order.size() < 4 || peaks.size() < kFewestOrderedPeaks) return;
  Rows shares = findShares(all, peaks, order, &Sighting::height);
  compareSigns(shares);
  std::vector<double> middles;
  for (std::vector<double> row : shares) middles.push_back(takeMedian(row));
  const auto positive = std::count_if(middles.begin(), middles.end(), [](double value) { return value > 0; });
  if (positive != 1 && positive + 1 != std::ssize(middles)) return;
  const auto isOdd = [&](double value) { return (value > 0) == (positive == 1); };
  const auto i = static_cast<std::size_t>(std::find_if(middles.begin(), middles.end(), isOdd) - middles.begin());
  const std::size_t odd = order[i];
  const auto isRepeat = [&](std::size_t n) { return n != odd && all.areRepeats(n, odd); };
  const auto repeat = std::find_if(order.begin(), order.end(), isRepeat);
  const auto r = static_cast<std::size_t>(repeat - order.begin());
  std::size_t sure = 0;
  std::size_t agreeing = 0;
  for (std::size_t k = 0; k < peaks.size(); ++k) {
    if (std::fabs(all.heightOf(odd, peaks[k].j)) <= 4) continue;
    ++sure;
    agreeing += repeat == order.end() ? isOdd(shares[i][k]) : shares[i][k] * shares[r][k] < 0;
  }
  const double asRepeat = repeat == order.end() ? 0 : middles[r];
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

bool checkOrder(const SampledSeries& all) {
  constexpr std::size_t kFewestParameters = 5;
  const std::vector<StrongPeak> peaks = all.findPeaks(10);
  const std::vector<double> parameters = all.readParameters();
  const std::vector<std::size_t> planes = all.findFree();
  const std::vector<std::size_t> byLine = findFirsts(parameters);
  const bool areEnough = peaks.size() >= kFewestOrderedPeaks && byLine.size() >= kFewestParameters;
  if (planes.size() < all.planes.size() || !areEnough) return false;
  const Rows sums = findShares(all, peaks, planes, &Sighting::sum);
  if (!countSteps(averageRepeats(sums, parameters)).goBothWays()) return false;
  std::vector<std::size_t> byName = byLine;
  std::stable_sort(byName.begin(), byName.end(), [&](std::size_t a, std::size_t b) {
    return findNumberInName(all.nameOf(a)) < findNumberInName(all.nameOf(b));
  });
  const bool isByLine = goSteadily(sums, byLine);
  if (!isByLine && !goSteadily(sums, byName)) return false;
  tellOrder(all, isByLine ? byLine : byName, parameters,
            isByLine ? "SPECTRUM lines" : "numbers in the names of the files");
  return true;
}

void checkWeakest(const SampledSeries& all) {
  const std::vector<StrongPeak> peaks = all.findPeaks(10);
  const std::vector<std::size_t> planes = all.findFree();
  if (planes.size() < all.planes.size() || planes.size() < 2 || peaks.size() < kFewestOrderedPeaks) return;
  const std::vector<double> sizes = findSizes(findShares(all, peaks, planes, &Sighting::height));
  const auto strongest = std::max_element(sizes.begin(), sizes.end());
  if (std::min_element(sizes.begin(), sizes.end()) != sizes.begin() || sizes[0] >= 0.6 * *strongest) return;
  all.tellParameter(0, all.nameOf(0) + ", in which the peaks are searched, is the weakest spectrum, with " +
                           std::to_string(std::lround(100 * sizes[0] / *strongest)) + " % of the height in " +
                           all.nameOf(static_cast<std::size_t>(strongest - sizes.begin())) +
                           ": put the line of the strongest first");
}

}  // namespace peakbox
