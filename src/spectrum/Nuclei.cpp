#include "spectrum/Nuclei.h"

#include <cmath>

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
  if (text == "HN" || text == "H") return "1H";
  if (text == "N") return "15N";
  if (text == "C") return "13C";
  for (const Nucleus& nucleus : kNuclei) {
    const bool isNamed =
        text.find(nucleus.name) != std::string::npos || text.find(nucleus.otherName) != std::string::npos;
    if (isNamed) return nucleus.name;
  }
  return "";
}

}  // namespace peakbox
