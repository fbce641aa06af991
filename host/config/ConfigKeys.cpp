#include "host/config/ConfigKeys.h"

#include <fmt/format.h>
#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <cctype>

#include "host/text/KeyText.h"

namespace Macsecd {

namespace {

/// The same digits, in whatever case.
bool isSameText(Vesk::String8 const& a, Vesk::String8 const& b) {
  return !a.empty() && std::ranges::equal(a.view(), b.view(), [](char one, char other) {
    return std::tolower(static_cast<unsigned char>(one)) ==
           std::tolower(static_cast<unsigned char>(other));
  });
}

}  // namespace

void readKey(YamlReader& yaml, YAML::Node const& node, std::string const& word,
             std::optional<KeyConfig>& key, KeyPlace& place) {
  key.emplace();
  auto readName = [&](YAML::Node const& value) {
    if (auto const name = yaml.text(value, "ckn")) key->ckn = *name;
    place.ckn = value.Mark();
    if (key->ckn.empty()) return;
    if (auto fault = faultOfKeyName(key->ckn.view())) yaml.diagnose(value.Mark(), *fault);
  };
  auto readText = [&](YAML::Node const& value) {
    if (auto const text = yaml.text(value, "cak")) key->cak = *text;
    place.cak = value.Mark();
    place.isHidden = key->cak.empty() || yaml.isHidden(value);
  };
  yaml.words(node, yaml.placeOf(node), fmt::format("'{}'", word),
             {{"ckn", true, readName}, {"cak", true, readText}});
}

void checkKeyFits(YamlReader& yaml, std::optional<KeyConfig> const& key, KeyPlace const& place,
                  Suite suite) {
  if (!key || key->cak.empty()) return;
  auto const fault = faultOfKey(key->cak.view(), static_cast<unsigned>(suite));
  if (fault) {
    yaml.diagnose(place.cak, *fault);
  } else if (!place.isHidden) {
    yaml.diagnose(place.cak, "the key is written with escapes",
                  "write its digits one behind the other");
  }
}

// Of a text that isn't a key at all nothing is compared: that is told already.
void checkKeysDiffer(YamlReader& yaml, ProfileConfig const& profile, KeyPlace const& fallback) {
  if (!profile.key || !profile.fallbackKey || profile.key->ckn.empty()) return;
  KeyConfig const& one = *profile.key;
  KeyConfig const& other = *profile.fallbackKey;
  if (keyNameOctets(one.ckn.view()) == keyNameOctets(other.ckn.view())) {
    yaml.diagnose(fallback.ckn, "the fallback key has the name of the primary key",
                  "keys of one interface need different names");
  } else if (isSameText(one.cak, other.cak) && deriveAlike(one.ckn.view(), other.ckn.view())) {
    yaml.diagnose(
        fallback.cak,
        "the fallback key is the primary key: the same cak, and names that agree in their "
        "first 16 octets",
        "give it a cak of its own");
  }
}

}  // namespace Macsecd
