#include "spectrum/PlaneNoise.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "base/RobustSpread.h"

namespace peakbox {

namespace {

/// The plane seen along one of its dimensions.
struct View {
  const double* data;
  std::array<std::int64_t, 2> sizes;  // along it and across
  std::array<std::int64_t, 2> strides;

  /// The second difference across, at this place; NaN where most of it is filled up with zeros.
  double getCurvature(std::int64_t along, std::int64_t across) const {
    const double* const point = data + along * strides[0] + across * strides[1];
    const double before = point[-strides[1]];
    const double after = point[strides[1]];
    const bool isFilled = (before == 0) + (*point == 0) + (after == 0) > 1;
    return isFilled ? NAN : before - 2 * *point + after;
  }

  double sumCurvatures(std::int64_t along, std::int64_t across, std::int64_t length) const {
    double sum = 0;
    for (std::int64_t k = 0; k < length; ++k) sum += getCurvature(along + k, across);
    return sum;
  }
};

View makeView(const Spectrum& spectrum, int dim) {
  const std::int64_t size1 = spectrum.getSize(0);
  const std::int64_t size2 = spectrum.getSize(1);
  const double* const data = &spectrum.getData()[0][0];
  return dim == 0 ? View{data, {size1, size2}, {1, size1}} : View{data, {size2, size1}, {size1, 1}};
}

/// Finite values but zeros of a function at places from 0 to `ends` along and between the edges across, `step` apart
/// along or farther.
template <typename Function>
std::vector<double> sample(const View& view, std::int64_t ends, std::int64_t step, std::int64_t sampleSize,
                           const Function& function) {
  std::vector<double> values;
  const double count = static_cast<double>(std::max<std::int64_t>(0, ends)) / static_cast<double>(step) *
                       static_cast<double>(view.sizes[1]);
  const auto thinning =
      static_cast<std::int64_t>(std::ceil(std::sqrt(std::max(1.0, count / static_cast<double>(sampleSize)))));
  for (std::int64_t across = 1; across + 1 < view.sizes[1]; across += thinning) {
    for (std::int64_t along = 0; along < ends; along += step * thinning) {
      const double value = function(along, across);
      if (value != 0 && std::isfinite(value)) values.push_back(value);
    }
  }
  return values;
}

/// Strips of a box's length, one point wide, in the plane that is filtered across them. Of each the difference to one
/// farther on is taken, since what rolls slowly along the strips is no noise.
std::vector<double> sampleStrips(const View& view, std::int64_t length, std::int64_t sampleSize) {
  // Beyond it noise is not alike, but where a plane has few points.
  const std::int64_t distance = std::min(std::max<std::int64_t>(2 * length, 24), view.sizes[0] / 2);
  const std::int64_t step = std::max<std::int64_t>(1, length / 4);
  return sample(view, view.sizes[0] - distance - length + 1, step, sampleSize, [&](auto along, auto across) {
    const double later = view.sumCurvatures(along + distance, across, length);
    return (later - view.sumCurvatures(along, across, length)) * std::sqrt(0.5);
  });
}

/// Points of the plane that is filtered both ways.
std::vector<double> samplePoints(const View& view, std::int64_t sampleSize) {
  return sample(view, view.sizes[0] - 2, 1, sampleSize, [&](auto along, auto across) {
    return view.getCurvature(along, across) - 2 * view.getCurvature(along + 1, across) +
           view.getCurvature(along + 2, across);
  });
}

/// The square of the error of a deviation's logarithm, from how much those of parts of the plane differ.
double estimateErrorSquare(const std::vector<double>& values) {
  constexpr std::size_t kGroups = 16;
  double sum = 0;
  double squares = 0;
  for (std::size_t group = 0; group < kGroups; ++group) {
    const auto edge = [&](std::size_t n) {
      return values.begin() + static_cast<std::ptrdiff_t>(values.size() * n / kGroups);
    };
    const double logarithm = std::log(estimateCore({edge(group), edge(group + 1)}).deviation);
    sum += logarithm;
    squares += logarithm * logarithm;
  }
  return (squares - sum * sum / kGroups) / (kGroups - 1) / kGroups;
}

/// The values of which the noise of a box is made up: strips along each dimension, and points.
struct Parts {
  std::vector<double> strips1;
  std::vector<double> strips2;
  std::vector<double> points;

  Parts(const Spectrum& spectrum, const std::array<std::int64_t, 2>& box, std::int64_t sampleSize) {
    if (!spectrum.getAxes().contains({0, 0})) return;
    const View rows = makeView(spectrum, 0);
    strips1 = sampleStrips(rows, box[0], sampleSize);
    strips2 = sampleStrips(makeView(spectrum, 1), box[1], sampleSize);
    points = samplePoints(rows, sampleSize);
  }
};

double combine(const Core& strips1, const Core& strips2, const Core& points) {
  return points.deviation == 0 ? 0 : strips1.deviation * strips2.deviation / points.deviation;
}

}  // namespace

PlaneNoise estimateNoise(const Spectrum& spectrum, const std::array<std::int64_t, 2>& box) {
  const Parts parts(spectrum, box, kSampleSize);
  const Core strips1 = estimateCore(parts.strips1);
  const Core strips2 = estimateCore(parts.strips2);
  const double deviation = combine(strips1, strips2, estimateCore(parts.points));
  double errorSquare = 0;
  for (const auto* part : {&parts.strips1, &parts.strips2, &parts.points}) {
    errorSquare += 1.4 * 1.4 * estimateErrorSquare(*part);  // the parts are not independent of each other
  }
  for (const std::size_t d : {0U, 1U}) {
    errorSquare += std::pow(static_cast<double>(box[d]) / (2.0 * spectrum.getSize(static_cast<int>(d))), 2);
  }
  return {.deviation = deviation,
          .error = deviation * std::sqrt(errorSquare),
          .tail = std::max(strips1.tail, strips2.tail),
          .values = std::min({parts.strips1.size(), parts.strips2.size(), parts.points.size()})};
}

double estimatePointNoise(const Spectrum& spectrum, std::int64_t sampleSize) {
  const Parts parts(spectrum, {1, 1}, sampleSize);
  return combine(estimateCore(parts.strips1), estimateCore(parts.strips2), estimateCore(parts.points));
}

}  // namespace peakbox
