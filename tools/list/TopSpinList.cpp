#include <algorithm>
#include <map>

#include "base/Refusal.h"
#include "list/ForeignList.h"

namespace peakbox::list {

namespace {

constexpr const char* kBlanks = " \t\n\f\v";

/// The text of an attribute, in which five characters have names.
std::string unescape(std::string_view text) {
  const std::pair<std::string_view, std::string_view> names[] = {
      {"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&apos;", "'"}, {"&amp;", "&"}};
  std::string unescaped;
  while (!text.empty()) {
    const auto isHere = [&](const auto& pair) { return text.starts_with(pair.first); };
    const auto* const name = std::find_if(std::begin(names), std::end(names), isHere);
    const bool isName = name != std::end(names);
    unescaped += isName ? name->second : text.substr(0, 1);
    text.remove_prefix(isName ? name->first.size() : 1);
  }
  return unescaped;
}

/// The attributes of the element whose name ends at `i`.
std::map<std::string, std::string> takeAttributes(const std::string& text, std::size_t i, const std::string& place) {
  std::map<std::string, std::string> attributes;
  while ((i = text.find_first_not_of(kBlanks, i)) != std::string::npos && text[i] != '>' && text[i] != '/') {
    const std::size_t equal = text.find('=', i);
    const std::size_t quote = text.find_first_not_of(kBlanks, equal + 1);
    const bool isQuoted = equal < text.size() && quote < text.size() && (text[quote] == '"' || text[quote] == '\'');
    const std::size_t end = isQuoted ? text.find(text[quote], quote + 1) : std::string::npos;
    if (end == std::string::npos) break;
    attributes[trim(text.substr(i, equal - i))] = unescape(text.substr(quote + 1, end - quote - 1));
    i = end + 1;
  }
  if (i >= text.size() || (text[i] != '>' && text[i] != '/')) refuse(place, "an element that is not well-formed");
  return attributes;
}

}  // namespace

ForeignList readTopSpin(const std::string& file, const std::string& text) {
  ForeignList list{.file = file, .label = {2, 2}, .ppm = {0, 1}, .names = {"F1", "F2"}, .direct = 1};
  list.isDirectSure = true;
  std::int64_t line = 1;
  for (std::size_t i = 0, counted = 0; (i = text.find('<', i)) != std::string::npos; ++i) {
    while (counted < i) line += text[counted++] == '\n';
    if (text.compare(i, 4, "<!--") == 0) i = std::min(text.find("-->", i), text.size());
    const std::string name = text.substr(i, text.find_first_of(std::string(kBlanks) + "/>", i + 1) - i);
    if (name == "<Peak1D" || name == "<Peak3D" || name == "<Peak4D")
      refuse(file, "a list of other than two dimensions");
    if (name != "<Peak2D") continue;
    const std::string place = file + ":" + std::to_string(line);
    std::map<std::string, std::string> attributes = takeAttributes(text, i + name.size(), place);
    list.rows.push_back({.place = place, .fields = {attributes["F1"], attributes["F2"], attributes["annotation"]}});
  }
  return list;
}

}  // namespace peakbox::list
