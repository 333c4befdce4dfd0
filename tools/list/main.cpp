#include <algorithm>
#include <iostream>

#include "base/Refusal.h"
#include "base/TextNumbers.h"
#include "common/Tool.h"
#include "list/Directions.h"
#include "spectrum/Nuclei.h"

namespace {

using namespace peakbox;
using namespace peakbox::list;
using Texts = std::vector<std::string>;

bool isWidth(const std::string& text) { return textToDecimal(text).value_or(0.0) > 0.0; }

/// The texts of an option between commas; none without it.
Texts readTexts(const Arguments& arguments, char option, std::size_t count) {
  if (!arguments.has(option)) return {};
  const std::vector<Row> rows = splitAtSeparators(arguments.get(option) + "\n", "", ',');
  if (rows.size() != 1 || !rows[0].isWhole || rows[0].fields.size() != count) arguments.refuseUsage();
  return rows[0].fields;
}

Spectrum readSpectrum(const std::string& file) {
  Spectrum spectrum;
  spectrum.readHeader(file.c_str(), false);
  const std::string misread = spectrum.describeOrder();
  if (!misread.empty()) refuse(file, misread);
  if (!spectrum.getAxes().isUsable(0)) refuse(file, "its dimension 1 has no ppm axis");
  if (!spectrum.getAxes().isUsable(1)) refuse(file, "its dimension 2 has no ppm axis");
  return spectrum;
}

/// The width of the bounds where neither the list nor the command line has one.
std::string chooseWidth(const std::array<std::string, 2>& names, std::size_t d, const std::string& spectrumFile) {
  if (names[0] == "1H" && (names[1] == "15N" || names[1] == "13C")) return d == 0 ? "0.04" : "0.4";
  refuse(spectrumFile,
         "its nuclei are " + names[0] + " and " + names[1] + ", for which the bounds must be given: -b WIDTH1,WIDTH2");
}

int convert(const Arguments& arguments) {
  const Texts widths = readTexts(arguments, 'b', 2);
  const Texts columns = readTexts(arguments, 'c', 3);
  const std::string spectrumFile = arguments.get('s');
  const bool isNamed = !arguments.has('d') || !arguments.get('d').empty();
  const bool isUsable = spectrumFile != "" && arguments.getOperands().size() == 1 && isNamed;
  if (!isUsable || !std::all_of(widths.begin(), widths.end(), isWidth)) arguments.refuseUsage();

  const Spectrum spectrum = readSpectrum(spectrumFile);
  const std::array<std::string, 2> names = nameDimensions(spectrum);
  const ForeignList list = readForeignList(arguments.getOperands()[0], columns);
  const std::vector<Entry> entries = takeEntries(list);
  const std::size_t direct = findDirect(list, entries, spectrum, spectrumFile, arguments.get('d'));

  std::string text = writeListHeader(spectrum.getAxes(), names, cut(spectrumFile, 200));
  std::size_t unassigned = 0;
  std::size_t outside = 0;
  for (const auto& [place, peak, labels] : entries) {
    outside += countFoldings(peak, spectrum.getAxes(), direct) > 0;
    ListEntry turned = peak;
    turned.label = labels[direct];
    unassigned += turned.label == "?";
    for (const std::size_t d : {0U, 1U}) {
      const std::size_t column = d == 0 ? direct : 1 - direct;
      turned.ppm[d] = peak.ppm[column];
      turned.bounds[d] = !widths.empty()                            ? widths[d]
                         : list.bounds[column] < ForeignList::kNone ? peak.bounds[column]
                                                                    : chooseWidth(names, d, spectrumFile);
      if (isWidth(turned.bounds[d])) continue;
      refuse(place, "the bounds '" + cut(turned.bounds[d], 60) + "' are no width; -b gives others");
    }
    text += writeListLine(turned);
  }
  if (!(std::cout << text << std::flush)) refuse("standard output", "cannot be written");

  std::cerr << list.file << ": " << entries.size() << (entries.size() == 1 ? " peak, " : " peaks, ") << list.names[0]
            << " = " << names[direct] << ", " << list.names[1] << " = " << names[1 - direct];
  if (unassigned > 0) std::cerr << "; " << unassigned << " without assignment";
  if (outside > 0) std::cerr << "; " << outside << " outside the spectrum, to be folded";
  std::cerr << '\n';
  return 0;
}

}  // namespace

int peakboxList(int count, char** words) {
  return runTool(
      {"peakbox-list", "[-b WIDTH1,WIDTH2] [-c LABEL,PPM1,PPM2] [-d COLUMN] -s SPECTRUM LIST", "b:c:d:s:", convert},
      count, words);
}
