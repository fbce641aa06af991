#pragma once

#include <yaml-cpp/mark.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/KeyText.h"
#include "host/Mistake.h"

namespace YAML {
class Node;
}  // namespace YAML

namespace Macsecd {

/// One word that a mapping may hold, and what to do with its value.
struct Entry {
  std::string word;
  bool required;
  std::function<void(YAML::Node const& value)> read;
};

/// Walks YAML nodes and collects all mistakes on the way, with their places. It visits mappings
/// pair by pair, since looking a key up would hide its duplicates.
class YamlReader {
 public:
  YamlReader(std::string file, int linesBefore, std::vector<Mistake>& mistakes)
      : file_(std::move(file)), linesBefore_(linesBefore), mistakes_(mistakes) {}

  /// A mapping of fixed words. `what` names it in messages ("profile 'core'"), `at` is the place of
  /// missing entries. An empty value is an empty mapping.
  void words(YAML::Node const& map, YAML::Mark const& at, std::string const& what,
             std::vector<Entry> const& entries);
  /// A mapping whose keys are names of the operator's choice ("profile", "interface").
  void names(YAML::Node const& map, std::string const& kind,
             std::function<void(std::string const& name, YAML::Node const& nameNode,
                                YAML::Node const& value)> const& read);

  /// Scalars. Nothing, and a mistake, when the value is none of its type.
  std::optional<std::string> text(YAML::Node const& node, std::string const& word);
  std::optional<bool> boolean(YAML::Node const& node, std::string const& word);
  std::optional<uint32_t> number(YAML::Node const& node, std::string const& word, uint32_t min,
                                 uint32_t max);

  void mistake(YAML::Mark const& at, std::string what, std::string remedy);
  void mistake(YAML::Node const& at, Fault const& fault);

 private:
  bool isMap(YAML::Node const& node, std::string const& what);
  std::optional<std::string> keyText(YAML::Node const& key, std::string const& what);

  std::string file_;
  int linesBefore_;
  std::vector<Mistake>& mistakes_;
  YAML::Mark wordMark_;  ///< of the word whose value is being read: an empty value has no place
};

}  // namespace Macsecd
