#include <cmath>
#include <ostream>
#include <string>

#include "base/TextNumbers.h"
#include "integrate/BoxTable.h"

namespace peakbox {

void BoxTable::writeSpectrumTable(int index, std::ostream& out, const RunSettings& settings, const Spectrum& spectrum,
                                  const PeakList& peaks) const {
  if (index == 0) settings.writeFieldHeader(out);
  settings.writeSpectrumHeader(index, out);
  settings.writeParametersHeader(index, out);

  out << "# Num\tLabel\tPos1\tPos2\tInt\n";
  std::string line;
  for (int j = 0; j < peaks.getCount(); ++j) {
    const std::string& label = peaks.getLabel(j);
    const double intensity = getIntensity(j);
    const double written = settings.getAbsoluteIntensity() && !isNoiseLabel(label) ? std::fabs(intensity) : intensity;
    line.assign("  ").append(std::to_string(peaks.getNumber(j))).append("\t").append(label);
    line.append("\t").append(realToText(spectrum.pointToPpm(getExtent1(j).centre, 0)));
    line.append("\t").append(realToText(spectrum.pointToPpm(getExtent2(j).centre, 1)));
    out << line.append("\t").append(realToText(written)).append("\n");
  }
  out << '\n' << std::flush;
}

}  // namespace peakbox
