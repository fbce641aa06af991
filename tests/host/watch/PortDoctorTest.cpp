#include "host/watch/PortDoctor.h"

#include "host/explain/Explain.h"
#include "tests/host/HostFixture.h"

namespace Macsecd {
namespace {

class ThePortDoctor : public ::testing::Test {
 protected:
  ThePortDoctor() {
    for (Switch* one : {&a, &b}) {
      one->bringUp();
    }
    talk(a, b, 20);
  }
  PortDoctor::Counts const& counts() const { return *a.host.doctorCounts(); }
  bool isOpen() const {
    auto const cp = a.host.status()->cpStatus(kIntf);
    return cp && cp->controlledPortEnabled() && a.actor()->principal();
  }
  static void close(Switch& one) {
    Vesk::WorldScope const scope(one.world);
    one.host.status()->cpStatus(kIntf)->controlledPortEnabledIs(false);
  }
  static void loseThePrincipal(Switch& one) {
    Vesk::WorldScope const scope(one.world);
    one.actor()->principalIs(false);
    close(one);
  }
  void peerIsAnother() {
    Vesk::WorldScope const scope(a.world);
    a.host.status()->cpStatus(kIntf)->peerSsciIs(kOther);
    close(a);
  }
  inline static Macsec::Ssci const kOther{{Lumo::EthAddr({2, 0, 0, 0, 0, 9}), 1}, "00000001"};
  Switch b{2}, a{1};  // a is the key server
};

TEST_F(ThePortDoctor, LeavesAHealthyPortAlone) {
  talk(a, b, 120);
  EXPECT_EQ(counts().boundAnew, 0u);
  EXPECT_EQ(counts().stoodStill, 0u);
}

TEST_F(ThePortDoctor, LooksAgainAtAPortThatWasWellForLong) {
  talk(a, b, 80);
  EXPECT_EQ(counts().boundAnew, 0u);
  {
    Vesk::WorldScope const scope(a.world);
    a.host.status()->cpStatus(kIntf)->peerSsciIs(kOther);
  }
  talk(a, b, 100);
  EXPECT_EQ(counts().boundAnew, 1u);
}

TEST_F(ThePortDoctor, LooksAtThePortsThatItFindsAsItBegins) {
  loseThePrincipal(a);
  a.host.restart();
  loseThePrincipal(a);
  talk(a, b, 60);
  EXPECT_EQ(counts().boundAnew, 1u);
}

TEST_F(ThePortDoctor, BindsAPortAnewThatHasALivePeerAndNoPrincipalForTwoLifeTimes) {
  loseThePrincipal(a);
  talk(a, b, 30);
  EXPECT_EQ(counts().boundAnew, 0u);
  EXPECT_FALSE(a.actor()->principal());
  talk(a, b, 36);
  EXPECT_EQ(counts().boundAnew, 1u);
  EXPECT_EQ(a.world.logged("MACSECD_PORT_BOUND_ANEW"), 1u);
  talk(a, b, 60);
  EXPECT_TRUE(isOpen());
  EXPECT_EQ(counts().boundAnew, 1u);
}

TEST_F(ThePortDoctor, BindsAPortAnewThatReceivesFromAnotherThanItsPeer) {
  peerIsAnother();
  talk(a, b, 30);
  EXPECT_EQ(counts().boundAnew, 0u);
  talk(a, b, 36);
  EXPECT_EQ(counts().boundAnew, 1u);
  talk(a, b, 60);
  EXPECT_TRUE(isOpen());
  EXPECT_NE(a.host.status()->cpStatus(kIntf)->peerSsci().sci(), kOther.sci());
}

// The fallback key waits for the primary one, which has nothing to do with it.
TEST_F(ThePortDoctor, IsAsFastWithAFallbackKeyWhenThePeerIsAnother) {
  for (Switch* one : {&a, &b}) {
    Vesk::WorldScope const scope(one->world);
    SwitchConfig config = configWith(kCak);
    config.profiles[0].fallbackKey = KeyConfig{"7879", Vesk::String8(kCak)};
    one->host.configIs(config);
  }
  talk(a, b, 40);
  peerIsAnother();
  talk(a, b, 56);
  EXPECT_EQ(counts().boundAnew, 1u);
}

TEST_F(ThePortDoctor, NeverTouchesAPortThroughWhichTrafficPasses) {
  {
    Vesk::WorldScope const scope(a.world);
    a.actor()->principalIs(false);
  }
  talk(a, b, 200);
  EXPECT_TRUE(a.host.isOpen(kIntf));
  EXPECT_EQ(counts().boundAnew, 0u);
}

// Its own frames are lost then, though it has the key of the other end to receive with.
class APortWhosePeerWentOver : public ThePortDoctor {
 protected:
  // The peer is lost to b, and back, while a goes over to a new key, and hears b all the time.
  APortWhosePeerWentOver() {
    a.host.restart();  // it makes a new key a life time later
    while (sakOf(b).rxSak().members() < 2 && a.world.time < 40) talk(a, b, a.world.time + 0.25);
    talkOneWay(b, a, a.world.time + 9);
    talk(a, b, a.world.time + 3);
  }
  static Macsec::CpStatus& sakOf(Switch const& one) { return *one.host.status()->cpStatus(kIntf); }
  static void talkOneWay(Switch& from, Switch& to, double until) {
    for (double time = from.world.time; time <= until; time += 0.25) {
      for (Switch* one : {&from, &to}) {
        one->world.time = time;
        one->host.timerWheel()->runDue();
      }
      for (auto const& frame : from.sent.frames) to.host.receive(kIntf, frame);
      from.sent.frames.clear();
      to.sent.frames.clear();
    }
  }
  bool bothSendWithOneKey() const {
    return SakId::of(sakOf(a).txSak()) == SakId::of(sakOf(b).txSak());
  }
};

TEST_F(APortWhosePeerWentOver, IsBoundAnewThoughItIsOpen) {
  ASSERT_FALSE(bothSendWithOneKey());
  ASSERT_TRUE(b.actor() && !b.actor()->livePeer().empty() && !b.actor()->principal());
  EXPECT_TRUE(b.host.isOpen(kIntf));
  EXPECT_TRUE(explain(b.host, kIntf).has(CauseKind::peerNotReceiving));
  talk(a, b, a.world.time + 18);
  EXPECT_EQ(b.host.doctorCounts()->boundAnew, 1u);
  talk(a, b, a.world.time + 20);
  EXPECT_TRUE(bothSendWithOneKey());
  EXPECT_TRUE(b.host.isOpen(kIntf));
  EXPECT_EQ(b.host.doctorCounts()->boundAnew, 1u);
  EXPECT_EQ(counts().boundAnew, 0u);
}

// The other end may have the key as its fallback key, and wait half a minute for the primary one.
TEST_F(ThePortDoctor, IsAsPatientAsTheOtherEndMayWaitWhereThatLeads) {
  loseThePrincipal(b);
  talk(a, b, 60);
  EXPECT_EQ(b.host.doctorCounts()->boundAnew, 0u);
  talk(a, b, 66);
  EXPECT_EQ(b.host.doctorCounts()->boundAnew, 1u);
}

TEST_F(ThePortDoctor, BeginsToWaitAgainWithAnotherPeer) {
  loseThePrincipal(a);
  talk(a, b, 30);
  {
    Vesk::WorldScope const scope(b.world);
    b.host.config()->profile("one")->intfDel(kIntf);
    b.host.config()->profile("one")->intfIs(kIntf, true);
  }
  talk(a, b, 42);
  EXPECT_EQ(counts().boundAnew, 0u);
  talk(a, b, 60);
  EXPECT_EQ(counts().boundAnew, 1u);
}

// The actor of that key wouldn't come back.
TEST_F(ThePortDoctor, LeavesAPortAloneWhosePeerIsLiveUnderAFormerKey) {
  {
    Vesk::WorldScope const scope(a.world);
    SwitchConfig config = configWith(kCak);
    config.profiles[0].key = KeyConfig{"7879", Vesk::String8(kCak)};
    a.host.configIs(config);
  }
  ASSERT_TRUE(a.actor());
  loseThePrincipal(a);
  talk(a, b, 90);
  EXPECT_EQ(counts().boundAnew, 0u);
}

TEST_F(ThePortDoctor, LeavesAPortAloneThatHasNoLivePeer) {
  Vesk::WorldScope const scope(a.world);
  a.actor()->principalIs(false);
  for (double time = 20; time < 90; time += 0.25) {
    a.world.time = time;
    a.host.timerWheel()->runDue();
  }
  EXPECT_EQ(counts().boundAnew, 0u);
}

TEST_F(ThePortDoctor, HasMorePatienceEachTimeThatItDidntHelp) {
  std::vector<double> times;
  for (double time = 20; time < 130; time += 0.25) {
    if (a.actor()) loseThePrincipal(a);
    talk(a, b, time);
    if (a.actor()) loseThePrincipal(a);
    if (counts().boundAnew > times.size()) times.push_back(time);
  }
  ASSERT_EQ(times.size(), 3u);
  EXPECT_GE(times[0] - 20, 12);
  EXPECT_GE(times[1] - times[0], 24);
  EXPECT_GE(times[2] - times[1], 48);
}

TEST_F(ThePortDoctor, CountsApartThatTheProcessStoodStill) {
  a.world.time += 4.5;
  a.host.timerWheel()->runDue();
  EXPECT_EQ(counts().stoodStill, 1u);
  EXPECT_GT(counts().longest, 1.0);
  EXPECT_EQ(a.world.logged("MACSECD_STOOD_STILL"), 1u);
  talk(a, b, 60);
  EXPECT_EQ(counts().stoodStill, 1u);
}

TEST(NoPortDoctor, IsThereIfNoneIsWanted) {
  Switch a(1, {.portDoctor = false});
  a.bringUp();
  EXPECT_EQ(a.host.doctorCounts(), nullptr);
}

}  // namespace
}  // namespace Macsecd
