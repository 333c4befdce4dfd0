#include <filesystem>
#include <fstream>

#include "FuzzSupport.h"

/// An input is the files procs, proc2s, proc3s, 2rr and 3rrr with form feeds between them.
extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
  using namespace peakbox;
  static const std::string folder = fuzz::makeFolder();
  std::string rest(data, size);
  for (const char* name : {"procs", "proc2s", "proc3s", "2rr", "3rrr"}) {
    const std::size_t end = std::min(rest.find('\f'), rest.size());
    std::ofstream(folder + "/" + name, std::ios::binary) << rest.substr(0, end);
    rest.erase(0, end + 1);
  }
  fuzz::runPlanes({folder + "/2rr"});
  fuzz::runPlanes({folder + "/3rrr"});
  return 0;
}
