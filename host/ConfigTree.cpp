#include "host/ConfigTree.h"

#include <algorithm>
#include <cctype>

#include "config/ConfigSm.h"
#include "host/KeyText.h"
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
  return key ? Cak(key->ckn.view(), WardcodeLib::doEncodeKey(lowerCase(key->cak))) : Cak();
}

// One name may be spelled in several ways: it is what goes on the wire that counts.
bool isSameName(Vesk::String8 const& a, Vesk::String8 const& b) {
  return keyNameOctets(a.view()) == keyNameOctets(b.view());
}

// Whether the key in the tree says what the file says, in whatever case and encoding.
bool isSameKey(Cak const& tree, Cak const& file) {
  return tree.ckn().empty() == file.ckn().empty() && isSameName(tree.ckn(), file.ckn()) &&
         !Macsec::keysDiffer(Cak(tree.ckn(), file.cak()), tree);
}

void writeKeys(ProfileConfig const& from, Profile& to) {
  Cak const key = encoded(from.key);
  if (!isSameKey(to.key(), key)) to.keyIs(key);
  Cak const defaultKey = encoded(from.fallbackKey);
  if (!isSameKey(to.defaultKey(), defaultKey)) to.defaultKeyIs(defaultKey);
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

// Whether the port of an interface can go on as it is under another profile.
bool suitsAlike(Profile const& a, Profile const& b) {
  return a.cipherSuite() == b.cipherSuite() && a.includeSci() == b.includeSci();
}

Vesk::Ptr<Profile> profileOf(Config const& config, Lumo::IntfId intfId) {
  auto const intfConfig = config.intfConfig(intfId);
  return intfConfig ? config.profile(intfConfig->profileName()) : nullptr;
}

// An interface that moves is bound by the new profile before the former one lets go of it, so that
// its port stays; with other parameters the port has to be made anew.
void bind(Config& config, InterfaceConfig const& from) {
  Lumo::IntfId const intfId{Vesk::String8(from.name)};
  auto const profile = config.profile(from.profile);
  auto const former = profileOf(config, intfId);
  if (former && !suitsAlike(*former, *profile)) unbind(config, intfId, from.profile);
  config.intfConfigIs(intfId)->profileNameIs(from.profile);
  profile->intfIs(intfId, true);
  unbind(config, intfId, from.profile);
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
  if (from.shutdown) to.shutdownIs(true);
  to.delayProtectionIs(from.delayProtection);
  for (ProfileConfig const& profile : from.profiles) {
    writeProfile(profile, *to.profileIs(profile.name));
  }
  for (InterfaceConfig const& interface : from.interfaces) bind(to, interface);
  deleteGone(from, to);
  to.fipsRestrictionsIs(from.fips);
  to.shutdownIs(from.shutdown);
}

}  // namespace Macsecd
