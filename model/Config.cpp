#include "model/Config.h"

namespace Macsec {

Vesk::Ptr<Profile> Config::profileIs(Vesk::Name const& key) {
  return memberIs<kProfile>(profile_, key, [&] { return newProfile(key); });
}

Vesk::Ptr<Profile> Config::newProfile(Vesk::Name const& key) { return Vesk::make<Profile>(key); }

Vesk::Ptr<Profile> Config::profileDel(Vesk::Name const& key) {
  return memberDel<kProfile>(profile_, key);
}

void Config::profileDelAll() { memberDelAll<kProfile>(profile_); }

void Config::profileNotify(Vesk::Name const& key) { tellKey<kProfile>(key); }

Vesk::Ptr<IntfConfig> Config::intfConfigIs(Lumo::IntfId key) {
  return memberIs<kIntfConfig>(intfConfig_, key, [&] { return newIntfConfig(key); });
}

Vesk::Ptr<IntfConfig> Config::newIntfConfig(Lumo::IntfId key) {
  return Vesk::make<IntfConfig>(Vesk::String8(key.stringValue()), key);
}

Vesk::Ptr<IntfConfig> Config::intfConfigDel(Lumo::IntfId key) {
  return memberDel<kIntfConfig>(intfConfig_, key);
}

void Config::intfConfigDelAll() { memberDelAll<kIntfConfig>(intfConfig_); }

void Config::intfConfigNotify(Lumo::IntfId key) { tellKey<kIntfConfig>(key); }

}  // namespace Macsec
