// peakbox-plot draws every box and every curve of a run of peakbox, see peakbox-plot(1).

#include <algorithm>
#include <filesystem>

#include "base/Messages.h"
#include "base/Refusal.h"
#include "base/ThrowingMessages.h"
#include "common/Tool.h"
#include "plot/Drawing.h"
#include "plot/Gnuplot.h"
#include "plot/Pages.h"
#include "results/Uncertainties.h"
#include "spectrum/Nuclei.h"

namespace peakbox {

namespace {

/// Refuses an output that is one of the files that are read.
void refuseInput(const std::string& output, const MeasuredRun& run, std::vector<std::string> inputs) {
  inputs.emplace_back(run.settings.getPeakListFile());
  for (int k = 0; k < run.settings.getSpectrumCount(); ++k) inputs.emplace_back(run.settings.getSpectrumFile(k));
  for (const std::string& input : inputs) {
    std::error_code ignored;
    if (std::filesystem::equivalent(output, input, ignored)) refuse(output, "is the input " + input);
  }
}

/// The pages: the map, the cells of peaks in trouble, and all cells. Loads the spectra of which points are drawn.
std::string writePages(MeasuredRun& run, const std::string& name) {
  std::vector<std::string> cells;
  std::vector<std::size_t> troubled;
  std::vector<std::size_t> all;
  std::string labels;
  for (std::size_t j = 0; j < run.troubles.size(); ++j) {
    cells.push_back(writeCell(run, j));
    all.push_back(j);
    if (run.troubles[j].text.empty()) continue;
    labels += compose(troubled.empty() ? "in trouble: " : ", ", run.report->getPeaks()[j].label);
    troubled.push_back(j);
  }
  std::string map;
  for (std::size_t k = 0; k < run.abscissas.size(); ++k) {
    const auto isDrawn = [&](std::size_t j) { return run.findDrawn(j).contains(k); };
    if (k > 0 && std::none_of(all.begin(), all.end(), isDrawn)) continue;
    run.spectrum.loadData(run.settings.getSpectrumFile(static_cast<int>(k)), false);
    if (k == 0) map = writeMap(run);
    for (const std::size_t j : all) {
      if (isDrawn(j)) cells[j] += writePanel(run, j, k);
    }
  }
  for (const std::size_t j : all) cells[j] += writeCurve(run, j);
  constexpr std::size_t kCells = 12;  // of a page
  const std::size_t pageCount = 1 + (troubled.size() + kCells - 1) / kCells + (all.size() + kCells - 1) / kCells;
  const auto [name1, name2] = nameDimensions(run.spectrum);
  std::string script =
      compose(kStart, "runName = ", quote(name, 60), "\nnames = 'across ", name1, ", up ", name2,
              "'\npages = ", pageCount, "\npage = 0\ntroubledPeaks = ", quote(labels, 130), "\n", kPage, map);
  for (const auto& peaks : {troubled, all}) {
    for (std::size_t n = 0; n < peaks.size(); ++n) {
      script += compose(n % kCells == 0 ? kPage : "", "slot = ", n % kCells, "\n", cells[peaks[n]]);
    }
  }
  return script + "unset multiplot\n";
}

int drawRun(const Arguments& arguments) {
  const std::vector<std::string>& files = arguments.getOperands();
  const bool isUsual = files.size() == 3 && files[2].ends_with(".pdf");
  if (!isUsual || (arguments.has('n') && arguments.has('r'))) arguments.refuseUsage();
  try {
    MeasuredRun run(files[0], files[1]);
    refuseInput(files[2], run, {files[0], files[1], arguments.get('n'), arguments.get('f')});
    const auto size = [&](int dim) { return 2 * std::int64_t{run.settings.getBoxSize(dim)} + 1; };
    if (arguments.has('n')) {
      run.uncertainties = readUncertainties(arguments.get('n'), *run.report, {size(0), size(1)});
    }
    if (arguments.has('r')) run.uncertainties = poolRepeats(*run.report);
    if (arguments.has('f')) {
      if (!run.hasNumbers) refuse(files[0], "not all first parameters are numbers, and -f needs them");
      run.rates = readRates(arguments.get('f'), *run.report, run.abscissas, run.uncertainties);
    }
    drawPages(writePages(run, files[1]), files[2]);
  } catch (const RunEnd& end) {
    fail(end.message, std::max(1, end.status));  // a run that ends with status 0 leaves nothing to draw
  }
  return 0;
}

}  // namespace

}  // namespace peakbox

int peakboxPlot(int count, char** words);

int peakboxPlot(int count, char** words) {
  const char* const usage = "[-n NOISE | -r] [-f RATES] PARAMETER-FILE REPORT OUTPUT.pdf";
  return peakbox::runTool({"peakbox-plot", usage, "n:rf:", peakbox::drawRun}, count, words);
}
