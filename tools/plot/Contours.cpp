#include "plot/Contours.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "base/TextNumbers.h"

namespace peakbox {

namespace {

constexpr std::size_t kNone = SIZE_MAX;

/// Follows one level. Edges lead from point n to the next one, across (2 n) or up (2 n + 1).
class Tracer {
 public:
  Tracer(const Grid& wholeGrid, double wantedLevel)
      : grid(wholeGrid),
        width(grid.places[0].size()),
        level(wantedLevel),
        links(2 * grid.values.size(), {kNone, kNone}) {}

  std::string trace() {
    for (std::size_t row = 0; row + 1 < grid.places[1].size(); ++row) {
      for (std::size_t n = row * width; n + 1 < (row + 1) * width; ++n) crossCell(n);
    }
    // Lines that end at the grid's edges first, then closed ones.
    for (const bool isEnd : {true, false}) {
      for (std::size_t edge = 0; edge < links.size(); ++edge) {
        if (links[edge][0] != kNone && (!isEnd || links[edge][1] == kNone)) follow(edge);
      }
    }
    return text;
  }

 private:
  bool isAbove(std::size_t n) const { return grid.values[n] >= level; }
  void crossCell(std::size_t n);
  void follow(std::size_t edge);
  void addPoint(std::size_t edge);
  void writeBetween(std::size_t first, std::size_t last);
  void writePoint(const std::array<double, 2>& point);
  void link(std::size_t one, std::size_t other) {
    links[one][links[one][0] == kNone ? 0 : 1] = other;
    links[other][links[other][0] == kNone ? 0 : 1] = one;
  }

  const Grid& grid;
  const std::size_t width;
  const double level;
  std::vector<std::array<std::size_t, 2>> links;  // the edges that a line goes to from each
  std::vector<std::array<double, 2>> line;        // in steps of the grid
  std::string text;
};

/// Links the edges of the cell above and to the right of a point that the level crosses.
void Tracer::crossCell(std::size_t n) {
  const std::array<std::size_t, 4> corners{n, n + 1, n + 1 + width, n + width};
  const std::array<std::size_t, 4> edges{2 * n, 2 * (n + 1) + 1, 2 * (n + width), 2 * n + 1};  // behind each corner
  std::array<std::size_t, 4> crossed{};
  std::size_t count = 0;
  double sum = 0;
  for (std::size_t c = 0; c < 4; ++c) {
    if (isAbove(corners[c]) != isAbove(corners[(c + 1) % 4])) crossed[count++] = edges[c];
    sum += grid.values[corners[c]];
  }
  if (count == 0) return;
  // In a saddle the middle says which corners belong together.
  const bool isAlone = count == 4 && (sum >= 4 * level) != isAbove(n);
  link(crossed[0], crossed[isAlone ? 3 : 1]);
  if (count == 4) link(crossed[2], crossed[isAlone ? 1 : 3]);
}

void Tracer::addPoint(std::size_t edge) {
  const std::size_t n = edge / 2;
  const bool isAcross = edge % 2 == 0;
  const double next = grid.values[n + (isAcross ? 1 : width)];
  const double part = (level - grid.values[n]) / (next - grid.values[n]);
  line.push_back(
      {static_cast<double>(n % width) + (isAcross ? part : 0), static_cast<double>(n / width) + (isAcross ? 0 : part)});
}

/// Takes a line out of the links.
void Tracer::follow(std::size_t edge) {
  const std::size_t start = edge;
  std::size_t before = kNone;
  line.clear();
  while (edge != kNone && links[edge][0] != kNone) {
    addPoint(edge);
    const auto [one, other] = links[edge];
    links[edge] = {kNone, kNone};
    const std::size_t next = one == before ? other : one;
    before = edge;
    edge = next;
  }
  if (edge == start) addPoint(start);
  writePoint(line.front());
  constexpr std::size_t kPiece = 64;  // so that no line, however long, is gone through again and again
  for (std::size_t n = 0; n + 1 < line.size(); n += kPiece) writeBetween(n, std::min(n + kPiece, line.size() - 1));
  text.append("\n");
}

/// Writes the points behind one up to another, but for those that are not seen since they lie on the way.
void Tracer::writeBetween(std::size_t first, std::size_t last) {
  constexpr double kVisible = 0.1;  // in steps of the grid
  const double across = line[last][0] - line[first][0];
  const double up = line[last][1] - line[first][1];
  const double length = std::hypot(across, up);
  std::size_t farthest = first;
  double most = kVisible;
  for (std::size_t n = first + 1; n < last; ++n) {
    const double x = line[n][0] - line[first][0];
    const double y = line[n][1] - line[first][1];
    const double distance = length > 0 ? std::fabs(x * up - y * across) / length : std::hypot(x, y);
    if (distance > most) farthest = n;
    most = std::max(most, distance);
  }
  if (farthest == first) return writePoint(line[last]);
  writeBetween(first, farthest);
  writeBetween(farthest, last);
}

void Tracer::writePoint(const std::array<double, 2>& point) {
  for (const std::size_t d : {0U, 1U}) {
    const std::vector<double>& places = grid.places[d];
    const auto last = static_cast<double>(places.size() - 1);
    text.append(realToText(places[0] + point[d] / last * (places.back() - places[0]))).append(" ");
  }
  text.append(level > 0 ? "1\n" : "-1\n");
}

}  // namespace

std::string traceContours(const Grid& grid, double level) { return Tracer(grid, level).trace(); }

}  // namespace peakbox
