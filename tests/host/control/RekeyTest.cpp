#include "host/control/Rekey.h"

#include "host/port/PortSummary.h"
#include "tests/host/HostFixture.h"

namespace Macsecd {
namespace {

using ::testing::HasSubstr;

class RekeyTest : public ::testing::Test {
 protected:
  RekeyTest() {
    for (Switch* one : {&a, &b}) {
      one->bringUp();
    }
    talk(a, b, 30);
  }
  static std::string sakOf(Switch const& one) { return summaryOf(one.host, kIntf).sak; }
  Rekeyed rekeyed(Switch& one) { return *rekey(one.host, kIntf); }
  Fault refusal(Switch& one) { return rekey(one.host, kIntf).fault(); }
  /// Every port that sends has a receiver with the same key, and stands open.
  void talkWithoutLoss(double until) {
    for (double time = a.world.time + 0.25; time <= until; time += 0.25) {
      talk(a, b, time);
      for (auto [from, to] : {std::pair(&a, &b), std::pair(&b, &a)}) {
        auto const sends = from->host.status()->cpStatus(kIntf);
        ASSERT_TRUE(sends->controlledPortEnabled()) << time;
        auto const* const receives = to->host.status()->cpStatus(kIntf)->rxSak(sends->txSak().an());
        ASSERT_TRUE(receives) << time;
        ASSERT_EQ(receives->keyNum(), sends->txSak().keyNum()) << time;
      }
    }
  }

  Switch b{2}, a{1};
};

TEST_F(RekeyTest, GivesBothSwitchesANewSakWithoutLoss) {
  std::string const former = sakOf(a);
  ASSERT_FALSE(former.empty());
  ASSERT_EQ(sakOf(b), former);
  Rekeyed const done = rekeyed(a);
  EXPECT_NE(done.sak, former);
  EXPECT_EQ(done.seconds, 0.0);
  talkWithoutLoss(45);
  EXPECT_EQ(sakOf(a), done.sak);
  EXPECT_EQ(sakOf(b), done.sak);
}

TEST_F(RekeyTest, WaitsForTheGuardOfTheKeyBefore) {
  Rekeyed const first = rekeyed(a);
  talkWithoutLoss(34.5);
  ASSERT_EQ(sakOf(b), first.sak);
  Rekeyed const second = rekeyed(a);
  EXPECT_EQ(second.sak, "");
  EXPECT_GT(second.seconds, 0.5);
  EXPECT_LE(second.seconds, a.host.status()->mkaLifeTime() - 4.0);
  EXPECT_EQ(rekeyed(a).seconds, second.seconds);
  talkWithoutLoss(50);
  EXPECT_NE(sakOf(a), first.sak);
  EXPECT_EQ(sakOf(a), sakOf(b));
  EXPECT_EQ(a.actor()->keyNum(), b.host.status()->cpStatus(kIntf)->txSak().keyNum());
}

TEST_F(RekeyTest, IsRefusedWhileAKeyIsOnItsWay) {
  std::string const waits = rekeyed(a).sak;
  EXPECT_EQ(refusal(a).what, "key " + waits + " of Ethernet1 isn't in use at both ends yet");
}

TEST_F(RekeyTest, IsRefusedWhereAnotherSwitchIsKeyServer) {
  Fault const fault = refusal(b);
  EXPECT_EQ(fault.what, "the key server of Ethernet1 is 02:00:00:00:00:01/1, not this switch");
  EXPECT_EQ(fault.remedy, "run 'macsecctl rekey' there");
}

TEST_F(RekeyTest, IsRefusedWithoutALivePeer) {
  a.world.time += 100;
  a.host.timerWheel()->runDue();
  Fault const fault = refusal(a);
  EXPECT_THAT(fault.what, HasSubstr("Ethernet1"));
  EXPECT_EQ(fault.remedy, "see 'macsecctl explain Ethernet1'");
}

TEST_F(RekeyTest, IsRefusedWithoutAKeyInUse) {
  a.host.linkIs(kIntf, false);
  EXPECT_EQ(refusal(a).what, "no key is in use on Ethernet1");
  a.host.stop();
  EXPECT_EQ(refusal(a).what, "no key is in use on Ethernet1");
}

}  // namespace
}  // namespace Macsecd
