#include "linux/net/LinkTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/linux/net/LinkText.h"

namespace Linux {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct Told {
  std::vector<std::string> take() { return std::exchange(texts, {}); }
  std::vector<std::string> texts;
  LinkTable table{[this](LinkChange const& change) {
    texts.push_back(textOf(change));
    // Whoever is told finds the table as it is told, and each name there once.
    bool const isThere = change.what != LinkChange::What::gone;
    EXPECT_EQ(table.links().contains(change.link.index), isThere);
    std::set<std::string> names;
    for (auto const& [index, link] : table.links()) EXPECT_TRUE(names.insert(link.name).second);
  }};
};

TEST(LinkTable, TellsThatANewInterfaceCameDownAndIsUpAfterThat) {
  Told told;
  told.table.linkIs(link(3, "eth0", 1, true));
  EXPECT_THAT(told.take(), ElementsAre("eth0(3) came", "eth0(3) up"));
  told.table.linkIs(link(4, "eth1", 2, false));
  EXPECT_THAT(told.take(), ElementsAre("eth1(4) came"));
}

TEST(LinkTable, TellsNothingTwice) {
  Told told;
  told.table.linkIs(link(3, "eth0", 1, true));
  told.take();
  told.table.linkIs(link(3, "eth0", 1, true));
  told.table.linkDel(9);
  EXPECT_THAT(told.take(), IsEmpty());
}

TEST(LinkTable, TellsUpAndDown) {
  Told told;
  told.table.linkIs(link(3, "eth0", 1, false));
  told.take();
  told.table.linkIs(link(3, "eth0", 1, true));
  told.table.linkIs(link(3, "eth0", 1, false));
  EXPECT_THAT(told.take(), ElementsAre("eth0(3) up", "eth0(3) down"));
}

TEST(LinkTable, TellsOfADeviceThatSomebodySetsDownOrThatIsDormant) {
  Told told;
  Link device = link(3, "eth0", 1, false);
  device.isSetUp = true;
  told.table.linkIs(device);
  told.take();
  device.isDormant = true;
  told.table.linkIs(device);
  EXPECT_THAT(told.take(), ElementsAre("eth0(3) state"));
  device.isSetUp = device.isDormant = false;
  told.table.linkIs(device);
  EXPECT_THAT(told.take(), ElementsAre("eth0(3) state"));
  told.table.linkIs(device);
  EXPECT_THAT(told.take(), IsEmpty());
}

TEST(LinkTable, TellsThatAnInterfaceIsDownBeforeItHasGone) {
  Told told;
  told.table.linkIs(link(3, "eth0", 1, true));
  told.table.linkIs(link(4, "eth1", 1, false));
  told.take();
  told.table.linkDel(3);
  told.table.linkDel(4);
  EXPECT_THAT(told.take(), ElementsAre("eth0(3) down", "eth0(3) gone", "eth1(4) gone"));
  EXPECT_THAT(told.table.links(), IsEmpty());
}

TEST(LinkTable, TellsANewNameWhileTheInterfaceIsDown) {
  Told told;
  told.table.linkIs(link(3, "eth0", 1, true));
  told.take();
  told.table.linkIs(link(3, "wan", 1, true));
  EXPECT_THAT(told.take(), ElementsAre("eth0(3) down", "wan(3) renamed from eth0", "wan(3) up"));
}

TEST(LinkTable, TellsANewAddressWhileTheInterfaceIsDown) {
  Told told;
  told.table.linkIs(link(3, "eth0", 1, true));
  told.take();
  told.table.linkIs(link(3, "eth0", 2, true));
  EXPECT_THAT(told.take(), ElementsAre("eth0(3) down", "eth0(3) address", "eth0(3) up"));
  told.table.linkIs(link(3, "wan", 3, false));
  EXPECT_THAT(told.take(),
              ElementsAre("eth0(3) down", "wan(3) renamed from eth0", "wan(3) address"));
}

TEST(LinkTable, TakesAnotherIndexUnderTheSameNameForAnotherInterface) {
  Told told;
  told.table.linkIs(link(3, "eth0", 1, true));
  told.take();
  told.table.linkIs(link(7, "eth0", 1, true));
  EXPECT_THAT(told.take(),
              ElementsAre("eth0(3) down", "eth0(3) gone", "eth0(7) came", "eth0(7) up"));
}

TEST(LinkTable, KeepsNamesApartWhenTwoInterfacesSwapThem) {
  Told told;
  told.table.linkIs(link(3, "eth0", 1, false));
  told.table.linkIs(link(4, "eth1", 2, false));
  told.take();
  told.table.linkIs(link(3, "eth1", 1, false));
  told.table.linkIs(link(4, "eth0", 2, false));
  EXPECT_THAT(told.take(),
              ElementsAre("eth1(4) gone", "eth1(3) renamed from eth0", "eth0(4) came"));
  EXPECT_EQ(told.table.linkNamed("eth0")->index, 4);
  EXPECT_EQ(told.table.linkNamed("eth1")->index, 3);
  EXPECT_EQ(told.table.linkNamed("eth2"), nullptr);
}

TEST(LinkTable, FindsAnInterfaceByTheNameThatItHasNow) {
  Told told;
  told.table.linkIs(link(3, "eth0", 1, true));
  told.table.linkIs(link(3, "wan", 1, true));
  EXPECT_EQ(told.table.linkNamed("eth0"), nullptr);
  ASSERT_TRUE(told.table.linkNamed("wan"));
  EXPECT_EQ(told.table.linkNamed("wan")->index, 3);
  told.table.linkDel(3);
  EXPECT_EQ(told.table.linkNamed("wan"), nullptr);
}

TEST(LinkTable, FindsInAResynchronisationWhatHasGoneComeAndChangedMeanwhile) {
  Told told;
  told.table.linkIs(link(3, "eth0", 1, true));
  told.table.linkIs(link(4, "eth1", 2, true));
  told.table.linkIs(link(5, "eth2", 3, true));
  told.take();
  told.table.resyncBegins();
  told.table.linkIs(link(3, "eth0", 1, true));
  told.table.linkIs(link(5, "eth2", 3, false));
  told.table.linkIs(link(6, "eth3", 4, true));
  EXPECT_THAT(told.take(), ElementsAre("eth2(5) down", "eth3(6) came", "eth3(6) up"));
  told.table.resyncEnds();
  EXPECT_THAT(told.take(), ElementsAre("eth1(4) down", "eth1(4) gone"));
}

TEST(LinkTable, LosesNothingToAnEventWithinAResynchronisation) {
  Told told;
  told.table.linkIs(link(3, "eth0", 1, true));
  told.take();
  told.table.resyncBegins();
  told.table.linkDel(3);
  told.table.linkIs(link(3, "eth0", 1, true));
  told.table.resyncEnds();
  EXPECT_THAT(told.take(),
              ElementsAre("eth0(3) down", "eth0(3) gone", "eth0(3) came", "eth0(3) up"));
}

TEST(LinkTable, BeginsAResynchronisationAnewWhenTheFormerOneWasCutShort) {
  Told told;
  told.table.linkIs(link(3, "eth0", 1, false));
  told.table.resyncBegins();
  told.table.linkIs(link(3, "eth0", 1, false));
  told.take();
  told.table.resyncBegins();
  told.table.resyncEnds();
  EXPECT_THAT(told.take(), ElementsAre("eth0(3) gone"));
}

TEST(LinkTable, LosesNothingOutsideOfAResynchronisation) {
  Told told;
  told.table.linkIs(link(3, "eth0", 1, false));
  told.take();
  told.table.resyncEnds();
  EXPECT_THAT(told.take(), IsEmpty());
}

}  // namespace
}  // namespace Linux
