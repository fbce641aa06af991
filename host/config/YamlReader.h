#pragma once

#include <yaml-cpp/mark.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/config/KeyMask.h"
#include "host/text/Diagnostic.h"
#include "host/text/KeyText.h"
#include "runtime/String8.h"

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

/// Thrown with the last diagnostic that is told, which says so.
struct TooManyDiagnostics {};
inline constexpr size_t maxDiagnostics = 100;

/// Walks the YAML nodes of a masked text and collects diagnostics on the way.
/// It visits mappings pair by pair, since looking a key up would hide its duplicates. What it reads
/// is clear again, and wiped with its last copy.
class YamlReader {
 public:
  YamlReader(std::string file, int linesBefore, KeyMask const& mask,
             std::vector<Diagnostic>& diagnostics)
      : file_(std::move(file)), linesBefore_(linesBefore), mask_(mask), diagnostics_(diagnostics) {}

  /// A mapping of fixed words. `what` names it in messages ("profile 'core'"), `at` is the place of
  /// missing entries. An empty value is an empty mapping.
  void words(YAML::Node const& map, YAML::Mark const& at, std::string const& what,
             std::vector<Entry> const& entries);
  /// A mapping whose keys are names of the operator's choice ("profile", "interface").
  void names(YAML::Node const& map, std::string const& kind,
             std::function<void(Vesk::String8 const& name, YAML::Node const& nameNode,
                                YAML::Node const& value)> const& read);

  /// Scalars. Nothing, and a diagnostic, when the value is none of its type.
  std::optional<Vesk::String8> text(YAML::Node const& node, std::string const& word);
  std::optional<bool> boolean(YAML::Node const& node, std::string const& word);
  std::optional<uint32_t> number(YAML::Node const& node, std::string const& word, uint32_t min,
                                 uint32_t max);
  /// Where a value stands; of an empty one, where its word stands.
  YAML::Mark placeOf(YAML::Node const& value) const;
  /// Whether the text of a scalar was masked, so that the library has no copy of it.
  bool isHidden(YAML::Node const& scalar) const;

  void diagnose(YAML::Mark const& at, std::string what, std::string remedy);
  void diagnose(YAML::Mark const& at, Fault const& fault);

 private:
  void checkName(std::string const& kind, Vesk::String8 const& name, YAML::Mark const& at);
  bool isMap(YAML::Node const& node, std::string const& what);
  std::optional<Vesk::String8> keyText(YAML::Node const& key, std::string const& what);

  std::string const file_;
  int const linesBefore_;
  KeyMask const& mask_;
  std::vector<Diagnostic>& diagnostics_;
  YAML::Mark wordMark_;  ///< of the word whose value is being read: an empty value has no place
};

}  // namespace Macsecd
