#include <strings.h>

#include <fstream>
#include <string>

#include "base/Messages.h"
#include "base/TextNumbers.h"
#include "driver/RunSettings.h"

namespace peakbox {

namespace {

[[noreturn]] void failInLine(std::int64_t line, const std::string& message) {
  fail("ERROR(line #" + std::to_string(line) + "): " + message + "\n");
}

}  // namespace

void RunSettings::readParameterFile() {
  std::ifstream stream(inputFile);
  if (!stream.is_open()) fail("ERROR: Unable to open '" + inputFile + "'\n");

  // Reaching the end alone does not end the loop: a last line without a newline counts, the empty read after it fails.
  std::int64_t line = 1;
  do {
    parseNextLine(stream, line);
    ++line;
  } while (!stream.fail());
  refuseNoSpectrum();
}

void RunSettings::refuseNoSpectrum() const {
  if (awaitingSpectrum) fail("ERROR: No SPECTRUM specified.\n");
}

std::int32_t RunSettings::readLine(std::istream& stream) {
  constexpr const char* kDelimiters = "\t, ";
  std::string text;
  std::getline(stream, text);

  tokens.clear();
  std::size_t start = text.find_first_not_of(kDelimiters);
  while (start != std::string::npos) {
    const std::size_t end = text.find_first_of(kDelimiters, start);
    tokens.push_back(text.substr(start, end - start));
    start = text.find_first_not_of(kDelimiters, end);
  }
  tokenCount = static_cast<std::int32_t>(tokens.size());
  return tokenCount;
}

void RunSettings::parseNextLine(std::istream& stream, std::int64_t line) {
  if (readLine(stream) == 0 || firstCharIs('#')) return;
  if (keywordIs("FIELD")) {
    parseFieldLine(line);
  } else if (keywordIs("BOXSIZE")) {
    parseBoxSizeLine(line);
  } else if (keywordIs("PEAKLIST")) {
    parsePeakListLine(line);
  } else if (keywordIs("TOLERANCE")) {
    parseToleranceLine(line);
  } else if (keywordIs("SPECTRUM")) {
    parseSpectrumLine(line);
  } else {
    fail("ERROR (line " + std::to_string(line) + "): '" + tokens[0] + "' not recognized.\n");
  }
}

bool RunSettings::keywordIs(const char* word) const { return strcasecmp(tokens[0].c_str(), word) == 0; }

void RunSettings::parseFieldLine(std::int64_t line) {
  if (tokenCount < 2) failInLine(line, "No FIELD specified.");
  field = tokens[1];
}

void RunSettings::parseBoxSizeLine(std::int64_t line) {
  if (tokenCount < 2) failInLine(line, "No BOXSIZE specified.");
  const std::int32_t first = textToInteger(tokens[1].c_str());
  const std::int32_t second = tokenCount == 3 ? textToInteger(tokens[2].c_str()) : first;
  for (const std::int32_t halfWidth : {first, second}) {
    if (halfWidth < 0) failInLine(line, "Negative BOXSIZE (" + std::to_string(halfWidth) + ").");
  }
  boxSize = {first, second};
}

void RunSettings::parsePeakListLine(std::int64_t line) {
  if (tokenCount < 2) failInLine(line, "No PEAKLIST specified.");
  peakListFile = tokens[1];
}

void RunSettings::parseToleranceLine(std::int64_t line) {
  if (tokenCount < 3) failInLine(line, "Insufficent parameters.");
  tolerance1 = textToReal(tokens[1].c_str());
  tolerance2 = textToReal(tokens[2].c_str());
}

void RunSettings::parseSpectrumLine(std::int64_t line) {
  if (tokenCount < 2) failInLine(line, "No SPECTRUM specified.");
  if (!awaitingSpectrum && tokenCount != spectrumTokenCount) failInLine(line, "Insufficent parameters.");
  const std::string parameter1 = tokenCount > 2 ? resolveDitto(spectrumParameters1, tokens[2], line) : "";
  const std::string parameter2 = tokenCount > 3 ? resolveDitto(spectrumParameters2, tokens[3], line) : "";
  spectrumTokenCount = tokenCount;
  awaitingSpectrum = false;
  spectrumFiles.push_back(tokens[1]);
  spectrumParameters1.push_back(parameter1);
  spectrumParameters2.push_back(parameter2);
}

std::string RunSettings::resolveDitto(const std::vector<std::string>& parameters, const std::string& token,
                                      std::int64_t line) {
  if (token != "\"") return token;
  if (parameters.empty()) failInLine(line, "No previous parameter to repeat.");
  return parameters.back();
}

}  // namespace peakbox
