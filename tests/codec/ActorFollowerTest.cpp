#include "codec/ActorFollower.h"

#include <gtest/gtest.h>

#include "model/Factories.h"
#include "tests/support/PortMadeAnew.h"
#include "tests/support/TestWorld.h"

namespace Codec {
namespace {

class ActorFollowerTest : public ::testing::Test {
 protected:
  void begin() {
    follower = std::make_unique<ActorFollower>(
        status, ports, ActorFollower::PortHandlers{[](Lumo::IntfId) {}, [](Lumo::IntfId) {}});
  }
  bool hasKeysOf(char const* ckn) { return ports.memberIs(kIntf, kIntf).actor(ckn) != nullptr; }

  Lumo::IntfId const kIntf{"Ethernet1"};
  Support::TestWorld world;
  Vesk::WorldScope scope{world};
  Vesk::Ptr<Macsec::Status> status = Macsec::statusFactory("status");
  Ports ports;
  std::unique_ptr<ActorFollower> follower;
};

TEST_F(ActorFollowerTest, HasTheKeysOfAnActorForAsLongAsItIsThere) {
  begin();
  auto const port = status->portStatusIs(kIntf);
  port->actorStatusIs("aa");
  EXPECT_TRUE(hasKeysOf("aa"));
  port->actorStatusDel("aa");
  EXPECT_FALSE(hasKeysOf("aa"));
}

TEST_F(ActorFollowerTest, HasNoKeysOfAPortThatHasGoneNorWhenItHasEnded) {
  status->portStatusIs(kIntf)->actorStatusIs("aa");
  begin();
  EXPECT_TRUE(hasKeysOf("aa"));
  status->portStatusDel(kIntf);
  EXPECT_FALSE(hasKeysOf("aa"));
  status->portStatusIs(kIntf)->actorStatusIs("aa");
  follower = nullptr;
  EXPECT_FALSE(hasKeysOf("aa"));
}

TEST_F(ActorFollowerTest, HasTheKeysOfAPortThatAnotherOneHasTakenThePlaceOf) {
  Support::PortMadeAnew const agent(status, "bb");
  status->portStatusIs(kIntf)->actorStatusIs("aa");
  begin();
  status->portStatusDel(kIntf);
  EXPECT_FALSE(hasKeysOf("aa"));
  EXPECT_TRUE(hasKeysOf("bb"));
}

}  // namespace
}  // namespace Codec
