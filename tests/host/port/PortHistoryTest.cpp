#include "host/port/PortHistory.h"

#include "host/control/Rekey.h"
#include "tests/host/HostFixture.h"

namespace Macsecd {
namespace {

class PortHistoryTest : public ::testing::Test {
 protected:
  PortHistoryTest() {
    history.emplace(a.host);
    a.bringUp();
  }
  ~PortHistoryTest() override { history.reset(); }
  void bringUpOther() {
    b.world.time = a.world.time;
    b.bringUp();
  }
  void linkIs(bool up) { a.host.linkIs(kIntf, up); }
  PortHistory::Port const& port() const { return history->port("Ethernet1"); }

  Switch b{2}, a{1};
  std::optional<PortHistory> history;
};

TEST_F(PortHistoryTest, TellsNothingOfAPortThatHasNotBeenSecured) {
  talk(a, b, 10);
  EXPECT_EQ(port().openings, 0u);
  EXPECT_EQ(port().rekeys, 0u);
  EXPECT_EQ(port().timeToSecure, std::nullopt);
  EXPECT_EQ(history->port("Ethernet7").openings, 0u);
}

TEST_F(PortHistoryTest, MeasuresTheTimeToSecureFromTheLinkOn) {
  bringUpOther();
  talk(a, b, 30);
  ASSERT_TRUE(port().timeToSecure);
  double const first = *port().timeToSecure;
  EXPECT_GT(first, 2.0);
  EXPECT_LT(first, 20.0);
  EXPECT_EQ(port().openings, 1u);
  linkIs(false);
  talk(a, b, 60);
  linkIs(true);
  talk(a, b, 100);
  EXPECT_EQ(port().openings, 2u);
  EXPECT_LT(*port().timeToSecure, 20.0);
}

TEST_F(PortHistoryTest, CountsSaksThatTakeThePlaceOfOthers) {
  bringUpOther();
  talk(a, b, 30);
  EXPECT_EQ(port().rekeys, 0u);
  for (double until : {50.0, 70.0}) {
    EXPECT_TRUE(rekey(a.host, kIntf));
    talk(a, b, until);
  }
  EXPECT_EQ(port().rekeys, 2u);
  EXPECT_EQ(port().openings, 1u);
}

}  // namespace
}  // namespace Macsecd
