#include <algorithm>

#include "host/config/ConfigFile.h"

namespace Macsecd {

namespace {

template <class Item>
Item const* named(std::vector<Item> const& items, std::string_view name) {
  auto found = std::find_if(items.begin(), items.end(), [&](auto& i) { return i.name == name; });
  return found == items.end() ? nullptr : &*found;
}

}  // namespace

std::string wordOf(Suite suite) { return suiteWords()[suite == Suite::gcmAesXpn128 ? 0 : 1]; }

std::optional<Suite> suiteOf(std::string_view word) {
  for (Suite suite : {Suite::gcmAesXpn128, Suite::gcmAesXpn256}) {
    if (wordOf(suite) == word) return suite;
  }
  return std::nullopt;
}

std::vector<std::string> const& suiteWords() {
  static std::vector<std::string> const words{"gcm-aes-xpn-128", "gcm-aes-xpn-256"};
  return words;
}

ProfileConfig const* SwitchConfig::profile(std::string_view name) const {
  return named(profiles, name);
}

InterfaceConfig const* SwitchConfig::interface(std::string_view name) const {
  return named(interfaces, name);
}

}  // namespace Macsecd
