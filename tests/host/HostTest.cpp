#include "host/Host.h"

#include "model/Factories.h"
#include "platform/WardcodeLib.h"
#include "runtime/EntityCopy.h"
#include "tests/host/HostFixture.h"

namespace Macsecd {
namespace {

using ::testing::ElementsAre;

class Hosts : public ::testing::Test {};

TEST_F(Hosts, AnInterfaceIsMadeWithItsLinkNotUp) {
  Switch s(1);
  s.interface();
  EXPECT_NE(s.host.ethIntfStatusDir()->intfStatus(kIntf)->linkStatus(), Interface::linkUp);
  s.host.configIs(configWith(kCak));
  s.host.start();
  EXPECT_FALSE(s.actor());
  s.host.linkIs(kIntf, true);
  EXPECT_TRUE(s.actor());
  s.host.linkIs(kIntf, false);
  EXPECT_FALSE(s.actor());
}

TEST_F(Hosts, AnInterfaceThatComesWhileTheSwitchRunsIsPickedUpWhenItsLinkRises) {
  Switch s(1);
  s.host.configIs(configWith(kCak));
  s.host.start();
  s.interface();
  s.host.linkIs(kIntf, true);
  EXPECT_TRUE(s.actor());
}

TEST_F(Hosts, TheHardwareIsThereBeforeTheEngineAsksForIt) {
  Switch s(1);
  s.interface();
  s.host.linkIs(kIntf, true);
  s.host.configIs(configWith(kCak));
  EXPECT_FALSE(s.host.hwStatus()->status(kIntf));
  s.host.start();
  EXPECT_TRUE(s.host.hwStatus()->status(kIntf));
  EXPECT_TRUE(s.actor());
}

TEST_F(Hosts, TheEngineIsEnabledBeforeProfilesAreRead) {
  Switch s(1);
  Vesk::WorldScope const scope(s.world);
  struct Order final : Vesk::Reactor<Macsec::Status const, Switch, Order> {
    using Reactor::Reactor;
    void onMacsecEnabled() override { order.push_back("macsecEnabled"); }
    void onIntfStatus(Lumo::IntfId const&) override { order.push_back("intfStatus"); }
    void onCpStatus(Lumo::IntfId const&) override { order.push_back("cpStatus"); }
    std::vector<std::string> order;
  };
  auto order = Vesk::make<Order>(s, s.host.status());
  s.interface();
  s.host.linkIs(kIntf, true);
  s.host.configIs(configWith(kCak));
  s.host.status()->fipsStatusIs(Macsec::FipsStatus(true, true));
  s.host.start();
  EXPECT_THAT(order->order, ElementsAre("macsecEnabled", "intfStatus", "cpStatus"));
  EXPECT_EQ(s.host.status()->fipsStatus(), Macsec::FipsStatus(false, true));
  Vesk::retire(order);
}

TEST_F(Hosts, ShutdownIsTheNegationOfEnabled) {
  Switch s(1);
  s.bringUp();
  SwitchConfig config = configWith(kCak);
  config.shutdown = true;
  s.host.configIs(config);
  EXPECT_FALSE(s.host.status()->macsecEnabled());
  EXPECT_FALSE(s.actor());
  s.host.configIs(configWith(kCak));
  EXPECT_TRUE(s.actor());
}

TEST_F(Hosts, AStoppedSwitchHasAnEmptyTree) {
  Switch s(1);
  s.bringUp();
  s.host.stop();
  EXPECT_FALSE(s.host.running());
  EXPECT_EQ(s.host.codec(), nullptr);
  EXPECT_TRUE(s.host.status()->portStatus().empty());
  EXPECT_TRUE(s.host.status()->cpStatus().empty());
  s.host.start();
  EXPECT_TRUE(s.actor());
}

TEST_F(Hosts, AnUnchangedKeyWritesNothingAlsoInAnotherLetterCase) {
  Switch s(1);
  s.bringUp();
  auto const profile = s.host.config()->profile("one");
  Macsec::Cak const before = profile->key();
  s.host.configIs(configWith("0123456789ABCDEF0123456789abcdef"));
  EXPECT_EQ(profile->key(), before);
  s.host.configIs(configWith("fedcba9876543210fedcba9876543210"));
  EXPECT_NE(profile->key(), before);
}

TEST_F(Hosts, AProfileThatIsGoneIsDeletedAfterItsInterfacesHaveMoved) {
  Switch s(1);
  s.bringUp();
  struct Order final : Vesk::Reactor<Macsec::Config const, Switch, Order> {
    using Reactor::Reactor;
    void onProfile(Vesk::Name const& name) override {
      bool const isThere = static_cast<bool>(notifier()->profile(name));
      order.push_back((isThere ? "+" : "-") + std::string(name.view()) + " " +
                      std::string(notifier()->intfConfig(kIntf)->profileName().view()));
    }
    std::vector<std::string> order;
  };
  auto order = Vesk::make<Order>(s, s.host.config());
  s.host.configIs(configWith(kCak, "two"));
  EXPECT_THAT(order->order, ElementsAre("+two one", "-one two"));
  ASSERT_TRUE(s.intfStatus());
  EXPECT_EQ(s.intfStatus()->profileName(), "two");
  EXPECT_TRUE(s.actor());
  Vesk::retire(order);
}

TEST_F(Hosts, AnInterfaceThatIsGoneFromTheConfigurationLosesItsPort) {
  Switch s(1);
  s.bringUp();
  SwitchConfig config = configWith(kCak);
  config.interfaces.clear();
  s.host.configIs(config);
  EXPECT_FALSE(s.intfStatus());
  EXPECT_FALSE(s.host.config()->intfConfig(kIntf));
  EXPECT_TRUE(s.host.config()->profile("one"));
}

TEST_F(Hosts, TwoSwitchesAgreeOnAKeyOverFrames) {
  Switch a(1), b(2);
  a.bringUp();
  b.bringUp();
  EXPECT_TRUE(a.host.forwardingModelInputDir()->forwardingModelInput(kIntf));
  talk(a, b, 20);
  ASSERT_TRUE(a.host.status()->cpStatus(kIntf)->controlledPortEnabled());
  ASSERT_TRUE(b.host.status()->cpStatus(kIntf)->controlledPortEnabled());
  auto const keyOf = [](Switch& s) {
    Vesk::WorldScope scope(s.world);
    return WardcodeLib::doDecodeKey(s.host.status()->cpStatus(kIntf)->txSak().key());
  };
  EXPECT_EQ(keyOf(a), keyOf(b));
  EXPECT_EQ(keyOf(a).length(), 32u);
  EXPECT_FALSE(a.host.forwardingModelInputDir()->forwardingModelInput(kIntf));
}

TEST_F(Hosts, ACopyOfTheTreeIsEqualInEveryLine) {
  Switch a(1), b(2);
  a.bringUp();
  b.bringUp();
  talk(a, b, 20);
  Macsec::Status const& status = *a.host.status();
  Vesk::WorldScope const scope(a.world);
  auto const copy = Macsec::statusFactory(status.name());
  Vesk::copyEntity(status, *copy);
  EXPECT_EQ(Vesk::entityToText(*copy), Vesk::entityToText(status));
}

TEST_F(Hosts, ARestartedSwitchTakesUpWhatTheFormerProcessLeft) {
  Switch a(1), b(2);
  a.bringUp();
  b.bringUp();
  talk(a, b, 20);
  Vesk::String8 const msgId = a.actor()->msgId();
  uint32_t const msgNum = a.actor()->msgNum();
  auto const former = a.host.status();
  size_t const changes = a.world.logged("MKA_STATE_CHG");
  a.host.restart();
  EXPECT_NE(a.host.status(), former);
  EXPECT_EQ(a.actor()->msgId(), msgId);
  EXPECT_EQ(a.actor()->msgNum(), msgNum);
  EXPECT_TRUE(a.actor()->principal());
  EXPECT_TRUE(a.host.status()->cpStatus(kIntf)->controlledPortEnabled());
  EXPECT_EQ(a.world.logged("MKA_STATE_CHG"), changes);
  EXPECT_FALSE(a.host.forwardingModelInputDir()->forwardingModelInput(kIntf));
  talk(a, b, 40);
  EXPECT_TRUE(a.actor()->success());
  EXPECT_TRUE(b.actor()->success());
  EXPECT_TRUE(b.host.status()->cpStatus(kIntf)->controlledPortEnabled());
}

TEST_F(Hosts, AProcessThatDiesLeavesItsTreeToTheOneThatStarts) {
  Switch a(1), b(2);
  a.bringUp();
  b.bringUp();
  talk(a, b, 20);
  Vesk::WorldScope const scope(a.world);
  Vesk::String8 const msgId = a.actor()->msgId();
  size_t const lines = a.world.logs.size();
  a.host.die();
  EXPECT_FALSE(a.host.running());
  EXPECT_EQ(a.actor()->msgId(), msgId);
  EXPECT_TRUE(a.host.status()->cpStatus(kIntf)->controlledPortEnabled());
  EXPECT_EQ(a.host.timerWheel()->nextTime(), Zorn::never);
  EXPECT_EQ(a.world.logs.size(), lines);
  a.host.die();
  EXPECT_EQ(a.actor()->msgId(), msgId) << "who is dead already leaves the same tree";
  a.host.start();
  EXPECT_TRUE(a.host.running());
  EXPECT_EQ(a.actor()->msgId(), msgId);
}

// A key that somebody has taken up before is not in the hands of the FIPS provider.
TEST_F(Hosts, TheFipsModeIsSetBeforeAnybodyTakesUpTheKeysOfTheTree) {
  Switch s(1);
  s.bringUp();
  ASSERT_TRUE(s.actor());
  size_t heardAtThatTime = 99;
  s.world.whenFipsModeIsSet = [&] { heardAtThatTime = s.actor()->notifiees(); };
  s.host.restart();
  EXPECT_EQ(heardAtThatTime, 0u);
  EXPECT_GT(s.actor()->notifiees(), 0u);
}

}  // namespace
}  // namespace Macsecd
