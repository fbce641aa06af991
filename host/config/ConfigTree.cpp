#include "host/config/ConfigTree.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <set>
#include <string_view>

#include "config/ConfigSm.h"
#include "host/text/KeyText.h"
#include "platform/CknOctets.h"
#include "platform/WardcodeLib.h"

namespace Macsecd {

namespace {

using Macsec::Cak;
using Macsec::Config;
using Macsec::Profile;

/// Behind the name of a profile, the name of what it said before; no file has such a name.
constexpr char const* kBefore = "\x01";

/// What a profile says, with its keys encoded.
struct Content {
  uint8_t keyServerPriority = 0;
  uint32_t rekeyPeriod = 0;
  Macsec::CipherSuite cipherSuite{};
  bool includeSci = false;
  Macsec::GroupCak groupCak;
  bool dot1x = false;
  Cak key;
  Cak fallbackKey;
};

// The same key in another encoding is the same.
bool isSame(Content const& a, Content const& b) {
  return a.keyServerPriority == b.keyServerPriority && a.rekeyPeriod == b.rekeyPeriod &&
         a.cipherSuite == b.cipherSuite && a.includeSci == b.includeSci &&
         a.groupCak == b.groupCak && a.dot1x == b.dot1x && !Macsec::keysDiffer(a.key, b.key) &&
         !Macsec::keysDiffer(a.fallbackKey, b.fallbackKey);
}

Vesk::String8 lowerCase(Vesk::String8 const& digits) {
  return Vesk::String8::secretFilled(digits.length(), [&](char* text) {
    std::transform(digits.view().begin(), digits.view().end(), text,
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  });
}

/// The spelling of each key name by its octets.
using Spellings = std::map<Vesk::String8, Vesk::String8>;

// A name that stands for octets has lower-case digits.
Vesk::String8 plainSpelling(Vesk::String8 const& name) {
  return Macsec::CknOctets::standsForOctets(name.view()) ? lowerCase(name) : name;
}

Content contentOf(Profile const& profile) {
  return {profile.keyServerPriority(),
          profile.sessionReKeyPeriod(),
          profile.cipherSuite(),
          profile.includeSci(),
          profile.groupCak(),
          profile.dot1xEnabled(),
          profile.key(),
          profile.defaultKey()};
}

void write(Content const& from, Profile& to) {
  to.keyServerPriorityIs(from.keyServerPriority);
  to.sessionReKeyPeriodIs(from.rekeyPeriod);
  to.cipherSuiteIs(from.cipherSuite);
  to.includeSciIs(from.includeSci);
  to.groupCakIs(from.groupCak);
  to.dot1xEnabledIs(from.dot1x);
  if (Macsec::keysDiffer(to.key(), from.key)) to.keyIs(from.key);
  if (Macsec::keysDiffer(to.defaultKey(), from.fallbackKey)) to.defaultKeyIs(from.fallbackKey);
}

// Whether the port of an interface can go on as it is under another profile.
bool suitsAlike(Profile const& a, Profile const& b) {
  return a.cipherSuite() == b.cipherSuite() && a.includeSci() == b.includeSci();
}

// A key of the primary key's name would be that key, and be gone with it when that changes.
std::optional<KeyConfig> fallbackKeyOf(ProfileConfig const& profile) {
  auto const& key = profile.key;
  auto const& fallback = profile.fallbackKey;
  bool const isPrimary =
      key && fallback && keyNameOctets(key->ckn.view()) == keyNameOctets(fallback->ckn.view());
  return isPrimary ? std::nullopt : fallback;
}

std::set<std::string_view> profilesWithNamesAsWritten(SwitchConfig const& config) {
  std::set<std::string_view> names;
  for (InterfaceConfig const& interface : config.interfaces) {
    if (interface.dialect.nameOnWire != Codec::NameOnWire::characters) continue;
    names.insert(interface.profile);
  }
  return names;
}

template <class Item>
std::set<std::string_view> namesOf(std::vector<Item> const& items) {
  std::set<std::string_view> names;
  for (Item const& item : items) names.insert(item.name);
  return names;
}

/// An interface goes in one step from what its profile said to what its profile will say, whichever
/// of them change: nothing in between is ever in force. So the interfaces of a profile that changes
/// wait under a profile that says what it said before.
class ConfigWriter {
 public:
  ConfigWriter(SwitchConfig const& from, Config& to)
      : from_(from), to_(to), namesAsWritten_(profilesWithNamesAsWritten(from)) {
    for (Profile& profile : to.profile()) {
      for (auto const& entry : profile.intf()) bound_[entry.fwkKey()] = &profile;
      if (namesAsWritten_.contains(profile.name().view())) continue;
      for (Cak const& key : {profile.key(), profile.defaultKey()}) {
        spellings_.emplace(keyNameOctets(key.ckn().view()), plainSpelling(key.ckn()));
      }
    }
  }

  void write() {
    unbindGone();
    for (ProfileConfig const& profile : from_.profiles) profileIs(profile.name, contentOf(profile));
    for (InterfaceConfig const& interface : from_.interfaces) bind(interface);
    deleteGone();
  }

 private:
  void unbindGone() {
    auto const names = namesOf(from_.interfaces);
    for (Macsec::IntfConfig& intfConfig : to_.intfConfig()) {
      Lumo::IntfId const intfId = intfConfig.intfId();
      if (names.contains(intfId.stringValue().view())) continue;
      if (auto const bound = bound_.find(intfId); bound != bound_.end()) {
        bound->second->intfDel(intfId);
      }
      to_.intfConfigDel(intfId);
    }
  }

  Content contentOf(ProfileConfig const& profile) {
    return {profile.keyServerPriority,
            profile.rekeyPeriod,
            static_cast<Macsec::CipherSuite>(profile.cipherSuite),
            profile.includeSci,
            Macsec::GroupCak(profile.groupCak.enabled, profile.groupCak.lifetime),
            profile.dot1x,
            encoded(profile.key, profile.name),
            encoded(fallbackKeyOf(profile), profile.name)};
  }

  Cak encoded(std::optional<KeyConfig> const& key, std::string const& profile) {
    if (!key) return Cak();
    return Cak(spelling(key->ckn, profile), WardcodeLib::doEncodeKey(lowerCase(key->cak)));
  }

  // One name that is spelled in several ways is one key, and goes on as it was spelled first;
  // unless its very characters go on the wire.
  Vesk::String8 spelling(Vesk::String8 const& name, std::string const& profile) {
    if (namesAsWritten_.contains(profile)) return name;
    return spellings_.emplace(keyNameOctets(name.view()), plainSpelling(name)).first->second;
  }

  void profileIs(Vesk::Name const& name, Content const& content) {
    auto const known = to_.profile(name);
    if (known && isSame(Macsecd::contentOf(*known), content)) return;
    if (known) letWait(*known);
    Macsecd::write(content, *to_.profileIs(name));
  }

  void letWait(Profile& profile) {
    std::vector<Lumo::IntfId> waiting;
    for (auto const& entry : profile.intf()) waiting.push_back(entry.fwkKey());
    if (waiting.empty()) return;
    auto const before = to_.profileIs(profile.name() + kBefore);
    Macsecd::write(Macsecd::contentOf(profile), *before);
    for (Lumo::IntfId const intfId : waiting) move(intfId, &profile, before);
  }

  // The new profile binds the interface before the former one lets go of it, so that its port
  // stays; with other parameters the port has to be made anew.
  void move(Lumo::IntfId intfId, Vesk::Ptr<Profile> const& former, Vesk::Ptr<Profile> const& next) {
    bool const canStay = !former || suitsAlike(*former, *next);
    if (!canStay) former->intfDel(intfId);
    next->intfIs(intfId, true);
    if (former && canStay) former->intfDel(intfId);
    bound_[intfId] = next;
  }

  void bind(InterfaceConfig const& interface) {
    Lumo::IntfId const intfId{Vesk::String8(interface.name)};
    to_.intfConfigIs(intfId)->profileNameIs(interface.profile);
    auto const profile = to_.profile(interface.profile);
    auto const bound = bound_.find(intfId);
    Vesk::Ptr<Profile> const former = bound == bound_.end() ? nullptr : bound->second;
    if (former != profile) move(intfId, former, profile);
  }

  void deleteGone() {
    auto const names = namesOf(from_.profiles);
    for (Profile& profile : to_.profile()) {
      if (!names.contains(profile.name().view())) to_.profileDel(profile.name());
    }
  }

  SwitchConfig const& from_;
  Config& to_;
  std::set<std::string_view> const namesAsWritten_;
  Spellings spellings_;
  std::map<Lumo::IntfId, Vesk::Ptr<Profile>> bound_;
};

}  // namespace

void writeConfig(SwitchConfig const& from, Config& to) {
  if (from.shutdown) to.shutdownIs(true);
  to.delayProtectionIs(from.delayProtection);
  ConfigWriter(from, to).write();
  to.fipsRestrictionsIs(from.fips);
  to.shutdownIs(from.shutdown);
}

}  // namespace Macsecd
