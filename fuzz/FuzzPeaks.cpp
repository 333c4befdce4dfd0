#include "FuzzSupport.h"
#include "support/ExampleRun.h"

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
  using namespace peakbox;
  static const fuzz::InputFile spectrum(test::writePipe(test::examplePlane()));
  static const fuzz::InputFile peaks;
  peaks.write({data, size});
  fuzz::runPrograms("BOXSIZE 1\nTOLERANCE 100 50\nPEAKLIST " + peaks.path() + "\nSPECTRUM " + spectrum.path() +
                    "\nSPECTRUM " + spectrum.path() + "\n");
  return 0;
}
