#include "lab/swarm/Reducer.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace Lab {

namespace {

constexpr std::string_view kEnd = "run until ";

std::vector<std::string> linesOf(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    auto const line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    if (!line.empty()) lines.emplace_back(line);
  }
  return lines;
}

std::string textOf(std::vector<std::string> const& lines) {
  std::string text;
  for (std::string const& line : lines) text += line + "\n";
  return text;
}

size_t indentationOf(std::string const& line) { return line.find_first_not_of(' '); }

// A line and all that is indented below it.
size_t blockAt(std::vector<std::string> const& lines, size_t at) {
  size_t end = at + 1;
  while (end < lines.size() && indentationOf(lines[end]) > indentationOf(lines[at])) ++end;
  return end - at;
}

std::vector<std::string> wordsOf(std::string const& line) {
  constexpr char const* kBetween = " :,{}";
  std::vector<std::string> words;
  for (size_t at = line.find_first_not_of(kBetween); at != std::string::npos;) {
    size_t const end = line.find_first_of(kBetween, at);
    words.push_back(line.substr(at, end - at));
    at = line.find_first_not_of(kBetween, end);
  }
  return words;
}

bool hasWord(std::string const& line, std::string const& word) {
  auto const words = wordsOf(line);
  return std::ranges::find(words, word) != words.end();
}

// "wire A e1 to B e1": the first one's.
std::vector<std::string> interfacesOfWires(std::vector<std::string> const& lines) {
  std::vector<std::string> interfaces;
  for (std::string const& line : lines) {
    auto const words = wordsOf(line);
    if (words.size() > 2 && words[0] == "wire") interfaces.push_back(words[2]);
  }
  return interfaces;
}

// "at 12.3 ..." with its time in whole seconds.
std::string rounded(std::string const& line) {
  constexpr std::string_view kAt = "at ";
  if (!line.starts_with(kAt)) return line;
  char* rest = nullptr;
  double const time = std::strtod(line.c_str() + kAt.size(), &rest);
  return fmt::format("at {:.0f}{}", std::round(time), rest);
}

}  // namespace

std::string Reducer::reduced(std::string_view text) {
  Lines lines = linesOf(text);
  for (bool isSmaller = true; isSmaller;) {
    isSmaller = leaveOutWires(lines);
    isSmaller = leaveOutBlocks(lines) || isSmaller;
    for (size_t piece = lines.size() / 2; piece > 0; piece /= 2) {
      isSmaller = leaveOutPieces(lines, piece) || isSmaller;
    }
    isSmaller = endSooner(lines) || isSmaller;
  }
  simplifyTimes(lines);
  endSooner(lines);
  return textOf(lines);
}

bool Reducer::fail(Lines const& lines) {
  ++tried_;
  return fails_(textOf(lines));
}

bool Reducer::leaveOut(Lines& lines, size_t from, size_t count) {
  Lines fewer = lines;
  auto const begin = fewer.begin() + static_cast<std::ptrdiff_t>(from);
  fewer.erase(begin, begin + static_cast<std::ptrdiff_t>(std::min(count, fewer.size() - from)));
  if (!fail(fewer)) return false;
  lines = std::move(fewer);
  return true;
}

// From behind, since what happens is last, and easily missed.
bool Reducer::leaveOutPieces(Lines& lines, size_t piece) {
  bool isSmaller = false;
  for (size_t end = lines.size(); end > 0; end = end > piece ? end - piece : 0) {
    size_t const from = end > piece ? end - piece : 0;
    isSmaller = leaveOut(lines, from, end - from) || isSmaller;
  }
  return isSmaller;
}

// A switch, a profile: with what names it elsewhere, in the lines of the same word.
bool Reducer::leaveOutBlocks(Lines& lines) {
  bool isSmaller = false;
  for (size_t at = lines.size(); at-- > 0;) {
    if (at < lines.size() && blockAt(lines, at) > 1) {
      isSmaller = leaveOut(lines, at, blockAt(lines, at)) || isSmaller;
    }
  }
  return isSmaller;
}

// With all that is said of their interfaces.
bool Reducer::leaveOutWires(Lines& lines) {
  bool isSmaller = false;
  for (std::string const& interface : interfacesOfWires(lines)) {
    Lines fewer = lines;
    std::erase_if(fewer, [&](std::string const& line) { return hasWord(line, interface); });
    if (!fail(fewer)) continue;
    lines = std::move(fewer);
    isSmaller = true;
  }
  return isSmaller;
}

bool Reducer::simplifyTimes(Lines& lines) {
  bool isSimpler = false;
  for (size_t at = 0; at < lines.size(); ++at) {
    Lines simpler = lines;
    simpler[at] = rounded(lines[at]);
    if (simpler[at] == lines[at] || !fail(simpler)) continue;
    lines = std::move(simpler);
    isSimpler = true;
  }
  return isSimpler;
}

// By halves of what is left.
bool Reducer::endSooner(Lines& lines) {
  auto const isEnd = [](std::string const& line) { return line.starts_with(kEnd); };
  auto const found = std::ranges::find_if(lines, isEnd);
  if (found == lines.end()) return false;
  auto const at = static_cast<size_t>(found - lines.begin());
  double fails = std::strtod(lines[at].c_str() + kEnd.size(), nullptr), holds = 0;
  double const before = fails;
  while (fails - holds > 1) {
    double const middle = std::floor((fails + holds) / 2);
    Lines sooner = lines;
    sooner[at] = fmt::format("{}{:.0f}", kEnd, middle);
    bool const stillFails = fail(sooner);
    (stillFails ? fails : holds) = middle;
    if (stillFails) lines = std::move(sooner);
  }
  return fails < before;
}

}  // namespace Lab
