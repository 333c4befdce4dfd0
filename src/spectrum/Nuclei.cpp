#include "spectrum/Nuclei.h"

#include <cmath>
#include <map>
#include <utility>

namespace peakbox {

namespace {

struct Nucleus {
  const char* name;
  const char* otherName;
  double ratio;  // of its frequency to that of 1H
};

constexpr std::array<Nucleus, 6> kNuclei{{{"1H", "H1", 1.0},
                                          {"15N", "N15", 0.101368},
                                          {"13C", "C13", 0.251450},
                                          {"31P", "P31", 0.404807},
                                          {"19F", "F19", 0.940940},
                                          {"2H", "H2", 0.153506}}};

constexpr double kLowestMHz = 190.0;  // of 1H, in the spectrometers that there are
constexpr double kHighestMHz = 1300.0;
constexpr double kProtonsMHz = 300.0;  // two equal frequencies above it are taken for 1H
constexpr double kSameRatio = 1e-3;    // far more than chemical shifts make, and less than lies between two pairs

}  // namespace

std::array<std::string, 2> nameDimensions(double directMHz, double indirectMHz) {
  const double mhz1 = std::fabs(directMHz);
  const double mhz2 = std::fabs(indirectMHz);
  for (const Nucleus& direct : kNuclei) {
    const double protonMHz = mhz1 / direct.ratio;
    if (!(protonMHz >= kLowestMHz && protonMHz <= kHighestMHz)) continue;
    for (const Nucleus& indirect : kNuclei) {
      if (!(std::fabs(mhz2 / (protonMHz * indirect.ratio) - 1) < kSameRatio)) continue;
      const std::string name = direct.name;
      if (name == indirect.name && (name != "1H" || mhz1 < kProtonsMHz)) continue;
      return {name, name == indirect.name ? name + "_2" : indirect.name};
    }
  }
  return {"D1", "D2"};
}

std::array<std::string, 2> nameDimensions(const Spectrum& spectrum) {
  return nameDimensions(spectrum.getObserveMHz(0), spectrum.getObserveMHz(1));
}

std::string findNucleus(const std::string& text) {
  for (const Nucleus& nucleus : kNuclei) {
    const bool isNamed =
        text.find(nucleus.name) != std::string::npos || text.find(nucleus.otherName) != std::string::npos;
    if (isNamed) return nucleus.name;
  }
  static const std::map<std::string, std::string> kWords{
      {"H", "1H"}, {"HN", "1H"}, {"PROTON", "1H"}, {"N", "15N"}, {"NITROGEN", "15N"}, {"C", "13C"}, {"CARBON", "13C"}};
  std::string found;
  std::string word;
  for (const char c : text + ' ') {
    const char upper = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    if (upper >= 'A' && upper <= 'Z') {
      word += upper;
    } else if (const auto known = kWords.find(std::exchange(word, "")); known != kWords.end()) {
      if (!found.empty() && found != known->second) return "";
      found = known->second;
    }
  }
  return found;
}

}  // namespace peakbox
