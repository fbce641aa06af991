#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "config/ConfigSm.h"
#include "model/Factories.h"
#include "platform/WardcodeLib.h"
#include "tests/support/Port.h"

namespace Macsec {

/// A configuration, a status tree, and what lies between them.
class Configuration : public ::testing::Test {
 protected:
  Configuration() { Vesk::TraceHandle::streamLevelsIs("Macsec::Config", Vesk::kAllTraceLevels); }
  ~Configuration() override { Vesk::TraceHandle::streamLevelsIs("", 0); }

  void begin() { sm = configSmFactory(config, status, eapKeys, ethDir, nullptr); }
  /// A profile with a key that binds the interface in both places, as an operator does.
  Vesk::Ptr<Profile> bind(char const* name, Lumo::IntfId intf, Cak const& key) {
    auto profile = config->profileIs(name);
    config->intfConfigIs(intf)->profileNameIs(name);
    profile->keyIs(key);
    profile->intfIs(intf, true);
    return profile;
  }
  Vesk::Ptr<Profile> bind(char const* name = "one") {
    return bind(name, kIntf, Support::key("6162"));
  }
  Vesk::Ptr<IntfStatus> intfStatus() const { return status->intfStatus(kIntf); }

  Lumo::IntfId const kIntf{"Ethernet1"};
  Lumo::IntfId const kOther{"Ethernet2"};
  Support::TestWorld world;
  Vesk::WorldScope scope{world};
  Vesk::Ptr<Config> config = configFactory("config");
  Vesk::Ptr<Status> status = statusFactory("status");
  Vesk::Ptr<Dot1x::EapKeyStatus> eapKeys = Dot1x::EapKeyStatus::EapKeyStatusIs("eap");
  Vesk::Ptr<Interface::EthIntfStatusDir> ethDir =
      Interface::EthIntfStatusDir::EthIntfStatusDirIs("interfaces");
  Vesk::Ptr<ConfigSm> sm;
};

/// Takes down in which order an interface's status is written.
struct IntfWrites final : Vesk::Reactor<IntfStatus const, int, IntfWrites> {
  IntfWrites(Vesk::Ptr<IntfStatus> const& intfStatus) : Reactor(none, intfStatus) {}
  void onKey() override { order.push_back("key"); }
  void onDefaultKey() override { order.push_back("defaultKey"); }
  void onKeyServerPriority() override { order.push_back("priority"); }
  void onReKeyPeriod() override { order.push_back("rekey"); }
  void onDot1xType() override { order.push_back("dot1xType"); }
  void onGroupCakLifetime() override { order.push_back("groupCak"); }
  void onProfileName() override { order.push_back("profileName"); }
  std::vector<std::string> order;

 private:
  static inline int none = 0;
};

}  // namespace Macsec
