#include <algorithm>
#include <cctype>
#include <cmath>
#include <map>

#include "base/TextFile.h"
#include "base/TextNumbers.h"
#include "check/Checks.h"
#include "check/InputFile.h"
#include "spectrum/Nuclei.h"

namespace peakbox {

namespace {

constexpr const char* kDigits = "0123456789";

/// Digits, and no leading zero that would make them octal.
bool isPlainDecimal(const std::string& text) {
  const bool hasDigitsOnly = text.find_first_not_of(kDigits) == std::string::npos;
  return text == "0" || (hasDigitsOnly && text[0] != '0' && text.size() < 10);
}

bool hasDecimalComma(const std::string& word) {
  const std::size_t comma = word.find_first_not_of(kDigits, word[0] == '-' ? 1 : 0);
  return comma != std::string::npos && comma > 0 && word[comma] == ',' && comma + 1 < word.size() &&
         word.find_first_not_of(kDigits, comma + 1) == std::string::npos;
}

struct ParameterReader {
  const FileFindings& findings;
  Parameters parameters{};
  RunSettings& settings = parameters.settings;
  std::int64_t line = 0;
  std::map<std::string, std::int64_t> lineOfKeyword{};

  const std::vector<std::string>& tokens() const { return settings.getTokens(); }

  template <typename Step>
  bool accept(const Step& step) {
    const std::string end = tryStep(step);
    return !findings.add(!end.empty(), line, "error: ", end);
  }

  void readLines(const std::string& text) {
    const std::vector<std::string> lines = splitLines(text);
    std::istringstream stream(text);
    for (line = 1; !stream.fail(); ++line) {
      const bool isGood = accept([&] { settings.parseNextLine(stream, line); });
      if (tokens().empty()) continue;
      std::string keyword = tokens()[0];
      for (char& c : keyword) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
      const bool isSet = keyword == "FIELD" || keyword == "BOXSIZE" || keyword == "PEAKLIST" || keyword == "TOLERANCE";
      const auto [earlier, isNew] = lineOfKeyword.emplace(keyword, line);
      findings.add(isSet && !isNew, line, "warning: ", keyword, " again: this line counts, not line ", earlier->second);
      earlier->second = line;
      if (!isGood) continue;
      if (keyword == "BOXSIZE") checkBoxSize();
      if (keyword == "TOLERANCE") checkTolerance();
      if (keyword == "FIELD" || keyword == "PEAKLIST") checkOneValue(keyword == "FIELD");
      if (keyword == "FIELD") {
        parameters.fieldLine = line;
        parameters.field = textToDecimal(tokens()[1]).value_or(0);
      }
      if (keyword != "SPECTRUM") continue;
      parameters.spectrumLines.push_back(line);
      checkSpectrum(lines[static_cast<std::size_t>(line - 1)]);
    }
    line = 0;
    accept([&] { settings.refuseNoSpectrum(); });
    if (!lineOfKeyword.contains("BOXSIZE")) accept([&] { settings.getBoxSize(0); });
    findings.add(!lineOfKeyword.contains("PEAKLIST"), 0, "error: no PEAKLIST specified");
  }

  void checkOneValue(bool isNumber) const {
    const std::string& value = tokens()[1];
    const std::string next = tokens().size() > 2 ? tokens()[2] : "#";
    const bool isOther = isNumber && findNumber(value) != NumberPart::All;
    findings.add(isOther, line, "warning: FIELD '", value, "' is no number");
    findings.add(next[0] != '#', line, "warning: only '", value, "' counts, and not '", next, "' behind it");
  }

  void checkBoxSize() const {
    std::string values;
    for (std::size_t i = 1; i < tokens().size(); ++i) values += (i > 1 ? " " : "") + tokens()[i];
    const bool isPlain = tokens().size() <= 3 && std::all_of(tokens().begin() + 1, tokens().end(), isPlainDecimal);
    const std::int64_t half1 = settings.getBoxSize(0);
    const std::int64_t half2 = settings.getBoxSize(1);
    findings.add(!isPlain, line, "warning: BOXSIZE '", values, "' is read as ", half1, " and ", half2, ", a box of ",
                 2 * half1 + 1, " x ", 2 * half2 + 1, " points; write one or two plain decimal numbers");
  }

  void checkTolerance() {
    parameters.toleranceLine = line;
    for (const std::string& text : {tokens()[1], tokens()[2]}) {
      const double value = textToReal(text.c_str());
      const bool isOther = findNumber(text) != NumberPart::All;
      findings.add(isOther, line, "warning: TOLERANCE '", text, "' is read as ", value, " Hz");
      findings.add(value < 0, line, "warning: TOLERANCE ", text, " is negative");
    }
    const bool areMore = tokens().size() > 3 && findNumber(tokens()[3]) != NumberPart::None;
    findings.add(areMore, line, "warning: of more than two TOLERANCE values the first two count, ", tokens()[1],
                 " and ", tokens()[2], "; numbers have a decimal point, and a comma separates values");
  }

  void checkSpectrum(const std::string& text) const {
    const auto isComment = [](const std::string& word) { return word[0] == '#'; };
    const auto comment = std::find_if(tokens().begin() + 2, tokens().end(), isComment);
    const std::vector<std::string> words = splitWords(text);
    const auto number = std::find_if(words.begin(), words.end(), hasDecimalComma);
    if (comment != tokens().end()) {
      findings.add(true, line, "warning: '", *comment,
                   "' begins no comment here: this and what follows count as words of the spectrum");
    } else if (number != words.end()) {
      findings.add(true, line, "warning: '", *number,
                   "' is read as two words, since a comma separates words; write a decimal point");
    } else if (tokens().size() > 4) {
      findings.add(true, line, "warning: nothing keeps the words from '", tokens()[4],
                   "' on: a spectrum has at most two");
    }
  }
};

}  // namespace

Parameters readParameters(const FileFindings& findings) {
  const std::optional<std::string> text = readText(findings);
  if (!text) return {};
  ParameterReader reader{findings};
  reader.parameters.file = findings.file;
  reader.readLines(*text);
  return reader.parameters;
}

void checkField(const Parameters& parameters, const Spectrum& first, const FileFindings& findings) {
  const double mhz = std::fabs(first.getObserveMHz(0));
  const std::array<std::string, 2> nuclei = nameDimensions(first);
  const bool isProton = nuclei[0] == "1H" || nuclei[0] == "D1";  // FIELD is a frequency of 1H
  const bool isOff = isProton && parameters.field > 0 && std::fabs(parameters.field / mhz - 1) > 0.01;
  findings.add(isOff, parameters.fieldLine, "warning: FIELD ", parameters.field, " is not that of the first spectrum, ",
               mhz, " MHz");
}

}  // namespace peakbox
