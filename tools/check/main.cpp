// peakbox-check [-a | -o REPORT] PARAMETER-FILE: reads what a run of peakbox would read, does what it would do, and
// says what is wrong with it, or what the data suggest: see peakbox-check(1).

#include <new>
#include <optional>

#include "check/Advice.h"
#include "check/Checks.h"
#include "check/SeriesCheck.h"
#include "check/SpectraCheck.h"
#include "common/Tool.h"

namespace peakbox {

namespace {

/// Checks the spectra, and measures the peaks in those that are sound as long as the first one is.
void checkSeries(const Parameters& parameters, SpectraCheck& spectra, const ListedPeaks& peaks, Findings& findings) {
  const RunSettings& settings = parameters.settings;
  std::optional<Series> series;
  if (peaks.isUsable && settings.hasBoxSize()) series.emplace(settings, spectra.getSpectrum(), peaks.list);
  SeriesCheck check(parameters, peaks);
  for (int k = 0; k < settings.getSpectrumCount(); ++k) {
    const bool isSound = spectra.check(k);
    if (k == 0 && !isSound) series.reset();
    if (series && isSound) {
      series->measure(k, spectra.getSpectrum());
      check.follow(*series, spectra.getSpectrum(), spectra.isExplained());
    }
    takeMessages();  // what a run would print is told in other words
  }
  if (series) tellPeaks(*series, peaks, check.tell(*series, findings), settings, findings);
}

void checkRun(const Arguments& arguments, Findings& findings) {
  const FileFindings ofFile{findings, Findings::Parameters, arguments.getOperands()[0]};
  const Parameters parameters = readParameters(ofFile);
  const RunSettings& settings = parameters.settings;
  if (arguments.has('o')) checkReport(arguments.get('o'), ofFile.file, settings, findings);
  SpectraCheck spectra(settings, findings);
  const bool hasAxes = spectra.readFirstHeader();
  if (hasAxes) checkField(parameters, spectra.getSpectrum(), ofFile);
  const ListedPeaks peaks = readPeaks(spectra.getSpectrum(), hasAxes, settings, findings);
  checkSeries(parameters, spectra, peaks, findings);
}

int answerAdvice(const std::string& parameterFile) {
  try {
    return answer(advise(parameterFile));
  } catch (const RunEnd& end) {
    throw RunEnd{end.message, 1};  // also where a run ends with status 0
  }
}

int run(const Arguments& arguments) {
  if (arguments.getOperands().size() != 1 || (arguments.has('a') && arguments.has('o'))) arguments.refuseUsage();
  if (arguments.has('a')) return answerAdvice(arguments.getOperands()[0]);
  Findings findings;
  const FileFindings ofRun{findings, Findings::Measurement, arguments.getOperands()[0]};
  try {
    checkRun(arguments, findings);
  } catch (const RunEnd& end) {  // a file that was replaced meanwhile
    ofRun.add(true, 0, "error: ", textOf(end));
  } catch (const std::bad_alloc&) {
    ofRun.add(true, 0, "error: not enough memory for the rest of the check");
  }
  return findings.print() ? 0 : 1;
}

}  // namespace

}  // namespace peakbox

int peakboxCheck(int count, char** words) {
  return peakbox::runTool({"peakbox-check", "[-a | -o REPORT] PARAMETER-FILE", "ao:", peakbox::run}, count, words);
}
