#include "peaks/PeakList.h"

#include <cstring>
#include <fstream>
#include <iostream>
#include <limits>
#include <utility>

#include "base/Messages.h"

namespace peakbox {

namespace {

void skipLines(std::istream& stream, int count) {
  for (int i = 0; i < count; ++i) stream.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
}

/// The label without its braces; an unassigned peak is named for its number, as written.
std::string makeLabel(const char* labelField, const char* numberField) {
  std::string label = labelField;
  std::erase(label, '{');
  std::erase(label, '}');
  if (label == "?") label = std::string(numberField) + ".tmp";
  return label;
}

}  // namespace

void Peak::toPoints(const Spectrum& spectrum) {
  for (int dim = 0; dim < 2; ++dim) {
    const auto d = static_cast<std::size_t>(dim);
    position[d] = spectrum.ppmToPoint(position[d], dim);
    boundsWidth[d] = spectrum.ppmWidthToPoints(boundsWidth[d], dim);
  }
}

unsigned PeakList::read(const char* path, const Spectrum& spectrum, bool verbose) {
  std::ifstream stream(path);
  if (!stream.is_open()) fail("ERROR: Unable to open '" + std::string(path) + "'\n");
  readHeader(stream);
  readPeaks(stream, spectrum);
  stream.close();
  if (verbose) std::cout << peaks.size() << " peaks found\n\n";
  return static_cast<unsigned>(peaks.size());
}

void PeakList::readHeader(std::istream& stream) {
  LineSplitter splitter;
  skipLines(stream, 1);
  splitter.readLine(stream);
  const std::string name1 = splitter.getField(0);
  const std::string name2 = splitter.getField(1);

  skipLines(stream, 3);
  splitter.readLine(stream);
  // The header has no name for the peak number that opens a data line; a name that is missing gives that field.
  const auto columnOf = [&](const std::string& name) { return splitter.findField(name) + 1; };
  labelColumn = columnOf(name1 + ".L");
  positionColumn = {columnOf(name1 + ".P"), columnOf(name2 + ".P")};
  boundsColumn = {columnOf(name1 + ".B"), columnOf(name2 + ".B")};
}

void PeakList::readPeaks(std::istream& stream, const Spectrum& spectrum) {
  LineSplitter splitter;
  while (!stream.fail() && splitter.readLine(stream)) addPeak(splitter, spectrum);
}

bool PeakList::addPeak(const LineSplitter& fields, const Spectrum& spectrum) {
  if (std::strcmp(fields.getField(kDeletedColumn), "-1") == 0) return false;

  Peak peak;
  peak.number = fields.getFieldAsInt(0);
  peak.label = makeLabel(fields.getField(labelColumn), fields.getField(0));
  for (std::size_t d = 0; d < 2; ++d) {
    peak.position[d] = fields.getFieldAsFloat(positionColumn[d]);
    peak.boundsWidth[d] = fields.getFieldAsFloat(boundsColumn[d]);
  }
  peak.toPoints(spectrum);
  peaks.push_back(std::move(peak));
  return true;
}

}  // namespace peakbox
