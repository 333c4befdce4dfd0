#include "FuzzSupport.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <streambuf>

#include "base/ThrowingMessages.h"
#include "driver/RunSettings.h"
#include "integrate/BoxTable.h"
#include "peaks/PeakList.h"
#include "spectrum/Spectrum.h"
#include "support/ExampleRun.h"

/// The main function of peakbox-check.
int peakboxCheck(int count, char** arguments);

/// That of peakbox-planes.
int peakboxPlanes(int count, char** arguments);

/// libFuzzer's own changes.
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t sizeLimit);

namespace peakbox::fuzz {

namespace {

/// Takes what verbose runs say: it is still formatted, but not written anywhere.
class Discard : public std::streambuf {
  int_type overflow(int_type c) override { return traits_type::not_eof(c); }
};

/// A fault of the fuzz program itself must not pass for an end of the run.
void require(bool condition) {
  if (!condition) std::abort();
}

/// Whether folding, which goes one size at a time, would only take time.
bool isFarOff(const PeakList& peaks) {
  constexpr double kFar = 1e6;
  for (int j = 0; j < peaks.getCount(); ++j) {
    for (const int dim : {0, 1}) {
      if (std::fabs(peaks.getPosition(j, dim)) > kFar || std::fabs(peaks.getBoundsWidth(j, dim)) > kFar) return true;
    }
  }
  return false;
}

std::string pathOf(int descriptor) { return "/proc/self/fd/" + std::to_string(descriptor); }

}  // namespace

InputFile::InputFile(std::string_view bytes) : descriptor(memfd_create("input", 0)), name(pathOf(descriptor)) {
  write(bytes);
}

InputFile::~InputFile() { close(descriptor); }

void InputFile::write(std::string_view bytes) const {
  require(ftruncate(descriptor, 0) == 0);
  require(pwrite(descriptor, bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size()));
}

InputPipe::InputPipe(std::string_view bytes) {
  int ends[2];
  require(pipe(ends) == 0);
  require(::write(ends[1], bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
  close(ends[1]);
  descriptor = ends[0];
  name = pathOf(descriptor);
}

InputPipe::~InputPipe() { close(descriptor); }

void runPrograms(std::string_view parameters) {
  static const InputFile file;
  file.write(parameters);
  const char* const arguments[] = {"peakbox", "-v", "-abs", "-i", file.path().c_str(), "-o", "/dev/null"};
  try {
    RunSettings settings;
    const bool verbose = settings.parseArguments(7, arguments);
    Spectrum spectrum;
    spectrum.readHeader(settings.getSpectrumFile(0), verbose);
    PeakList peaks;
    const unsigned peakCount = peaks.read(settings.getPeakListFile(), spectrum, verbose);
    if (isFarOff(peaks)) return;
    BoxTable boxes(peakCount, settings.getTolerance1(), settings.getTolerance2());
    boxes.placeBoxes(spectrum, peaks);
    boxes.writeReport(settings, spectrum, peaks);
  } catch (const RunEnd& end) {
    require(!end.message.empty() && (end.status == 0 || end.status == 1));
  }
  takeMessages();

  runCompanion(peakboxCheck, {"peakbox-check", file.path()});
  runCompanion(peakboxCheck, {"peakbox-check", "-a", file.path()});
}

void runCompanion(Main* companion, std::vector<std::string> words) {
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  optind = 1;
  try {
    const int status = companion(static_cast<int>(words.size()), arguments.data());
    require(status == 0 || status == 1);
  } catch (const RunEnd& end) {
    require(!end.message.empty() && (end.status == 0 || end.status == 1));
  }
  takeMessages();
}

std::string makeFolder() {
  std::string folder = "/tmp/peakbox-fuzz-XXXXXX";
  require(mkdtemp(folder.data()) != nullptr);
  return folder;
}

void runPlanes(std::vector<std::string> words) {
  static const std::string folder = makeFolder() + "/planes";
  words.insert(words.begin(), {"peakbox-planes", "-o", folder});
  runCompanion(peakboxPlanes, words);
  std::filesystem::remove_all(folder);
}

void runSeries(const InputFile& example, const std::string& bytes) {
  static const InputFile input;
  static const InputFile peaks(test::examplePeaks());
  input.write(bytes);
  const InputPipe pipe(bytes);
  const auto run = [&](const std::string& first, const std::string& second) {
    runPrograms("BOXSIZE 1\nTOLERANCE 100 50\nPEAKLIST " + peaks.path() + "\nSPECTRUM " + first + "\nSPECTRUM " +
                second + "\n");
  };
  run(input.path(), input.path());
  run(example.path(), pipe.path());
}

std::size_t mutateSpectrum(const std::vector<std::size_t>& headerWords, std::uint8_t* data, std::size_t size,
                           std::size_t sizeLimit, unsigned seed) {
  constexpr std::size_t kWordSize = 4;
  if (seed % 2 == 0 || size < FileHeader::kSize) return LLVMFuzzerMutate(data, size, sizeLimit);
  LLVMFuzzerMutate(data + headerWords[seed / 2 % headerWords.size()], kWordSize, kWordSize);
  return size;
}

}  // namespace peakbox::fuzz

extern "C" int LLVMFuzzerInitialize(int* /*argumentCount*/, char*** /*arguments*/) {
  // The streams are flushed after every static object is gone.
  static auto* const discard = new peakbox::fuzz::Discard();
  std::cout.rdbuf(discard);
  std::cerr.rdbuf(discard);
  return 0;
}
