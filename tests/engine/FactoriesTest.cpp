#include <gtest/gtest.h>

#include "tests/support/Port.h"

// An agent may make each state machine by itself, of entities of its own.

namespace Macsec {
namespace {

class MadeAlone : public ::testing::Test {
 protected:
  MadeAlone() : one_(1) {
    one_.in([&] {
      one_.status->intfStatusIs(one_.intfId, MacsecParams())->keyIs(Support::key("6162"));
      one_.ethDir->intfStatus(one_.intfId)->linkStatusIs(Interface::linkUp);
      one_.status->macsecEnabledIs(true);
    });
  }
  template <class Machine>
  void expectParts(Machine const& machine) const {
    EXPECT_TRUE(machine.initialized());
    EXPECT_EQ(machine.status(), one_.status);
    EXPECT_EQ(machine.pamManager(), one_.pamManager);
    EXPECT_EQ(machine.hwStatus(), one_.hwStatus);
    EXPECT_EQ(machine.timerWheel(), one_.wheel);
  }
  Support::Switch one_;
};

TEST_F(MadeAlone, TheMachineOfASwitchMakesItsPorts) {
  one_.in([&] {
    auto const machine =
        mkaSmFactory(one_.status, one_.ethDir, one_.pamManager, one_.hwStatus, one_.wheel);
    expectParts(*machine);
    EXPECT_EQ(machine->ethIntfStatusDir(), one_.ethDir);
    EXPECT_EQ(machine->mkaPortSm().members(), 1);
    EXPECT_TRUE(one_.actor("6162"));
  });
  EXPECT_FALSE(one_.actor("6162")) << "who goes takes its actors along";
}

TEST_F(MadeAlone, ThePortMakesItsActors) {
  one_.in([&] {
    one_.status->cpStatusIs(one_.intfId, MacsecParams());
    one_.status->portStatusIs(one_.intfId);
    auto const port =
        mkaPortSmFactory(one_.intfId, one_.status, one_.pamManager, one_.hwStatus, one_.wheel);
    expectParts(*port);
    EXPECT_EQ(port->intfId(), one_.intfId);
    EXPECT_EQ(port->cpStatus(), one_.cpStatus());
    EXPECT_EQ(port->portStatus(), one_.portStatus());
    EXPECT_EQ(port->mkaActorSm().members(), 1);
  });
}

TEST_F(MadeAlone, TheActorSends) {
  one_.in([&] {
    Vesk::String8 const cak = one_.intfStatus()->key().cak();
    one_.status->cpStatusIs(one_.intfId, MacsecParams());
    one_.status->portStatusIs(one_.intfId)->actorStatusIs("6162");
    auto const actor = mkaActorSmFactory("6162", cak, one_.intfId, one_.status, one_.pamManager,
                                         one_.hwStatus, one_.wheel);
    expectParts(*actor);
    EXPECT_EQ(actor->ckn(), "6162");
    EXPECT_EQ(actor->cak(), cak);
    EXPECT_EQ(actor->intfId(), one_.intfId);
    EXPECT_EQ(actor->intfStatus(), one_.intfStatus());
    EXPECT_EQ(actor->cpStatus(), one_.cpStatus());
    EXPECT_EQ(actor->portStatus(), one_.portStatus());
    actor->handleMkpduTimerExpiry();
  });
  ASSERT_EQ(one_.sent.size(), 1);
  EXPECT_EQ(one_.sent[0].basic.ckn(), "6162");
}

TEST(MadeBesideAnActor, TheKeyServerMakesAKeyForAPeer) {
  Support::Port port;
  port.in([&] {
    auto const keyServer =
        mkaKeyServerSmFactory(port.intfId, "6162", port.status, port.wheel, port.wheel);
    EXPECT_TRUE(keyServer->initialized());
    EXPECT_EQ(keyServer->intfId(), port.intfId);
    EXPECT_EQ(keyServer->ckn(), "6162");
    EXPECT_EQ(keyServer->status(), port.status);
    EXPECT_EQ(keyServer->mkaPortStatus(), port.portStatus());
    EXPECT_EQ(port.actor("6162")->distSak(), Sak());
    port.actor("6162")->electedSelfIs(true);
    port.actor("6162")->livePeerIs("b1b2b3b4b5b6b7b8b9babbbc");
    keyServer->handleMkaLifetimeTimerExpiry();
    EXPECT_NE(port.actor("6162")->distSak(), Sak());
  });
}

}  // namespace
}  // namespace Macsec
