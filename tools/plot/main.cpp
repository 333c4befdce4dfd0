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

/// The map, and the cells of all peaks. Loads the spectra of which points are drawn.
std::vector<std::string> drawSpectra(MeasuredRun& run) {
  std::string map;
  std::vector<std::string> cells;
  for (std::size_t j = 0; j < run.troubles.size(); ++j) cells.push_back(writeCell(run, j));
  for (std::size_t k = 0; k < run.abscissas.size(); ++k) {
    std::vector<std::size_t> drawn;
    for (std::size_t j = 0; j < cells.size(); ++j) {
      if (run.findDrawn(j).contains(k)) drawn.push_back(j);
    }
    if (k > 0 && drawn.empty()) continue;
    run.spectrum.loadData(run.settings.getSpectrumFile(static_cast<int>(k)), false);
    if (k == 0) map = writeMap(run);
    for (const std::size_t j : drawn) cells[j] += writePanel(run, j, k);
  }
  for (std::size_t j = 0; j < cells.size(); ++j) cells[j] += writeCurve(run, j);
  cells.insert(cells.begin(), map);
  return cells;
}

/// As many of the peaks in trouble as a line holds, as the map names them, and how many more there are.
std::string nameTroubled(const MeasuredRun& run, const std::vector<std::size_t>& troubled) {
  constexpr std::size_t kMostLetters = 105;
  std::string text;
  for (std::size_t n = 0; n < troubled.size(); ++n) {
    const Report::Peak& peak = run.report->getPeaks()[troubled[n]];
    const std::string name =
        run.troubles.size() > kMostLabels ? compose(peak.number, " ", peak.label) : compose(peak.label);
    if (text.size() + name.size() > kMostLetters) return compose(text, " and ", troubled.size() - n, " more");
    text += compose(n == 0 ? "in trouble: " : ", ", name);
  }
  return text;
}

/// The map, the cells of peaks in trouble, what was found of all peaks, and all cells.
std::string writePages(MeasuredRun& run, const std::string& name) {
  const std::vector<std::string> drawn = drawSpectra(run);
  std::vector<std::size_t> troubled;
  std::vector<std::size_t> all;
  for (std::size_t j = 0; j < run.troubles.size(); ++j) {
    all.push_back(j);
    if (!run.troubles[j].text.empty()) troubled.push_back(j);
  }
  const auto [name1, name2] = nameDimensions(run.spectrum);
  const std::string legend =
      compose("across ", name1, ", up ", name2,
              " (ppm); black: box and its point, grey: other boxes and edges of the spectrum, dashed: search area, ",
              "red cross: place in the list", run.results.quantity != "R" ? "" : "; the error of R is R_scaled",
              run.results.quantity != "R" || run.uncertainties.empty() ? "" : "; residuals in uncertainties");
  std::vector<std::string> pages;
  const auto begin = [&](const std::string& foot) {
    return pages.push_back(compose("foot = ", quote(foot, pages.empty() ? 130 : 250), "\n", kPage));
  };
  const auto addCells = [&](const std::vector<std::size_t>& peaks) {
    constexpr std::size_t kCells = 12;  // of a page
    for (std::size_t n = 0; n < peaks.size(); ++n) {
      if (n % kCells == 0) begin(legend);
      pages.back() += compose("slot = ", n % kCells, "\n", drawn[peaks[n] + 1]);
    }
  };
  begin(nameTroubled(run, troubled));
  pages.back() += drawn[0];
  addCells(troubled);
  const std::string summary = writeSummary(run);
  if (!summary.empty()) {
    begin("red: in trouble or with a remark; triangles: beyond the range");
    pages.back() += summary;
  }
  addCells(all);
  std::string script = compose(kStart, "runName = ", quote(name, 60), "\npages = ", pages.size(), "\npage = 0\n");
  for (const std::string& page : pages) script += page;
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
    if (arguments.has('f')) run.results = readRates(arguments.get('f'), *run.report, run.uncertainties);
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
