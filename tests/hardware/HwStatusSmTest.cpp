#include <gtest/gtest.h>

#include "hardware/HwStatusSm.h"
#include "model/Factories.h"
#include "runtime/Dir.h"
#include "tests/support/TestWorld.h"

namespace Macsec {
namespace {

Lumo::IntfId const kOne("Ethernet1"), kTwo("Ethernet2"), kThree("Ethernet3");

class HardwareView : public ::testing::Test {
 protected:
  HardwareView() { Vesk::TraceHandle::streamLevelsIs("", Vesk::kAllTraceLevels); }
  ~HardwareView() override { Vesk::TraceHandle::streamLevelsIs("", 0); }

  Vesk::Ptr<MacSecStatus> slice(char const* name, std::initializer_list<Lumo::IntfId> intfs = {}) {
    auto made = macSecStatusFactory(name);
    for (Lumo::IntfId const& intf : intfs) made->statusIs(intf);
    return made;
  }
  void begin() { sm = hwStatusSmFactory(view, slices); }
  Vesk::String8 sliceOf(Lumo::IntfId intf) const {
    auto const* found = sm->sliceMap()[intf];
    return found ? *found : Vesk::String8("none");
  }

  Support::TestWorld world;
  Vesk::WorldScope scope{world};
  Vesk::Ptr<MacSecIntfStatusPtrDir> view = macSecIntfStatusPtrDirFactory("view");
  Vesk::Ptr<Vesk::Dir> slices = Vesk::makeActive<Vesk::Dir>("slices");
  Vesk::Ptr<HwStatusSm> sm;
};

TEST_F(HardwareView, TakesUpASliceThatIsThereAndOneThatComes) {
  auto first = slice("first", {kOne, kTwo});
  slices->entityPtrIs(first);
  begin();
  EXPECT_EQ(view->status(kOne), first->status(kOne));
  EXPECT_EQ(view->status().members(), 2u);
  auto second = slice("second", {kThree});
  slices->entityPtrIs(second);
  EXPECT_EQ(view->status(kThree), second->status(kThree));
  EXPECT_EQ(sliceOf(kThree), "second");
  EXPECT_EQ(world.traced(": second/Ethernet3 added "), 1u);
  EXPECT_EQ(sm->hwSlices(), 2u);
}

TEST_F(HardwareView, FollowsTheInterfacesOfASlice) {
  begin();
  auto first = slice("first");
  slices->entityPtrIs(first);
  first->statusIs(kOne);
  EXPECT_EQ(view->status(kOne), first->status(kOne));
  first->statusDel(kOne);
  EXPECT_FALSE(view->status(kOne));
  EXPECT_EQ(sliceOf(kOne), "none");
  EXPECT_EQ(sm->hwSlices(), 1u);
}

TEST_F(HardwareView, TheHandlerOfALostInterfaceRunsTwice) {
  begin();
  auto first = slice("first", {kOne});
  slices->entityPtrIs(first);
  world.traces.clear();
  first->statusDel(kOne);
  EXPECT_EQ(world.traced(": first/Ethernet1 deleted "), 2u);
}

TEST_F(HardwareView, TakesASliceUpOnce) {
  begin();
  slices->entityPtrIs(slice("first", {kOne}));
  world.traces.clear();
  slices->entityPtrNotify("first");
  sm->handleSliceDir("first");
  EXPECT_EQ(world.traced(" added "), 0u);
  EXPECT_EQ(view->status().members(), 1u);
}

TEST_F(HardwareView, ASliceThatGoesTakesItsOwnInterfacesAlone) {
  begin();
  slices->entityPtrIs(slice("first", {kOne, kTwo}));
  slices->entityPtrIs(slice("second", {kThree}));
  slices->entityPtrDel("first");
  EXPECT_EQ(view->status().members(), 1u);
  EXPECT_TRUE(view->status(kThree));
  EXPECT_EQ(sm->hwSlices(), 1u);
  EXPECT_EQ(world.traced(": first deleted"), 1u);
}

TEST_F(HardwareView, AnEntryThatIsNoSliceCountsAsAbsent) {
  slices->entityPtrIs(Vesk::makeActive<Vesk::Dir>("other"));
  begin();
  slices->entityPtrIs(Vesk::makeActive<Vesk::Dir>("another"));
  EXPECT_EQ(sm->hwSlices(), 0u);
  EXPECT_TRUE(view->status().empty());
}

TEST_F(HardwareView, OfTwoSlicesWithOneInterfaceTheLaterWriteWinsAndEitherDeletionRemovesIt) {
  begin();
  auto first = slice("first", {kOne}), second = slice("second", {kOne});
  slices->entityPtrIs(first);
  slices->entityPtrIs(second);
  EXPECT_EQ(view->status(kOne), second->status(kOne));
  EXPECT_EQ(sliceOf(kOne), "second");
  first->statusDel(kOne);
  EXPECT_FALSE(view->status(kOne));
}

TEST_F(HardwareView, ASliceThatGoesLeavesAnInterfaceThatAnotherHasTaken) {
  begin();
  slices->entityPtrIs(slice("first", {kOne}));
  slices->entityPtrIs(slice("second", {kOne}));
  slices->entityPtrDel("first");
  EXPECT_TRUE(view->status(kOne));
}

TEST_F(HardwareView, AnotherSliceUnderTheSameNameReplacesTheInterfaces) {
  begin();
  slices->entityPtrIs(slice("first", {kOne, kTwo}));
  auto renewed = slice("first", {kTwo, kThree});
  slices->entityPtrIs(renewed);
  EXPECT_FALSE(view->status(kOne));
  EXPECT_EQ(view->status(kTwo), renewed->status(kTwo));
  EXPECT_EQ(view->status(kThree), renewed->status(kThree));
}

TEST_F(HardwareView, WithoutAViewItKeepsItsOwnMap) {
  sm = hwStatusSmFactory(nullptr, slices);
  auto first = slice("first", {kOne});
  slices->entityPtrIs(first);
  EXPECT_EQ(sliceOf(kOne), "first");
  first->statusDel(kOne);
  EXPECT_EQ(sliceOf(kOne), "none");
}

TEST_F(HardwareView, DumpsItsStateAfterEachUpdate) {
  begin();
  slices->entityPtrIs(slice("first", {kOne}));
  EXPECT_EQ(world.traced("hwStatusSliceDir/first has Ethernet1"), 1u);
}

TEST_F(HardwareView, LeavesTheViewAsItStandsWhenItEnds) {
  begin();
  auto first = slice("first", {kOne});
  slices->entityPtrIs(first);
  sm = nullptr;
  first->statusIs(kTwo);
  slices->entityPtrDel("first");
  EXPECT_EQ(view->status().members(), 1u);
}

}  // namespace
}  // namespace Macsec
