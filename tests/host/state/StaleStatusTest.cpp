#include "host/state/StaleStatus.h"

#include "model/Factories.h"
#include "tests/host/HostFixture.h"

namespace Macsecd {
namespace {

constexpr char const* kLongCak = "00112233445566778899aabbccddeeff00112233445566778899aabbccddeeff";

SwitchConfig longConfig(bool shutdown = false) {
  SwitchConfig config = configWith(kLongCak);
  config.profiles[0].cipherSuite = Suite::gcmAesXpn256;
  config.shutdown = shutdown;
  return config;
}

SwitchConfig shutConfig() {
  SwitchConfig config = configWith(kCak);
  config.shutdown = true;
  return config;
}

Macsec::MacsecParams const kLong(Macsec::CipherSuite::gcmAesXpn256, false);

/// A switch whose port waited for its link when MACsec was switched off, and whose suite has
/// changed since.
struct WaitingPort : ::testing::Test {
  WaitingPort() {
    s.bringUp();
    s.host.linkIs(kIntf, false);
    s.host.configIs(shutConfig());
    s.host.configIs(longConfig(true));
  }
  void expectNewPort() {
    auto const port = s.host.status()->cpStatus(kIntf);
    ASSERT_TRUE(port);
    EXPECT_EQ(port->macsecParams(), kLong);
    EXPECT_TRUE(s.actor());
  }
  Switch s{1};
};

TEST_F(WaitingPort, GoesWhenMacsecIsSwitchedOff) {
  EXPECT_FALSE(s.host.status()->cpStatus(kIntf));
  EXPECT_FALSE(s.host.status()->portStatus(kIntf));
  EXPECT_EQ(s.intfStatus()->macsecParams(), kLong);
}

TEST_F(WaitingPort, ComesBackWithTheNewSuiteWhenTheLinkRisesAfterMacsec) {
  s.host.configIs(longConfig());
  s.host.linkIs(kIntf, true);
  expectNewPort();
}

TEST_F(WaitingPort, ComesBackWithTheNewSuiteWhenMacsecIsOnAfterTheLink) {
  s.host.linkIs(kIntf, true);
  s.host.configIs(longConfig());
  expectNewPort();
}

TEST_F(WaitingPort, ComesBackWithTheNewSuiteOverARestart) {
  s.host.restart();
  s.host.configIs(longConfig());
  s.host.linkIs(kIntf, true);
  expectNewPort();
}

TEST_F(WaitingPort, ComesBackWithTheNewSuiteAfterARestartWithTheLinkUp) {
  s.host.linkIs(kIntf, true);
  s.host.restart();
  s.host.configIs(longConfig());
  expectNewPort();
}

TEST(StaleStatus, ARestartWithMacsecOffTakesAwayWhatAReloadTakesAway) {
  Switch s(1);
  s.bringUp();
  s.host.die();
  s.host.configIs(shutConfig());
  s.host.start();
  EXPECT_FALSE(s.host.status()->cpStatus(kIntf));
  EXPECT_FALSE(s.host.status()->portStatus(kIntf));
  EXPECT_FALSE(s.host.status()->macsecEnabled());
}

TEST(StaleStatus, ARestartUnderAnotherSciMakesThePortAnew) {
  Switch s(1);
  s.bringUp();
  auto const member = s.actor()->msgId();
  s.host.die();
  s.host.interfaceDel(kIntf);
  s.host.interfaceIs(kIntf, Lumo::EthAddr({2, 0, 0, 0, 0, 1}), 7);
  s.host.linkIs(kIntf, true);
  s.host.start();
  EXPECT_EQ(s.host.status()->portStatus(kIntf)->mySci().portNum(), 7);
  EXPECT_NE(s.actor()->msgId(), member);
}

TEST(StaleStatus, AConfiguredKeyGoesOverARestartToAFileThatTakesItFrom8021X) {
  Switch s(1);
  s.bringUp();
  ASSERT_NE(s.intfStatus()->key(), Macsec::Cak());
  SwitchConfig config = configWith(kCak);
  config.profiles[0].dot1x = true;
  s.host.die();
  s.host.configIs(config);
  s.host.start();
  EXPECT_EQ(s.intfStatus()->key(), Macsec::Cak());
  EXPECT_FALSE(s.actor());
}

// The file that a new process reads may ask for other parameters than the tree that it finds.
TEST(StaleStatus, AProcessThatFindsATreeOfFormerParametersMakesItsPortsAnew) {
  Switch s(1);
  Vesk::WorldScope const scope(s.world);
  s.bringUp();
  s.host.stop();
  auto const left = Macsec::statusFactory("left");
  left->intfStatusIs(kIntf, Macsec::MacsecParams())->profileNameIs("one");
  left->cpStatusIs(kIntf, Macsec::MacsecParams());
  left->portStatusIs(kIntf);
  s.host.configIs(longConfig());
  dropStaleInterfaces(*s.host.config(), *left);
  EXPECT_FALSE(left->intfStatus(kIntf));
  EXPECT_FALSE(left->cpStatus(kIntf));
  EXPECT_FALSE(left->portStatus(kIntf));
  left->intfStatusIs(kIntf, kLong);
  left->cpStatusIs(kIntf, kLong);
  dropStaleInterfaces(*s.host.config(), *left);
  dropStalePorts(*left);
  EXPECT_TRUE(left->intfStatus(kIntf));
  EXPECT_TRUE(left->cpStatus(kIntf));
}

}  // namespace
}  // namespace Macsecd
