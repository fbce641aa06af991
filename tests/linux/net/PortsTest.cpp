#include "linux/net/Ports.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/linux/net/LinkText.h"

namespace Linux {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct Followed final : PortObserver {
  Followed() { ports.namesIs({"eth0", "wan"}); }
  void portIs(Lumo::IntfId intfId, int index, Lumo::EthAddr const& addr) override {
    say(intfId, "is " + std::to_string(index) + " " + std::to_string(addr.bytes()[5]));
  }
  void portLinkIs(Lumo::IntfId intfId, bool up) override { say(intfId, up ? "up" : "down"); }
  void portSetUpIs(Lumo::IntfId, bool setUp) override { isSetUp = setUp; }
  void portMtuIs(Lumo::IntfId intfId, uint32_t mtu) override {
    say(intfId, "mtu " + std::to_string(mtu));
  }
  void portDel(Lumo::IntfId intfId) override { say(intfId, "del"); }
  void say(Lumo::IntfId intfId, std::string const& what) {
    said.push_back(std::string(intfId.stringValue().view()) + " " + what);
  }
  std::vector<std::string> take() { return std::exchange(said, {}); }

  std::vector<std::string> said;
  bool isSetUp = false;
  LinkTable table{[this](LinkChange const& change) { ports.changed(change); }};
  Ports ports{table, *this};
};

TEST(Ports, AreTheInterfacesThatTheConfigurationNamesAlone) {
  Followed f;
  f.table.linkIs(link(3, "eth0", 1, true));
  f.table.linkIs(link(4, "eth1", 2, true));
  f.table.linkIs(link(4, "eth1", 3, false));
  f.table.linkDel(4);
  EXPECT_THAT(f.take(), ElementsAre("eth0 is 3 1", "eth0 up"));
}

TEST(Ports, FollowTheirLinks) {
  Followed f;
  f.table.linkIs(link(3, "eth0", 1, false));
  f.table.linkIs(link(3, "eth0", 1, true));
  f.table.linkIs(link(3, "eth0", 1, false));
  f.table.linkDel(3);
  EXPECT_THAT(f.take(), ElementsAre("eth0 is 3 1", "eth0 up", "eth0 down", "eth0 del"));
}

TEST(Ports, TellWhetherTheyAreSetUpWhateverTheirLink) {
  Followed f;
  Link eth0 = link(3, "eth0", 1, false);
  eth0.isSetUp = true;
  f.table.linkIs(eth0);
  EXPECT_TRUE(f.isSetUp);
  eth0.isSetUp = false;
  f.table.linkIs(eth0);
  EXPECT_FALSE(f.isSetUp);
  EXPECT_THAT(f.take(), ElementsAre("eth0 is 3 1"));
}

TEST(Ports, TellTheirMtuWhenTheyComeAndWhenItChanges) {
  Followed f;
  f.table.linkIs(linkOfMtu(3, "eth0", 1500));
  f.table.linkIs(linkOfMtu(3, "eth0", 1500));
  f.table.linkIs(link(3, "eth0", 1, false));  // a message that tells none
  f.table.linkIs(linkOfMtu(3, "eth0", 9000));
  EXPECT_THAT(f.take(), ElementsAre("eth0 is 3 1", "eth0 mtu 1500", "eth0 mtu 9000"));
}

TEST(Ports, GoWithANameAndComeWithOne) {
  Followed f;
  f.table.linkIs(link(3, "eth0", 1, true));
  f.take();
  f.table.linkIs(link(3, "other", 1, true));
  EXPECT_THAT(f.take(), ElementsAre("eth0 down", "eth0 del"));
  f.table.linkIs(link(3, "wan", 1, true));
  EXPECT_THAT(f.take(), ElementsAre("wan is 3 1", "wan up"));
  f.table.linkIs(link(3, "eth0", 1, true));
  EXPECT_THAT(f.take(), ElementsAre("wan down", "wan del", "eth0 is 3 1", "eth0 up"));
}

TEST(Ports, GoAndComeAgainWithAnotherAddress) {
  Followed f;
  f.table.linkIs(link(3, "eth0", 1, true));
  f.take();
  f.table.linkIs(link(3, "eth0", 9, true));
  EXPECT_THAT(f.take(), ElementsAre("eth0 down", "eth0 del", "eth0 is 3 9", "eth0 up"));
}

TEST(Ports, GoAndComeAgainWithAnotherIndex) {
  Followed f;
  f.table.linkIs(link(3, "eth0", 1, false));
  f.take();
  f.table.linkIs(link(8, "eth0", 1, false));
  EXPECT_THAT(f.take(), ElementsAre("eth0 del", "eth0 is 8 1"));
}

TEST(Ports, ComeAndGoWithTheConfigurationWhileTheOthersStay) {
  Followed f;
  f.table.linkIs(link(3, "eth0", 1, true));
  f.table.linkIs(link(4, "eth1", 2, true));
  f.table.linkIs(link(5, "wan", 3, false));
  f.take();
  f.ports.namesIs({"eth1", "wan", "absent"});
  EXPECT_THAT(f.take(), ElementsAre("eth0 del", "eth1 is 4 2", "eth1 up"));
  f.ports.namesIs({"eth1", "wan", "absent"});
  EXPECT_THAT(f.take(), IsEmpty());
}

}  // namespace
}  // namespace Linux
