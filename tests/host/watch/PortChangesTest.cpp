#include "host/watch/PortChanges.h"

#include <gtest/gtest.h>

#include "model/Factories.h"
#include "tests/support/PortMadeAnew.h"
#include "tests/support/TestWorld.h"

namespace Macsecd {
namespace {

class PortChangesTest : public ::testing::Test, public PortListener {
 protected:
  /// Follows the tree from now on.
  void begin() {
    changes = Vesk::make<PortChanges>(status);
    changes->listenerIs(*this);
  }
  void portChanged(Lumo::IntfId intfId) override { told += intfId == kIntf; }
  void portStepped(Lumo::IntfId intfId) override { steps += intfId == kIntf; }

  Lumo::IntfId const kIntf{"Ethernet1"};
  Support::TestWorld world;
  Vesk::WorldScope scope{world};
  Vesk::Ptr<Macsec::Status> status = Macsec::statusFactory("status");
  Vesk::Ptr<PortChanges> changes;
  int told = 0;
  int steps = 0;
};

TEST_F(PortChangesTest, TellOfAnActorThatWasThereBefore) {
  auto const actor = status->portStatusIs(kIntf)->actorStatusIs("aa");
  begin();
  actor->principalIs(true);
  EXPECT_EQ(told, 1);
}

TEST_F(PortChangesTest, TellNothingOfAnActorWhosePortHasGone) {
  auto const actor = status->portStatusIs(kIntf)->actorStatusIs("aa");
  begin();
  status->portStatusDel(kIntf);
  told = 0;
  actor->principalIs(true);
  EXPECT_EQ(told, 0);
}

TEST_F(PortChangesTest, TellOfTheActorsOfAPortThatAnotherOneHasTakenThePlaceOf) {
  Support::PortMadeAnew const agent(status, "bb");
  auto const former = status->portStatusIs(kIntf)->actorStatusIs("aa");
  begin();
  status->portStatusDel(kIntf);
  told = 0;
  status->portStatus(kIntf)->actorStatus("bb")->principalIs(true);
  EXPECT_EQ(told, 1);
  former->principalIs(true);
  EXPECT_EQ(told, 1);
}

TEST_F(PortChangesTest, TellOfStagesApart) {
  auto const actor = status->portStatusIs(kIntf)->actorStatusIs("aa");
  auto const cp = status->cpStatusIs(kIntf, Macsec::MacsecParams());
  begin();
  actor->newSakIs(true);
  Macsec::SakContext context;
  context.rxEnabledIs(true);
  cp->latestSakContextIs(context);
  EXPECT_EQ(told, 0);
  EXPECT_EQ(steps, 2);
  cp->controlledPortEnabledIs(true);
  EXPECT_EQ(told, 1);
  EXPECT_EQ(steps, 2);
}

TEST_F(PortChangesTest, TellNobodyWhoHasLeft) {
  begin();
  changes->listenerDel(*this);
  status->cpStatusIs(kIntf, Macsec::MacsecParams())->controlledPortEnabledIs(true);
  EXPECT_EQ(told, 0);
}

TEST_F(PortChangesTest, NameThePortsThatAreThere) {
  status->cpStatusIs(kIntf, Macsec::MacsecParams());
  status->portStatusIs(Lumo::IntfId("Ethernet2"));
  begin();
  EXPECT_EQ(changes->ports(), std::vector{kIntf});
}

}  // namespace
}  // namespace Macsecd
