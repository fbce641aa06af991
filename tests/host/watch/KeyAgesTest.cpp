#include "host/watch/KeyAges.h"

#include "platform/WardcodeLib.h"
#include "tests/host/HostFixture.h"

namespace Macsecd {
namespace {

class KeyAgesOfAPort : public ::testing::Test {
 protected:
  KeyAgesOfAPort() {
    for (Switch* one : {&a, &b}) {
      one->bringUp();
    }
    talk(a, b, 20);
  }
  Macsec::Sak sak() const { return a.host.status()->cpStatus(kIntf)->txSak(); }
  void waitForAnotherKey() {
    auto const former = sak();
    for (double time = a.world.time; sak() == former && time < 200; time += 0.25) {
      talk(a, b, time);
    }
  }
  Switch b{2}, a{1};
};

TEST_F(KeyAgesOfAPort, CountFromTheMomentInWhichTheKeyIsUsed) {
  auto const age = a.host.keyAge(kIntf);
  ASSERT_TRUE(age);
  EXPECT_FALSE(age->isLeast);
  EXPECT_GT(age->seconds, 10);
  EXPECT_LT(age->seconds, 20);
  a.world.time += 5;
  EXPECT_DOUBLE_EQ(a.host.keyAge(kIntf)->seconds, age->seconds + 5);
}

TEST_F(KeyAgesOfAPort, StartOverWithAnotherKey) {
  for (Switch* one : {&a, &b}) {
    Vesk::WorldScope const scope(one->world);
    one->host.config()->profile("one")->sessionReKeyPeriodIs(30);
  }
  waitForAnotherKey();
  EXPECT_LE(a.host.keyAge(kIntf)->seconds, 0.25);
}

TEST_F(KeyAgesOfAPort, GoOnWhenTheSameKeyIsEncodedAnew) {
  Vesk::WorldScope const scope(a.world);
  double const before = a.host.keyAge(kIntf)->seconds;
  Macsec::Sak again = sak();
  again.keyIs(WardcodeLib::doEncodeKey(WardcodeLib::doDecodeKey(again.key())));
  ASSERT_NE(again, sak());
  a.world.time += 5;
  a.host.status()->cpStatus(kIntf)->txSakIs(again);
  EXPECT_DOUBLE_EQ(a.host.keyAge(kIntf)->seconds, before + 5);
}

TEST_F(KeyAgesOfAPort, AreLowerBoundsForWhatAFormerProcessLeft) {
  a.host.restart();
  auto const age = a.host.keyAge(kIntf);
  ASSERT_TRUE(age);
  EXPECT_TRUE(age->isLeast);
  EXPECT_DOUBLE_EQ(age->seconds, 0);
}

TEST_F(KeyAgesOfAPort, AreNoneWithoutAPort) {
  a.host.interfaceDel(kIntf);
  EXPECT_FALSE(a.host.keyAge(kIntf));
  a.host.stop();
  EXPECT_FALSE(a.host.keyAge(kIntf));
}

}  // namespace
}  // namespace Macsecd
