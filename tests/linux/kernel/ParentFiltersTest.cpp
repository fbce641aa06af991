#include "linux/kernel/ParentFilters.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/linux/kernel/FakeFilterKernel.h"
#include "tests/support/TestWorld.h"

namespace Linux::Test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class ParentFiltersTest : public ::testing::Test {
 protected:
  ParentFiltersTest() { kernel.interfaces[3] = {}; }

  void restart() {
    filters.emplace(kernel);
    kernel.asked.clear();
  }
  void runAt(double time) {
    world.time = time;
    filters->run();
  }

  Lumo::IntfId const kIntf{"eth0"};
  Support::TestWorld world;
  Vesk::WorldScope scope{world};
  FakeFilterKernel kernel;
  std::optional<ParentFilters> filters{std::in_place, kernel};
};

TEST_F(ParentFiltersTest, CloseBothSidesOfAnInterface) {
  EXPECT_TRUE(filters->interfaceIs(kIntf, 3));
  EXPECT_THAT(kernel.asked, ElementsAre("add hooks", "close in", "close out"));
  EXPECT_EQ(filters->trouble(kIntf), std::nullopt);
  EXPECT_THAT(world.logs, IsEmpty());
}

TEST_F(ParentFiltersTest, OutliveTheProcessAndAreTakenUpUntouched) {
  filters->interfaceIs(kIntf, 3);
  restart();
  EXPECT_TRUE(kernel.isClosed(3));
  EXPECT_TRUE(filters->interfaceIs(kIntf, 3));
  filters->removeOthers();
  EXPECT_THAT(kernel.asked, IsEmpty());
  EXPECT_TRUE(kernel.isClosed(3));
}

TEST_F(ParentFiltersTest, LeaveNoGapWhenAnInterfaceGoesAndComesAtOnce) {
  filters->interfaceIs(kIntf, 3);
  kernel.asked.clear();
  filters->interfaceDel(kIntf);
  EXPECT_EQ(filters->nextTime(), world.time);
  EXPECT_TRUE(filters->interfaceIs(kIntf, 3));
  filters->run();
  EXPECT_THAT(kernel.asked, IsEmpty());
}

TEST_F(ParentFiltersTest, GoWithAllThatWasMadeWhenTheInterfaceLeaves) {
  filters->interfaceIs(kIntf, 3);
  filters->interfaceDel(kIntf);
  filters->run();
  EXPECT_EQ(kernel.interfaces[3].kind, "");
  EXPECT_EQ(filters->nextTime(), std::numeric_limits<double>::infinity());
}

TEST_F(ParentFiltersTest, LeaveTheHooksOfOthersAtTheEnd) {
  kernel.interfaces[3].kind = kBothSides;
  EXPECT_TRUE(filters->interfaceIs(kIntf, 3));
  EXPECT_THAT(kernel.takeAsked(), ElementsAre("close in", "close out"));
  restart();
  filters->interfaceIs(kIntf, 3);
  filters->removeAll();
  EXPECT_THAT(kernel.asked, ElementsAre("open in", "open out"));
  EXPECT_EQ(kernel.interfaces[3].kind, kBothSides);
}

TEST_F(ParentFiltersTest, LeaveTheFiltersOfOthersAtTheEnd) {
  filters->interfaceIs(kIntf, 3);
  kernel.interfaces[3].held.hasOthers = true;
  filters->removeAll();
  EXPECT_EQ(kernel.interfaces[3].kind, kBothSides);
  EXPECT_FALSE(kernel.isClosed(3));
}

TEST_F(ParentFiltersTest, RemoveWhatAnotherProcessHasLeftAndNothingElse) {
  filters->interfaceIs(kIntf, 3);
  kernel.interfaces[4] = {kBothSides, {.hasOthers = true}};
  kernel.interfaces[5] = {"ingress"};
  restart();
  filters->removeOthers();
  EXPECT_THAT(kernel.asked, ElementsAre("remove hooks"));
  EXPECT_EQ(kernel.interfaces[3].kind, "");
  EXPECT_EQ(kernel.interfaces[4].kind, kBothSides);
}

TEST_F(ParentFiltersTest, AreSetAgainInPlaceWhenSomebodyChangesThem) {
  filters->interfaceIs(kIntf, 3);
  kernel.asked.clear();
  runAt(10);
  EXPECT_THAT(kernel.asked, IsEmpty());
  kernel.interfaces[3].held.out.isWhole = false;
  ASSERT_LE(filters->nextTime(), 12);
  runAt(12);
  EXPECT_THAT(kernel.asked, ElementsAre("close out"));
  EXPECT_EQ(world.logged("MACSEC_PARENT_CLOSED_AGAIN"), 1u);
}

TEST_F(ParentFiltersTest, LetPassInClearWhatTheyAreToldAndSayNothingWhenThatChanges) {
  filters->interfaceIs(kIntf, 3, {0x88cc});
  EXPECT_EQ(kernel.interfaces[3].clear, (Macsecd::EtherTypes{0x88cc}));
  kernel.asked.clear();
  runAt(10);
  EXPECT_THAT(kernel.asked, IsEmpty());
  filters->interfaceIs(kIntf, 3, {0x88cc, 0x8809});
  EXPECT_THAT(kernel.takeAsked(), ElementsAre("close in", "close out"));
  filters->interfaceIs(kIntf, 3);
  EXPECT_EQ(kernel.interfaces[3].clear, Macsecd::EtherTypes());
  EXPECT_THAT(world.logs, IsEmpty());
}

TEST_F(ParentFiltersTest, AreMadeAnewWhenSomebodyRemovesThem) {
  filters->interfaceIs(kIntf, 3);
  kernel.interfaces[3] = {};
  runAt(10);
  EXPECT_TRUE(kernel.isClosed(3));
  EXPECT_EQ(world.logged("MACSEC_PARENT_CLOSED_AGAIN"), 1u);
}

TEST_F(ParentFiltersTest, TellOnceWhatTheKernelRefusesAndTryAgainMoreAndMoreSeldom) {
  kernel.refused["close out"] = ENOENT;
  EXPECT_FALSE(filters->interfaceIs(kIntf, 3));
  ASSERT_EQ(world.logs.size(), 1u);
  EXPECT_EQ(
      world.logs[0].text,
      "Clear frames aren't kept from interface eth0: the kernel refuses to set the filter: No "
      "such file or directory");
  EXPECT_EQ(filters->trouble(kIntf),
            "the kernel refuses to set the filter: No such file or directory");
  for (double const delay : {1, 2, 4, 8, 16, 32, 60, 60}) {
    ASSERT_EQ(filters->nextTime(), world.time + delay);
    runAt(world.time + delay);
  }
  EXPECT_EQ(world.logs.size(), 1u);
  kernel.refused.clear();
  runAt(world.time + 60);
  EXPECT_EQ(filters->trouble(kIntf), std::nullopt);
  EXPECT_TRUE(kernel.isClosed(3));
}

TEST_F(ParentFiltersTest, DontTouchHooksOfAnotherKind) {
  kernel.interfaces[3].kind = "ingress";
  EXPECT_FALSE(filters->interfaceIs(kIntf, 3));
  EXPECT_THAT(kernel.asked, IsEmpty());
  EXPECT_THAT(*filters->trouble(kIntf), HasSubstr("replace it by one of the kind 'clsact'"));
}

TEST_F(ParentFiltersTest, NameThePreferenceThatAnotherProgramMayHave) {
  kernel.refused["close in"] = EINVAL;
  EXPECT_FALSE(filters->interfaceIs(kIntf, 3));
  EXPECT_THAT(*filters->trouble(kIntf), HasSubstr("another program's filter may have its "
                                                  "preference 3"));
}

// The kernel lists the hooks of all interfaces or of none: for each of a thousand, that is a
// million.
TEST_F(ParentFiltersTest, ListTheHooksOnceForAllInterfacesOfATurn) {
  constexpr int kInterfaces = 20;
  auto const closeAll = [this] {
    auto const turn = filters->round();
    for (int i = 0; i < kInterfaces; ++i) {
      kernel.interfaces.try_emplace(10 + i);
      filters->interfaceIs(Lumo::IntfId(Vesk::String8("eth" + std::to_string(i))), 10 + i);
    }
  };
  closeAll();
  EXPECT_EQ(kernel.listings, 1) << "that they come";
  closeAll();
  EXPECT_EQ(kernel.listings, 2) << "that the configuration is read again";
  runAt(10);
  EXPECT_EQ(kernel.listings, 3) << "the check of all";
  for (int i = 0; i < kInterfaces; ++i) EXPECT_TRUE(kernel.isClosed(10 + i));
}

TEST_F(ParentFiltersTest, AreLookedAtWhenTheKernelTellsOfAChangeAndOnceInAWhile) {
  constexpr int kInterfaces = 100;
  for (int index = 1; index <= kInterfaces; ++index) {
    kernel.interfaces[index] = {};
    filters->interfaceIs(Lumo::IntfId(Vesk::String8("eth" + std::to_string(index))), index);
  }
  runAt(0);
  kernel.looks = kernel.listings = 0;
  kernel.tellsOfChange = false;
  double const last = Limits::kFilterLook - Limits::kFilterCheck;
  for (double time = 2; time < last; time += Limits::kFilterCheck) runAt(time);
  EXPECT_EQ(kernel.looks + kernel.listings, 0);
  kernel.interfaces[7] = {};
  kernel.tellsOfChange = true;
  runAt(last);
  EXPECT_TRUE(kernel.isClosed(7));
  kernel.interfaces[8] = {};
  kernel.tellsOfChange = false;
  runAt(2 * Limits::kFilterLook);
  EXPECT_TRUE(kernel.isClosed(8)) << "though nothing was told";
}

TEST_F(ParentFiltersTest, ListTheHooksAgainWhenSomebodyHasMadeSomeInTheMiddleOfATurn) {
  kernel.interfaces[4] = {};
  auto const turn = filters->round();
  filters->interfaceIs(kIntf, 3);
  kernel.interfaces[4].kind = kBothSides;
  EXPECT_TRUE(filters->interfaceIs(Lumo::IntfId("eth1"), 4));
  EXPECT_TRUE(kernel.isClosed(4));
  kernel.interfaces[3] = {};
  EXPECT_TRUE(filters->interfaceIs(kIntf, 3)) << "that were removed";
  EXPECT_TRUE(kernel.isClosed(3));
  EXPECT_EQ(filters->trouble(kIntf), std::nullopt);
}

TEST_F(ParentFiltersTest, SayNothingOfAnInterfaceThatIsGoneBeforeItIsTold) {
  filters->interfaceIs(kIntf, 3);
  kernel.interfaces.clear();
  runAt(10);
  EXPECT_THAT(world.logs, IsEmpty());
  filters->interfaceDel(kIntf);
  filters->run();
  EXPECT_THAT(world.logs, IsEmpty());
}

}  // namespace
}  // namespace Linux::Test
