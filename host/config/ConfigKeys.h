#pragma once

#include <yaml-cpp/mark.h>

#include <optional>
#include <string>

#include "host/config/ConfigFile.h"
#include "host/config/YamlReader.h"

namespace Macsecd {

/// A key as it stands in the file, before the suite that it has to fit is known.
struct KeyPlace {
  YAML::Mark cak;
  YAML::Mark ckn;
  bool isHidden = true;
};

/// Reads a key, `word` in the file.
void readKey(YamlReader& yaml, YAML::Node const& node, std::string const& word,
             std::optional<KeyConfig>& key, KeyPlace& place);
/// A diagnostic if the key doesn't fit the suite.
void checkKeyFits(YamlReader& yaml, std::optional<KeyConfig> const& key, KeyPlace const& place,
                  Suite suite);
/// A diagnostic if the fallback key is the primary key over again.
void checkKeysDiffer(YamlReader& yaml, ProfileConfig const& profile, KeyPlace const& fallback);

}  // namespace Macsecd
