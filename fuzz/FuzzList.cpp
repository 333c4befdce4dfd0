#include "FuzzSupport.h"
#include "support/ExampleRun.h"

/// The main function of peakbox-list.
int peakboxList(int count, char** arguments);

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
  using namespace peakbox;
  static const fuzz::InputFile spectrum(test::writePipe(test::examplePlane()));
  static const fuzz::InputFile list;
  list.write({data, size});
  fuzz::runCompanion(peakboxList, {"peakbox-list", "-b", "1,1", "-s", spectrum.path(), list.path()});
  fuzz::runCompanion(peakboxList, {"peakbox-list", "-c", "A,B,C", "-d", "B", "-s", spectrum.path(), list.path()});
  return 0;
}
