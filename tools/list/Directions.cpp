#include "list/Directions.h"

#include <algorithm>
#include <cmath>

#include "base/Refusal.h"
#include "base/TextNumbers.h"
#include "spectrum/Nuclei.h"

namespace peakbox::list {

namespace {

constexpr double kMostFoldings = 3.0;
constexpr const char* kHint = "; -d names the direct column";

double countFoldings(const std::string& ppm, const Axes& axes, int dim) {
  const double point = axes.ppmToPoint(textToReal(ppm.c_str()), dim);
  const double size = axes.sizes[static_cast<std::size_t>(dim)];
  return std::max({0.0, std::ceil((point - size + 0.5) / size), std::ceil((-0.5 - point) / size)});
}

struct Judge {
  const ForeignList& list;
  const Spectrum& spectrum;
  const std::string& file;
  std::array<std::string, 2> names = nameDimensions(spectrum);

  bool isHomonuclear = std::fabs(spectrum.getObserveMHz(0) / spectrum.getObserveMHz(1) - 1) < 1e-3;

  std::string describe(std::size_t direct) const {
    return list.names[0] + " = " + names[direct] + ", " + list.names[1] + " = " + names[1 - direct];
  }

  /// The only way round in which every column that names a nucleus is a dimension of that.
  std::optional<std::size_t> findByNames() const {
    std::array<bool, 2> isPossible{true, true};
    for (const std::size_t n : {0U, 1U}) {
      const std::string nucleus = findNucleus(list.descriptions[n]);
      if (nucleus.empty() || findNucleus(names[0]).empty()) continue;
      for (const std::size_t direct : {0U, 1U}) {
        isPossible[direct] = isPossible[direct] && nucleus == findNucleus(names[n == direct ? 0 : 1]);
      }
    }
    if (!isPossible[0] && !isPossible[1]) {
      refuse(list.file, "its positions are of '" + cut(list.descriptions[0], 60) + "' and '" +
                            cut(list.descriptions[1], 60) + "', the nuclei of " + file + " are " + names[0] + " and " +
                            names[1] + kHint);
    }
    return isPossible[0] != isPossible[1] ? std::optional<std::size_t>(isPossible[1]) : std::nullopt;
  }

  std::optional<std::size_t> findStated(const std::string& wanted) const {
    if (wanted.empty()) {
      const std::optional<std::size_t> named = findByNames();
      return named || !(list.isDirectSure || isHomonuclear) ? named : list.direct;
    }
    if (wanted == list.names[0]) return 0;
    if (wanted == list.names[1]) return 1;
    refuse("-d", "'" + cut(wanted, 60) + "' is neither '" + list.names[0] + "' nor '" + list.names[1] + "'");
  }
};

}  // namespace

double countFoldings(const ListEntry& peak, const Axes& axes, std::size_t direct) {
  return std::max(countFoldings(peak.ppm[direct], axes, 0), countFoldings(peak.ppm[1 - direct], axes, 1));
}

std::size_t findDirect(const ForeignList& list, const std::vector<Entry>& entries, const Spectrum& spectrum,
                       const std::string& spectrumFile, const std::string& wanted) {
  const Judge judge{list, spectrum, spectrumFile};
  std::array<double, 2> most{};
  std::array<const Entry*, 2> misfit{};
  for (const std::size_t direct : {0U, 1U}) {
    for (const Entry& entry : entries) {
      const double foldings = countFoldings(entry.peak, spectrum.getAxes(), direct);
      most[direct] = std::max(most[direct], foldings);
      if (foldings > kMostFoldings && misfit[direct] == nullptr) misfit[direct] = &entry;
    }
  }
  const std::optional<std::size_t> stated = judge.findStated(wanted);
  std::optional<std::size_t> found = stated;
  if (stated) {
    const std::size_t other = 1 - *stated;
    const bool isBetter = most[other] == 0 && most[*stated] > 0 && wanted.empty() && !judge.isHomonuclear;
    if (misfit[other] == nullptr && (misfit[*stated] != nullptr || isBetter)) {
      refuse(list.file, (wanted.empty() ? "says that " : "by -d ") + judge.describe(*stated) +
                            ", but the positions fit " + spectrumFile + " only as " + judge.describe(other) +
                            (wanted.empty() ? kHint : ""));
    }
  } else if (judge.isHomonuclear) {
    refuse(list.file, "both dimensions of " + spectrumFile + " are of one nucleus" + kHint);
  } else {
    found = most[0] != most[1] ? most[0] > most[1] : list.direct;
  }
  const Entry* const outside = misfit[found.value_or(0)];
  if (outside != nullptr) {
    const auto& [place, peak, labels] = *outside;
    refuse(place, "the positions " + peak.ppm[0] + " and " + peak.ppm[1] + " lie far outside " + spectrumFile);
  }
  if (found) return *found;
  refuse(list.file, "from the positions it cannot be told whether " + list.names[0] + " or " + list.names[1] +
                        " is the direct dimension of " + spectrumFile + kHint);
}

}  // namespace peakbox::list
