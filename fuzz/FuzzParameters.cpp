#include <cstdint>
#include <sstream>

#include "FuzzSupport.h"
#include "base/ThrowingMessages.h"
#include "integrate/BoxTable.h"
#include "support/ExampleRun.h"

namespace peakbox::fuzz {
namespace {

/// What every input is tried on. The files that an input names are not opened: they could be any on the machine.
struct Example {
  Example() {
    const InputFile plane(test::writePipe(test::examplePlane()));
    const InputFile list(test::examplePeaks());
    spectrum.readHeader(plane.path().c_str(), false);
    spectrum.loadData(plane.path().c_str(), false);
    peakCount = peaks.read(list.path().c_str(), spectrum, false);
  }

  Spectrum spectrum;
  PeakList peaks;
  unsigned peakCount;
};

void measure(const RunSettings& settings, const Example& example) {
  BoxTable boxes(example.peakCount, settings.getTolerance1(), settings.getTolerance2());
  boxes.placeBoxes(example.spectrum, example.peaks);
  std::ostringstream report;
  for (int k = 0; k < settings.getSpectrumCount(); ++k) {
    for (int j = 0; j < example.peaks.getCount(); ++j) {
      boxes.integratePeak(j, example.spectrum, settings.getBoxSize(0), settings.getBoxSize(1));
    }
    boxes.recentreBoxes(example.peaks.getCount());
    boxes.writeSpectrumTable(k, report, settings, example.spectrum, example.peaks);
  }
}

}  // namespace
}  // namespace peakbox::fuzz

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
  static const peakbox::fuzz::Example example;
  static const peakbox::fuzz::InputFile file;
  file.write({data, size});
  const char* const arguments[] = {"peakbox", "-v", "-i", file.path().c_str()};
  try {
    peakbox::RunSettings settings;
    settings.parseArguments(4, arguments);
    peakbox::fuzz::measure(settings, example);
  } catch (const peakbox::RunEnd&) {
  }
  peakbox::takeMessages();
  return 0;
}
