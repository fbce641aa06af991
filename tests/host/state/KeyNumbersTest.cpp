#include "host/state/KeyNumbers.h"

#include "tests/host/HostFixture.h"

namespace Macsecd {
namespace {

class ASwitchThatDiesBetweenTwoCommits : public ::testing::Test {
 protected:
  ASwitchThatDiesBetweenTwoCommits() {
    for (Switch* one : {&a, &b}) one->bringUp();
    talk(a, b, 20);
  }
  static Macsec::MemberIdentifier memberOf(Switch const& one) {
    return *Macsec::MemberIdentifier::parsed(one.actor()->msgId().view());
  }
  /// The history of `a` knows a key that its tree doesn't.
  void spendAndRestart(Macsec::MemberIdentifier const& server, uint32_t number) {
    a.host.keyIsSpent(kIntf, {server, number});
    a.host.restart();
  }
  Switch a{1}, b{2};  // a is the key server
};

TEST_F(ASwitchThatDiesBetweenTwoCommits, NumbersItsNextKeyBehindAllThatItsHistoryKnows) {
  ASSERT_EQ(a.actor()->keyNum(), 1u);
  spendAndRestart(memberOf(a), 7);
  EXPECT_EQ(a.actor()->keyNum(), 7u);
}

TEST_F(ASwitchThatDiesBetweenTwoCommits, GoesOnFromItsTreeWhereThatKnowsMore) {
  {
    Vesk::WorldScope const scope(a.world);
    a.actor()->keyNumIs(9);
  }
  spendAndRestart(memberOf(a), 7);
  EXPECT_EQ(a.actor()->keyNum(), 9u);
}

TEST_F(ASwitchThatDiesBetweenTwoCommits, LeavesTheNumbersOfItsPeerToItsPeer) {
  spendAndRestart(memberOf(b), 7);
  EXPECT_EQ(a.actor()->keyNum(), 1u);
}

}  // namespace
}  // namespace Macsecd
