#include "list/Directions.h"

#include <algorithm>
#include <cmath>

#include "base/Refusal.h"
#include "base/TextNumbers.h"
#include "spectrum/Nuclei.h"

namespace peakbox::list {

namespace {

double countFoldings(const std::string& ppm, const Axes& axes, int dim) {
  const double point = axes.ppmToPoint(textToReal(ppm.c_str()), dim);
  const double size = axes.sizes[static_cast<std::size_t>(dim)];
  return std::max({0.0, std::ceil((point - size + 0.5) / size), std::ceil((-0.5 - point) / size)});
}

std::optional<std::size_t> findByNames(const ForeignList& list, const Spectrum& spectrum) {
  const std::array<std::string, 2> dimensions = nameDimensions(spectrum);
  const std::array<std::string, 2> named{findNucleus(list.descriptions[0]), findNucleus(list.descriptions[1])};
  if (list.descriptions == dimensions || named == dimensions) return 0;
  if (named[0] == dimensions[1] && named[1] == dimensions[0]) return 1;
  return std::nullopt;
}

}  // namespace

double countFoldings(const ListEntry& peak, const Axes& axes, std::size_t direct) {
  return std::max(countFoldings(peak.ppm[direct], axes, 0), countFoldings(peak.ppm[1 - direct], axes, 1));
}

std::size_t findDirect(const ForeignList& list, const std::vector<Entry>& entries, const Spectrum& spectrum,
                       const std::string& spectrumFile, bool isExchanged) {
  constexpr double kMostFoldings = 3.0;
  std::array<double, 2> most{};
  std::array<std::vector<const Entry*>, 2> misfits;
  for (const std::size_t direct : {0U, 1U}) {
    for (const Entry& entry : entries) {
      const double foldings = countFoldings(entry.peak, spectrum.getAxes(), direct);
      most[direct] = std::max(most[direct], foldings);
      if (foldings > kMostFoldings) misfits[direct].push_back(&entry);
    }
  }
  const bool fits = misfits[0].empty() || misfits[1].empty();
  std::optional<std::size_t> found;
  if (fits) found = most[0] != most[1] ? most[0] > most[1] : findByNames(list, spectrum);
  if (isExchanged) return 1 - found.value_or(0);
  if (found) return *found;
  if (fits) {
    refuse(list.file, "from the positions it cannot be told whether " + list.names[0] + " or " + list.names[1] +
                          " is the direct dimension of " + spectrumFile + "; -x says " + list.names[1]);
  }
  const auto& [place, peak] = *misfits[misfits[0].size() <= misfits[1].size() ? 0 : 1].front();
  refuse(place, "the positions " + peak.ppm[0] + " and " + peak.ppm[1] + " lie far outside " + spectrumFile);
}

}  // namespace peakbox::list
