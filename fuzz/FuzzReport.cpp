#include "FuzzSupport.h"

/// The main function of peakbox-table.
int peakboxTable(int count, char** arguments);

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
  using namespace peakbox;
  static const fuzz::InputFile report;
  report.write({data, size});
  fuzz::runCompanion(peakboxTable, {"peakbox-table", report.path()});
  fuzz::runCompanion(peakboxTable, {"peakbox-table", "-r", report.path()});
  // A report is no file of noise, but as hostile as one.
  fuzz::runCompanion(peakboxTable, {"peakbox-table", "-n", report.path(), report.path()});
  return 0;
}
