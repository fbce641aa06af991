#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "runtime/Exceptions.h"
#include "tests/support/KeyNames.h"
#include "tests/support/Switch.h"

namespace Macsec {
namespace {

using Support::kCkn;
using Support::Switch;

Sak someSak(uint8_t an = 1) {
  Sak sak{AssociationNumber(an)};
  sak.keyMsgIdIs("a1a2a3a4a5a6a7a8a9aaabac");
  sak.keyNumIs(7);
  return sak;
}

SakContext someContext() {
  SakContext context;
  context.sakIs(someSak());
  return context;
}

class Ports : public ::testing::Test {
 protected:
  Ports() { Vesk::TraceHandle::streamLevelsIs("", Vesk::kAllTraceLevels); }
  ~Ports() override { Vesk::TraceHandle::streamLevelsIs("", 0); }

  void linkIs(uint8_t state) {
    s.in([&] { s.ethDir->intfStatus(s.intfId)->linkStatusIs(state); });
  }
  void enable() {
    s.in([&] { s.status->macsecEnabledIs(true); });
  }
  void configure(MacsecParams const& params = MacsecParams()) {
    s.in([&] { s.status->intfStatusIs(s.intfId, params)->keyIs(Support::key(kCkn)); });
  }
  bool isAbsent() const { return !s.portStatus() && !s.cpStatus() && !hasPortSm(); }
  bool isWaiting() const { return s.portStatus() && s.cpStatus() && !hasPortSm(); }
  bool isRunning() const { return s.portStatus() && s.cpStatus() && hasPortSm(); }
  bool hasPortSm() const { return s.root->mkaSm() && s.portSm(); }

  Switch s{1};
};

TEST_F(Ports, TheEngineExistsExactlyWhileMacsecIsEnabled) {
  s.startEngine();
  EXPECT_TRUE(s.root->initialized());
  EXPECT_FALSE(s.root->mkaSm());
  enable();
  auto const engine = s.root->mkaSm();
  EXPECT_TRUE(engine);
  s.in([&] { s.root->handleMacsecEnabled(); });
  EXPECT_EQ(s.root->mkaSm(), engine);
  s.in([&] { s.status->macsecEnabledIs(false); });
  EXPECT_FALSE(s.root->mkaSm());
}

TEST_F(Ports, AnEngineOrPortThatIsThereIsGivenBackWhateverItIsAskedForWith) {
  s.start(Support::key(kCkn));
  auto const engine = s.root->mkaSm();
  auto const other = statusFactory("other");
  EXPECT_EQ(s.root->mkaSmIs(other, s.ethDir, s.pamManager, s.hwStatus, s.wheel), engine);
  EXPECT_EQ(engine->mkaPortSmIs(s.intfId, other, s.pamManager, s.hwStatus, s.wheel), s.portSm());
  EXPECT_EQ(s.portSm()->status(), s.status);
}

TEST_F(Ports, AnyOrderOfLinkHardwareAndConfigurationLeadsToARunningPort) {
  enum Step { link, hardware, configuration };
  std::vector<Step> order = {link, hardware, configuration};
  do {
    Switch t{2};
    t.in([&] {
      t.slice->statusDel(t.intfId);
      t.status->macsecEnabledIs(true);
    });
    t.startEngine();
    for (Step step : order) {
      t.in([&] {
        if (step == link) t.ethDir->intfStatus(t.intfId)->linkStatusIs(Interface::linkUp);
        if (step == hardware) t.slice->statusIs(t.intfId);
        if (step == configuration) t.status->intfStatusIs(t.intfId, MacsecParams());
      });
    }
    EXPECT_TRUE(t.portSm());
    EXPECT_TRUE(t.portStatus());
    EXPECT_TRUE(t.cpStatus());
  } while (std::next_permutation(order.begin(), order.end()));
}

TEST_F(Ports, APortHasTheSciOfItsInterface) {
  linkIs(2);
  enable();
  configure();
  s.startEngine();
  EXPECT_EQ(s.portStatus()->mySci(), Sci(Lumo::EthAddr({2, 0, 0, 0, 0, 1}), 1));
}

TEST_F(Ports, ConfigurationWithoutAnEthernetInterfaceIsIgnoredWithATrace) {
  enable();
  s.startEngine();
  s.in([&] { s.status->intfStatusIs(Lumo::IntfId("Ethernet9"), MacsecParams()); });
  EXPECT_EQ(s.world.traced(": Ignoring Ethernet9 because the link is not up."), 1u);
  EXPECT_FALSE(s.status->portStatus(Lumo::IntfId("Ethernet9")));
}

TEST_F(Ports, ConfigurationWithoutHardwareIsIgnoredWithATrace) {
  s.in([&] { s.slice->statusDel(s.intfId); });
  linkIs(2);
  enable();
  configure();
  s.startEngine();
  EXPECT_TRUE(isAbsent());
  EXPECT_EQ(s.world.traced(": Ignoring Ethernet1 because the interface does not exist in hardware "
                           "status."),
            1u);
}

TEST_F(Ports, OnlyTheValueTwoMeansThatTheLinkIsUp) {
  enable();
  configure();
  s.startEngine();
  for (uint8_t state : std::initializer_list<uint8_t>{0, 1, 3, 255}) {
    linkIs(state);
    EXPECT_FALSE(hasPortSm()) << int(state);
  }
  linkIs(2);
  EXPECT_TRUE(isRunning());
}

TEST_F(Ports, LossOfTheLinkKeepsTheStatusObjectsAndEmptiesThem) {
  linkIs(2);
  enable();
  configure();
  s.startEngine();
  s.in([&] {
    s.cpStatus()->rxSakIs(someSak());
    s.cpStatus()->txSakIs(someSak());
    s.cpStatus()->latestSakContextIs(someContext());
    s.cpStatus()->oldSakContextIs(someContext());
    s.cpStatus()->controlledPortEnabledIs(true);
  });
  auto const cpStatus = s.cpStatus();
  linkIs(1);
  EXPECT_TRUE(isWaiting());
  EXPECT_EQ(s.cpStatus(), cpStatus);
  EXPECT_TRUE(s.portStatus()->actorStatus().empty());
  EXPECT_TRUE(cpStatus->rxSak().empty());
  EXPECT_EQ(cpStatus->txSak(), Sak());
  EXPECT_EQ(cpStatus->latestSakContext(), SakContext());
  EXPECT_EQ(cpStatus->oldSakContext(), SakContext());
  EXPECT_FALSE(cpStatus->controlledPortEnabled());
  linkIs(2);
  EXPECT_TRUE(isRunning());
  EXPECT_EQ(s.world.traced(": Intf Ethernet1 is back up. Creating portSm and other statuses."), 1u);
}

TEST_F(Ports, ALinkThatComesBackMakesThePortAlsoWithoutHardware) {
  linkIs(2);
  enable();
  configure();
  s.startEngine();
  linkIs(1);
  s.in([&] { s.slice->statusDel(s.intfId); });
  EXPECT_TRUE(isAbsent());
  linkIs(2);
  EXPECT_TRUE(isRunning());
}

TEST_F(Ports, LossOfHardwareRemovesThePortWithItsStatusObjects) {
  linkIs(2);
  enable();
  configure();
  s.startEngine();
  s.in([&] { s.slice->statusDel(s.intfId); });
  EXPECT_TRUE(isAbsent());
  s.in([&] { s.slice->statusIs(s.intfId); });
  EXPECT_TRUE(isRunning());
}

TEST_F(Ports, LossOfTheEthernetInterfaceRemovesThePort) {
  linkIs(2);
  enable();
  configure();
  s.startEngine();
  s.in([&] { s.ethDir->intfStatusDel(s.intfId); });
  EXPECT_TRUE(isAbsent());
}

TEST_F(Ports, ANewEthernetInterfaceRunsNoHandlerUntilItsLinkChanges) {
  enable();
  s.startEngine();
  Lumo::IntfId const other("Ethernet7");
  s.in([&] {
    s.slice->statusIs(other);
    s.status->intfStatusIs(other, MacsecParams());
  });
  s.world.traces.clear();
  s.in([&] { s.ethDir->intfStatusIs(other, Lumo::EthAddr({2, 0, 0, 0, 0, 7}), 3); });
  EXPECT_TRUE(s.world.traces.empty());
  s.in([&] { s.ethDir->intfStatus(other)->linkStatusIs(2); });
  EXPECT_TRUE(s.root->mkaSm()->mkaPortSm(other));
}

TEST_F(Ports, DeletionOfConfigurationRemovesThePortStepByStep) {
  linkIs(2);
  enable();
  configure();
  s.startEngine();
  s.world.traces.clear();
  s.in([&] { s.status->intfStatusDel(s.intfId); });
  EXPECT_TRUE(isAbsent());
  EXPECT_EQ(s.world.traced(": Cleaning up portSm for Ethernet1"), 1u);
  EXPECT_EQ(s.world.traced(": Deleting portStatus for Ethernet1"), 1u);
  EXPECT_EQ(s.world.traced(": Deleting cpStatus for Ethernet1"), 1u);
}

TEST_F(Ports, DeletionOfAnInterfaceWithoutAPortTracesTheEntryAlone) {
  enable();
  configure();
  s.startEngine();
  s.world.traces.clear();
  s.in([&] { s.status->intfStatusDel(s.intfId); });
  EXPECT_EQ(s.world.traces.size(), 2u);
  EXPECT_EQ(s.world.traced(": IntfId Ethernet1"), 2u);
  EXPECT_EQ(s.world.traced(": IntfId Ethernet1 delete: "), 1u);
}

TEST_F(Ports, SwitchingOffAndOnRebuildsThePortOverAnEmptyTree) {
  linkIs(2);
  enable();
  configure();
  s.startEngine();
  s.in([&] { s.status->macsecEnabledIs(false); });
  EXPECT_TRUE(s.status->portStatus().empty());
  EXPECT_TRUE(s.status->cpStatus().empty());
  enable();
  EXPECT_TRUE(isRunning());
}

TEST_F(Ports, TheEndOfTheEngineCleansAPortUpBeforeItsStatusGoes) {
  linkIs(2);
  enable();
  configure();
  s.startEngine();
  s.world.traces.clear();
  s.in([&] { s.status->macsecEnabledIs(false); });
  auto place = [&](std::string const& text) {
    auto const& traces = s.world.traces;
    return std::find_if(traces.begin(), traces.end(),
                        [&](auto& t) { return t.find(text) != std::string::npos; }) -
           traces.begin();
  };
  EXPECT_EQ(s.world.traced("MkaPortSm::handleCleanUp(): IntfId Ethernet1"), 1u);
  EXPECT_LT(place("MkaPortSm::handleCleanUp()"), place(": Deleting portStatus for Ethernet1"));
}

TEST_F(Ports, AWaitingPortStaysWhenTheEngineEnds) {
  linkIs(2);
  enable();
  configure();
  s.startEngine();
  linkIs(1);
  s.in([&] { s.status->macsecEnabledIs(false); });
  EXPECT_TRUE(s.portStatus());
  EXPECT_TRUE(s.cpStatus());
}

class Restart : public Ports {
 protected:
  void leaveAFormerRun() {
    s.in([&] {
      auto cpStatus = s.status->cpStatusIs(s.intfId, MacsecParams());
      cpStatus->rxSakIs(someSak());
      cpStatus->txSakIs(someSak());
      cpStatus->oldSakContextIs(someContext());
      cpStatus->latestSakContextIs(someContext());
      cpStatus->controlledPortEnabledIs(true);
      s.status->portStatusIs(s.intfId)->actorStatusIs(kCkn);
    });
  }
};

TEST_F(Restart, LeftoversOfAnInterfaceThatIsNotConfiguredGo) {
  leaveAFormerRun();
  linkIs(2);
  enable();
  s.startEngine();
  EXPECT_TRUE(isAbsent());
  EXPECT_EQ(s.world.traced(": Deleting stale cpStatus for intfId Ethernet1"), 1u);
  EXPECT_EQ(s.world.traced(": Deleting stale portStatus for intfId Ethernet1"), 1u);
}

TEST_F(Restart, LeftoversOfALinkThatIsDownAreEmptiedAndStay) {
  leaveAFormerRun();
  enable();
  configure();
  s.startEngine();
  EXPECT_TRUE(isWaiting());
  EXPECT_TRUE(s.cpStatus()->rxSak().empty());
  EXPECT_EQ(s.cpStatus()->txSak(), Sak());
  EXPECT_EQ(s.cpStatus()->oldSakContext(), SakContext());
  EXPECT_EQ(s.cpStatus()->latestSakContext(), SakContext());
  EXPECT_FALSE(s.cpStatus()->controlledPortEnabled());
  EXPECT_TRUE(s.portStatus()->actorStatus().empty());
}

TEST_F(Restart, LeftoversOfALinkThatIsUpAreTakenUpAsTheyAre) {
  leaveAFormerRun();
  linkIs(2);
  enable();
  configure();
  s.startEngine();
  EXPECT_TRUE(isRunning());
  EXPECT_TRUE(s.cpStatus()->controlledPortEnabled());
  EXPECT_EQ(s.cpStatus()->txSak(), someSak());
  EXPECT_NE(s.cpStatus()->rxSak(AssociationNumber(1)), nullptr);
}

TEST_F(Restart, ACpStatusWithOtherParametersThrowsIntoTheWriter) {
  linkIs(2);
  enable();
  s.startEngine();
  s.in([&] { s.status->cpStatusIs(s.intfId, MacsecParams(CipherSuite::gcmAesXpn256, false)); });
  EXPECT_THROW(configure(), Vesk::NameInUseException);
}

TEST_F(Ports, WithoutPortStatusOrInterfaceTheSciIsLeftAloneWithATrace) {
  enable();
  s.startEngine();
  s.in([&] { s.root->mkaSm()->updateSci(s.intfId); });
  EXPECT_EQ(s.world.traced(": No portStatus found for Ethernet1"), 1u);
  Lumo::IntfId const other("Ethernet8");
  s.in([&] {
    s.status->portStatusIs(other);
    s.root->mkaSm()->updateSci(other);
  });
  EXPECT_EQ(s.world.traced(": No ethIntfStatus found for Ethernet8"), 1u);
}

}  // namespace
}  // namespace Macsec
