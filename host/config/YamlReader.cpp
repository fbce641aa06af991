#include "host/config/YamlReader.h"

#include <fmt/format.h>
#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <charconv>
#include <map>

namespace Macsecd {

void YamlReader::diagnose(YAML::Mark const& at, std::string what, std::string remedy) {
  int line = std::max(at.line, 0) + 1;
  int column = std::max(at.column, 0) + 1;
  diagnostics_.push_back({file_, line + linesBefore_, column, std::move(what), std::move(remedy)});
  if (diagnostics_.size() < maxDiagnostics) return;
  diagnostics_.back().what = "there are too many mistakes";
  diagnostics_.back().remedy = "correct those before; see that this is the right file";
  throw TooManyDiagnostics();
}

void YamlReader::diagnose(YAML::Mark const& at, Fault const& fault) {
  diagnose(at, fault.what, fault.remedy);
}

YAML::Mark YamlReader::placeOf(YAML::Node const& value) const {
  return value.IsNull() ? wordMark_ : value.Mark();
}

bool YamlReader::isHidden(YAML::Node const& scalar) const { return mask_.hides(scalar.Scalar()); }

bool YamlReader::isMap(YAML::Node const& node, std::string const& what) {
  if (node.IsMap()) return true;
  if (!node.IsNull()) {
    diagnose(node.Mark(), fmt::format("{} has to be a mapping", what),
             "write its entries as 'word: value', indented below it");
  }
  return false;
}

std::optional<Vesk::String8> YamlReader::keyText(YAML::Node const& key, std::string const& what) {
  if (key.IsScalar() && !key.Scalar().empty()) return mask_.clear(key.Scalar());
  diagnose(key.Mark(), fmt::format("an entry of {} has no name", what), "give it a name");
  return std::nullopt;
}

void YamlReader::words(YAML::Node const& map, YAML::Mark const& at, std::string const& what,
                       std::vector<Entry> const& entries) {
  if (!isMap(map, what) && !map.IsNull()) return;
  std::vector<std::string> known;
  for (auto const& entry : entries) known.push_back(entry.word);
  std::map<Vesk::String8, int> lineOf;
  for (auto const& pair : map) {
    auto word = keyText(pair.first, what);
    if (!word) continue;
    auto entry = std::find_if(entries.begin(), entries.end(),
                              [&](Entry const& e) { return e.word == word->view(); });
    if (entry == entries.end()) {
      diagnose(pair.first.Mark(),
               fmt::format("unknown word {} in {}", quotedWord(word->view()), what),
               remedyForUnknown(word->view(), known));
    } else if (auto [first, isNew] = lineOf.emplace(*word, pair.first.Mark().line); !isNew) {
      diagnose(pair.first.Mark(), fmt::format("'{}' stands twice in {}", entry->word, what),
               fmt::format("remove it here or in line {}", first->second + 1 + linesBefore_));
    } else {
      wordMark_ = pair.first.Mark();
      entry->read(pair.second);
    }
  }
  for (auto const& entry : entries) {
    if (!entry.required || lineOf.count(Vesk::String8(entry.word))) continue;
    diagnose(at, fmt::format("{} has no '{}'", what, entry.word),
             fmt::format("add '{}: ...'", entry.word));
  }
}

void YamlReader::checkName(std::string const& kind, Vesk::String8 const& name,
                           YAML::Mark const& at) {
  if (!mayBeShown(name.view())) {
    diagnose(at, fmt::format("the name of this {} looks like a key, or a part of one", kind),
             "choose a name with fewer than eight hexadecimal digits in a row");
  } else if (KeyMask::controlCharacter(name.view()) < name.size()) {
    diagnose(at, fmt::format("the name of this {} has a control character", kind), "remove it");
  }
}

void YamlReader::names(
    YAML::Node const& map, std::string const& kind,
    std::function<void(Vesk::String8 const&, YAML::Node const&, YAML::Node const&)> const& read) {
  if (!isMap(map, fmt::format("'{}s'", kind))) return;
  std::map<Vesk::String8, int> lineOf;
  for (auto const& pair : map) {
    auto name = keyText(pair.first, fmt::format("'{}s'", kind));
    if (!name) continue;
    checkName(kind, *name, pair.first.Mark());
    auto [first, isNew] = lineOf.emplace(*name, pair.first.Mark().line);
    if (isNew) {
      read(*name, pair.first, pair.second);
    } else {
      diagnose(pair.first.Mark(), fmt::format("{} {} stands twice", kind, quotedWord(name->view())),
               fmt::format("remove it here or in line {}", first->second + 1 + linesBefore_));
    }
  }
}

std::optional<Vesk::String8> YamlReader::text(YAML::Node const& node, std::string const& word) {
  if (node.IsScalar() && !node.Scalar().empty()) return mask_.clear(node.Scalar());
  if (node.IsScalar() || node.IsNull()) {
    diagnose(wordMark_, fmt::format("'{}' has no value", word), "give it one");
  } else {
    diagnose(node.Mark(), fmt::format("'{}' has to be a single value", word),
             "write the value on the same line");
  }
  return std::nullopt;
}

std::optional<bool> YamlReader::boolean(YAML::Node const& node, std::string const& word) {
  static std::map<std::string_view, bool> const meanings{
      {"true", true}, {"yes", true}, {"on", true}, {"false", false}, {"no", false}, {"off", false}};
  auto value = text(node, word);
  if (!value) return std::nullopt;
  if (auto found = meanings.find(value->view()); found != meanings.end()) return found->second;
  diagnose(node.Mark(), fmt::format("'{}' is neither true nor false", word), "write true or false");
  return std::nullopt;
}

std::optional<uint32_t> YamlReader::number(YAML::Node const& node, std::string const& word,
                                           uint32_t min, uint32_t max) {
  auto const value = text(node, word);
  if (!value) return std::nullopt;
  std::string_view const text = value->view();
  bool const digits = std::all_of(text.begin() + (text[0] == '-' && text.size() > 1 ? 1 : 0),
                                  text.end(), [](char c) { return c >= '0' && c <= '9'; });
  auto remedy = fmt::format("write a whole number from {} to {}", min, max);
  if (!digits) {
    diagnose(node.Mark(), fmt::format("'{}' is no whole number", word), remedy);
    return std::nullopt;
  }
  uint32_t number = 0;
  auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error == std::errc() && number >= min && number <= max) return number;
  diagnose(node.Mark(), fmt::format("'{}' is out of range", word), remedy);
  return std::nullopt;
}

}  // namespace Macsecd
