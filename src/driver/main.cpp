#include <new>

#include "base/Messages.h"
#include "driver/RunSettings.h"
#include "integrate/BoxTable.h"
#include "peaks/PeakList.h"
#include "spectrum/Spectrum.h"

int main(int argc, char** argv) {
  std::set_new_handler([] { peakbox::fail("ERROR: Not enough memory.\n"); });

  peakbox::RunSettings settings;
  const bool verbose = settings.parseArguments(argc, argv);

  // The first spectrum's axes place the peaks for the whole run.
  peakbox::Spectrum spectrum;
  spectrum.readHeader(settings.getSpectrumFile(0), verbose);

  peakbox::PeakList peaks;
  const unsigned peakCount = peaks.read(settings.getPeakListFile(), spectrum, verbose);

  peakbox::BoxTable boxes(peakCount, settings.getTolerance1(), settings.getTolerance2());
  boxes.placeBoxes(spectrum, peaks);
  boxes.writeReport(settings, spectrum, peaks);
  return 0;
}
