#include <gtest/gtest.h>

#include "model/Factories.h"

namespace Macsec {
namespace {

Lumo::IntfId const kIntf("Ethernet1");

TEST(ConfigTree, AFreshOneHasItsSwitchesOff) {
  auto config = configFactory("config");
  EXPECT_FALSE(config->shutdown() || config->fipsRestrictions() || config->delayProtection());
  EXPECT_EQ(config->clearMkaCounters(), 0u);
  EXPECT_FALSE(Config::shutdownDefault || Config::fipsRestrictionsDefault ||
               Config::delayProtectionDefault);
}

TEST(ConfigTree, AFreshProfileHasItsDefaults) {
  auto profile = configFactory("config")->profileIs("one");
  EXPECT_EQ(profile->name(), "one");
  EXPECT_EQ(profile->keyServerPriority(), 16);
  EXPECT_EQ(profile->sessionReKeyPeriod(), 0u);
  EXPECT_EQ(profile->cipherSuite(), CipherSuite::gcmAesXpn128);
  EXPECT_EQ(static_cast<int>(Profile::cipherSuiteDefault), 128);
  EXPECT_FALSE(profile->dot1xEnabled() || profile->includeSci());
  EXPECT_EQ(profile->groupCak(), GroupCak(false, 1000));
  EXPECT_EQ(profile->key(), Cak());
  EXPECT_EQ(profile->defaultKey(), Cak());
  EXPECT_TRUE(profile->intf().empty());
}

TEST(ConfigTree, AnInterfaceIsNamedAfterItself) {
  auto config = configFactory("config");
  auto intf = config->intfConfigIs(kIntf);
  EXPECT_EQ(intf->name(), "Ethernet1");
  EXPECT_EQ(intf->intfId(), kIntf);
  EXPECT_EQ(intf->profileName(), "");
  EXPECT_EQ(config->intfConfigIs(kIntf), intf);
}

TEST(ConfigTree, TheRequestCounterWrapsAndZeroIsSilent) {
  struct Writes final : Vesk::Reactor<Config const, int, Writes> {
    using Reactor::Reactor;
    void onClearMkaCounters() override { ++owner(); }
  };
  auto config = configFactory("config");
  int told = 0;
  auto writes = Vesk::make<Writes>(told, config);
  config->clearMkaCountersIs(0xFFFFFFFF);
  EXPECT_EQ(config->clearMkaCountersInc(2), 1u);
  EXPECT_EQ(config->clearMkaCountersInc(0), 1u);
  EXPECT_EQ(told, 2);
  Vesk::retire(writes);
}

TEST(ConfigTree, ABindingTellsItsInterfaceWhenItChanges) {
  struct Writes final : Vesk::Reactor<Profile const, std::string, Writes> {
    using Reactor::Reactor;
    void onIntf(Lumo::IntfId const& intf) override {
      owner() += std::string(intf.stringValue().view()) + " ";
    }
  };
  auto profile = configFactory("config")->profileIs("one");
  std::string told;
  auto writes = Vesk::make<Writes>(told, profile);
  profile->intfIs(kIntf, true);
  profile->intfIs(kIntf, true);
  profile->intfIs(Lumo::IntfId("Ethernet2"), false);
  profile->intfIs(kIntf, false);
  profile->intfDel(kIntf);
  profile->intfDel(kIntf);
  EXPECT_EQ(told, "Ethernet1 Ethernet2 Ethernet1 Ethernet1 ");
  Vesk::retire(writes);
}

}  // namespace
}  // namespace Macsec
