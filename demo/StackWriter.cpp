#include "demo/StackWriter.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace peakbox::demo {

namespace {

using Texts = std::map<std::string, std::string>;
using Place = std::array<int, 3>;

template <typename Number>
void appendNumber(std::string& bytes, Number number, bool isBig) {
  char text[sizeof number];
  std::memcpy(text, &number, sizeof number);
  if (isBig != (std::endian::native == std::endian::big)) std::reverse(text, text + sizeof number);
  bytes.append(text, sizeof number);
}

const Axis& getAxis(const Stack& stack, std::size_t role) {
  static const Axis kNone{.size = 1, .observeMHz = 1, .sweepWidthHz = 1};
  return role == 0 ? kNone : role == 1 ? stack.plane.indirect : stack.plane.direct;
}

int getSize(const Stack& stack, std::size_t role) { return role == 0 ? stack.planeCount : getAxis(stack, role).size; }

/// The ppm of point `point`, counted from 0.
float getPpm(const Axis& axis, int point) {
  const float ppmPerPoint = axis.sweepWidthHz / axis.observeMHz / static_cast<float>(axis.size);
  return axis.lastPpm + ppmPerPoint * static_cast<float>(axis.size - 1 - point);
}

/// The data by their place among tiles, with padding; `append` takes a value.
template <typename Append>
void writeTiles(const Stack& stack, const Append& append) {
  Place sizes{1, 1, 1};
  Place tiles{1, 1, 1};
  std::array<std::size_t, 3> roles{0, 0, 0};
  const std::size_t before = 3 - stack.roles.size();
  for (std::size_t n = before; n < 3; ++n) {
    roles[n] = stack.roles[n - before];
    sizes[n] = getSize(stack, roles[n]);
    tiles[n] = stack.tiles[n - before];
  }
  const auto writeTile = [&](const Place& start) {
    for (int n = 0; n < tiles[0] * tiles[1] * tiles[2]; ++n) {
      const Place inside{n / tiles[2] / tiles[1], n / tiles[2] % tiles[1], n % tiles[2]};
      Place point{};
      bool isInside = true;
      for (std::size_t a = 0; a < 3; ++a) {
        isInside = isInside && start[a] + inside[a] < sizes[a];
        if (a >= before) point[roles[a]] = start[a] + inside[a];
      }
      const auto number = static_cast<float>(point[0] + 1);
      append(isInside ? stack.plane.value(point[2], point[1]) * number : stack.plane.unused / 1e3F);
    }
  };
  for (int i = 0; i < sizes[0]; i += tiles[0]) {
    for (int j = 0; j < sizes[1]; j += tiles[1]) {
      for (int k = 0; k < sizes[2]; k += tiles[2]) writeTile({i, j, k});
    }
  }
}

}  // namespace

std::string writeUcsf(const Stack& stack) {
  std::string bytes = std::string("UCSF NMR\0\0", 10) + static_cast<char>(stack.roles.size());
  bytes.append({1, 0, 2}).resize(180);
  for (std::size_t n = 0; n < stack.roles.size(); ++n) {
    const Axis& axis = getAxis(stack, stack.roles[n]);
    const int size = getSize(stack, stack.roles[n]);
    std::string header = axis.name;
    header.resize(8);
    for (const int number : {size, 0, stack.tiles[n]}) appendNumber(header, number, true);
    appendNumber(header, stack.roles[n] == 0 ? stack.delayMHz : axis.observeMHz, true);
    appendNumber(header, axis.sweepWidthHz, true);
    appendNumber(header, getPpm(axis, axis.size / 2), true);
    header.resize(128);
    bytes += header;
  }
  writeTiles(stack, [&](float value) { appendNumber(bytes, value, true); });
  return bytes;
}

Texts writeBruker(const Stack& stack, const Texts& changes) {
  Texts files;
  std::string& bytes = files[stack.roles.size() == 2 ? "2rr" : "3rrr"];
  writeTiles(stack, [&](float value) {
    stack.isDouble ? appendNumber(bytes, double{value}, stack.isBig)
                   : appendNumber(bytes, static_cast<std::int32_t>(4 * value), stack.isBig);
  });
  const char* const names[] = {"procs", "proc2s", "proc3s"};
  for (std::size_t n = 0; n < stack.roles.size(); ++n) {
    const std::string name = names[stack.roles.size() - 1 - n];
    const Axis& axis = getAxis(stack, stack.roles[n]);
    const int size = getSize(stack, stack.roles[n]);
    Texts values{{"SI", std::to_string(size)},
                 {"XDIM", stack.tiles[n] == size ? "0" : std::to_string(stack.tiles[n])},
                 {"BYTORDP", stack.isBig ? "1" : "0"},
                 {"DTYPP", stack.isDouble ? "2" : "0"},
                 {"NC_proc", "-2"},
                 {"FT_mod", stack.roles[n] == 0 ? "0" : "6"},
                 {"SF", std::to_string(axis.observeMHz)},
                 {"SW_p", std::to_string(axis.sweepWidthHz)},
                 {"OFFSET", std::to_string(getPpm(axis, 0))},
                 {"AXNUC", "<" + axis.name + ">"}};
    for (const auto& [place, value] : changes) {
      if (place.starts_with(name + ":")) values[place.substr(name.size() + 1)] = value;
    }
    for (const auto& [key, value] : values) {
      if (!value.empty()) files[name].append("##$").append(key).append("= ").append(value).append("\r\n");
    }
  }
  return files;
}

}  // namespace peakbox::demo
