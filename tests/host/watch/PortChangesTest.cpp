#include "host/watch/PortChanges.h"

#include <gtest/gtest.h>

#include "model/Factories.h"
#include "tests/support/PortMadeAnew.h"
#include "tests/support/TestWorld.h"

namespace Macsecd {
namespace {

class PortChangesTest : public ::testing::Test {
 protected:
  Lumo::IntfId const kIntf{"Ethernet1"};
  Support::TestWorld world;
  Vesk::WorldScope scope{world};
  Vesk::Ptr<Macsec::Status> status = Macsec::statusFactory("status");
  int told = 0;
};

TEST_F(PortChangesTest, TellOfAnActorThatWasThereBefore) {
  auto const actor = status->portStatusIs(kIntf)->actorStatusIs("aa");
  PortChanges const changes(status, [&](Lumo::IntfId) { ++told; });
  actor->principalIs(true);
  EXPECT_EQ(told, 1);
}

TEST_F(PortChangesTest, TellNothingOfAnActorWhosePortHasGone) {
  auto const actor = status->portStatusIs(kIntf)->actorStatusIs("aa");
  PortChanges const changes(status, [&](Lumo::IntfId) { ++told; });
  status->portStatusDel(kIntf);
  told = 0;
  actor->principalIs(true);
  EXPECT_EQ(told, 0);
}

TEST_F(PortChangesTest, TellOfTheActorsOfAPortThatAnotherOneHasTakenThePlaceOf) {
  Support::PortMadeAnew const agent(status, "bb");
  auto const former = status->portStatusIs(kIntf)->actorStatusIs("aa");
  PortChanges const changes(status, [&](Lumo::IntfId) { ++told; });
  status->portStatusDel(kIntf);
  told = 0;
  status->portStatus(kIntf)->actorStatus("bb")->principalIs(true);
  EXPECT_EQ(told, 1);
  former->principalIs(true);
  EXPECT_EQ(told, 1);
}

}  // namespace
}  // namespace Macsecd
