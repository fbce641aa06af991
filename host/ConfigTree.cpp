#include "host/ConfigTree.h"

#include <algorithm>
#include <cctype>

#include "config/ConfigSm.h"
#include "platform/WardcodeLib.h"

namespace Macsecd {

namespace {

using Macsec::Cak;
using Macsec::Config;
using Macsec::Profile;

Vesk::String8 lowerCase(Vesk::String8 const& digits) {
  return Vesk::String8::secretFilled(digits.length(), [&](char* text) {
    std::transform(digits.view().begin(), digits.view().end(), text,
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  });
}

Cak encoded(std::optional<KeyConfig> const& key) {
  return key ? Cak(key->ckn, WardcodeLib::doEncodeKey(lowerCase(key->cak))) : Cak();
}

void writeKeys(ProfileConfig const& from, Profile& to) {
  Cak const key = encoded(from.key);
  if (Macsec::keysDiffer(key, to.key())) to.keyIs(key);
  Cak const defaultKey = encoded(from.fallbackKey);
  if (Macsec::keysDiffer(defaultKey, to.defaultKey())) to.defaultKeyIs(defaultKey);
}

// The settings come before the keys, so that what a key creates has them from the start.
void writeProfile(ProfileConfig const& from, Profile& to) {
  to.keyServerPriorityIs(from.keyServerPriority);
  to.sessionReKeyPeriodIs(from.rekeyPeriod);
  to.cipherSuiteIs(static_cast<Macsec::CipherSuite>(from.cipherSuite));
  to.includeSciIs(from.includeSci);
  to.groupCakIs(Macsec::GroupCak(from.groupCak.enabled, from.groupCak.lifetime));
  to.dot1xEnabledIs(from.dot1x);
  writeKeys(from, to);
}

void unbind(Config& config, Lumo::IntfId intfId, Vesk::String8 const& except) {
  for (Profile& profile : config.profile()) {
    if (profile.name() != except) profile.intfDel(intfId);
  }
}

void bind(Config& config, InterfaceConfig const& from) {
  Lumo::IntfId const intfId{Vesk::String8(from.name)};
  unbind(config, intfId, from.profile);
  config.intfConfigIs(intfId)->profileNameIs(from.profile);
  config.profile(from.profile)->intfIs(intfId, true);
}

void deleteGone(SwitchConfig const& from, Config& to) {
  for (Macsec::IntfConfig& intfConfig : to.intfConfig()) {
    if (from.interface(intfConfig.intfId().stringValue().view())) continue;
    unbind(to, intfConfig.intfId(), "");
    to.intfConfigDel(intfConfig.intfId());
  }
  for (Profile& profile : to.profile()) {
    if (!from.profile(profile.name().view())) to.profileDel(profile.name());
  }
}

}  // namespace

void writeConfig(SwitchConfig const& from, Config& to) {
  to.fipsRestrictionsIs(from.fips);
  to.delayProtectionIs(from.delayProtection);
  for (ProfileConfig const& profile : from.profiles) {
    writeProfile(profile, *to.profileIs(profile.name));
  }
  for (InterfaceConfig const& interface : from.interfaces) bind(to, interface);
  deleteGone(from, to);
  to.shutdownIs(from.shutdown);
}

}  // namespace Macsecd
