#pragma once

#include <random>
#include <string>
#include <vector>

#include "host/config/ConfigFile.h"

namespace Macsecd::Test {

/// Configurations by chance, from few names and keys, so that two of them often meet.
class ConfigChance {
 public:
  explicit ConfigChance(uint64_t seed) : random_(seed) {}

  bool chance(int percent) { return below(100) < percent; }
  int below(int count) { return std::uniform_int_distribution<int>(0, count - 1)(random_); }

  SwitchConfig config() {
    SwitchConfig config;
    for (char const* const name : {"p", "q", "r"}) {
      if (config.profiles.empty() || chance(70)) config.profiles.push_back(profile(name));
    }
    for (char const* const name : {"e0", "e1"}) {
      if (chance(90)) config.interfaces.push_back(interface(name, config));
    }
    settings(config);
    return config;
  }

  /// The same with some changes, as an operator makes them.
  SwitchConfig changed(SwitchConfig config) {
    for (int changes = 1 + below(3); changes > 0; --changes) change(config);
    return config;
  }

 private:
  template <class Item>
  Item oneOf(std::vector<Item> const& items) {
    return items[static_cast<size_t>(below(static_cast<int>(items.size())))];
  }

  void settings(SwitchConfig& config) {
    config.shutdown = chance(5);
    config.delayProtection = chance(10);
  }

  ProfileConfig profile(std::string const& name) {
    ProfileConfig profile;
    profile.name = name;
    profile.keyServerPriority = oneOf<uint8_t>({0, 16, 16, 200, 255});
    profile.rekeyPeriod = oneOf<uint32_t>({0, 0, 30});
    profile.cipherSuite = chance(20) ? Suite::gcmAesXpn256 : Suite::gcmAesXpn128;
    profile.includeSci = chance(20);
    profile.groupCak.enabled = chance(10);
    profile.dot1x = chance(20);
    keys(profile);
    return profile;
  }

  void keys(ProfileConfig& profile) {
    int const primary = below(4);
    profile.key = chance(85) ? std::optional(key(primary, profile.cipherSuite)) : std::nullopt;
    profile.fallbackKey.reset();
    if (chance(50)) profile.fallbackKey = key((primary + 1 + below(3)) % 4, profile.cipherSuite);
  }

  /// One of four keys, its name in one of its spellings, sometimes with another CAK.
  KeyConfig key(int number, Suite suite) {
    static std::vector<std::string> const names[] = {
        {"c0de", "C0DE", "c0De"}, {"xyz", "78797a", "78797A"}, {"a1"}, {"zz", "7a7a"}};
    std::string cak;
    for (unsigned i = 0; i < static_cast<unsigned>(suite) / 8; ++i) {
      cak += chance(50) ? "a" : "A";
      cak += static_cast<char>('0' + number + (secondCaks_ ? 4 : 0));
    }
    secondCaks_ = chance(10);
    return {Vesk::String8(oneOf(names[number])), Vesk::String8::secret(cak)};
  }

  InterfaceConfig interface(std::string const& name, SwitchConfig const& config) {
    InterfaceConfig interface;
    interface.name = name;
    interface.profile = oneOf(config.profiles).name;
    if (chance(10)) interface.portNumber = 2;
    if (chance(10)) interface.dialect.nameOnWire = Codec::NameOnWire::characters;
    if (chance(20)) interface.onPeerLoss = OnPeerLoss::close;
    return interface;
  }

  void change(SwitchConfig& config) {
    auto& profile =
        config.profiles[static_cast<size_t>(below(static_cast<int>(config.profiles.size())))];
    switch (below(8)) {
      case 0:
        profile = this->profile(profile.name);
        break;
      case 1:
        keys(profile);
        break;
      case 2:
        profile.dot1x = !profile.dot1x;
        break;
      case 3:
        std::swap(profile.key, profile.fallbackKey);
        break;
      case 4:
        profile.keyServerPriority = oneOf<uint8_t>({0, 16, 255});
        break;
      case 5:
        settings(config);
        break;
      default:
        if (config.interfaces.empty()) return;
        auto& moved =
            config
                .interfaces[static_cast<size_t>(below(static_cast<int>(config.interfaces.size())))];
        moved = interface(moved.name, config);
    }
  }

  std::mt19937_64 random_;  // tidy: allow(randomness) the test's own, the same in every run
  bool secondCaks_ = false;
};

}  // namespace Macsecd::Test
