#include "runtime/Home.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "runtime/AtHome.h"
#include "runtime/HashMap.h"
#include "runtime/Homes.h"
#include "runtime/InterfaceTable.h"
#include "runtime/Sanitizer.h"
#include "tests/runtime/TestEntity.h"
#include "tests/support/TestWorld.h"

namespace Vesk {
namespace {

using Test::Lane;
using Test::Port;

Lumo::IntfId const kFirst("HomeFirst");
Lumo::IntfId const kSecond("HomeSecond");

// Large enough for a handful of them to fill a home.
struct Large final : PtrInterface {
  char octets[Home::kBlock / 4]{};
};
struct HotOne final : PtrInterface {
  static constexpr bool kIsHot = true;
};
struct ColdOne final : PtrInterface {};

// The worlds of tests keep some things together; this one keeps all for itself.
class WorldOfItsOwn final : public World {
  double now() const override { return 0; }
  int rand() override { return 0; }
  void randomBytes(std::span<uint8_t> out) override { std::ranges::fill(out, uint8_t{0}); }
  void syslog(LogMessage const&) override {}
  void exit(int status) override { std::exit(status); }
};

class AHome : public ::testing::Test {
 protected:
  Homes& homes() { return world.kept<Homes>(); }
  Home& home() { return *homes().homeIs(kFirst); }

  Support::TestWorld world;
  WorldScope inWorld{world};
};

TEST_F(AHome, IsThatOfTheInterfaceThatIsTheKey) {
  Port port;
  auto const first = port.laneIs(kFirst), second = port.laneIs(kSecond);
  ASSERT_TRUE(Home::of(first.ptr()));
  EXPECT_EQ(Home::of(first.ptr()), homes().homeIs(kFirst));
  EXPECT_EQ(Home::of(second.ptr()), homes().homeIs(kSecond));
  EXPECT_NE(Home::of(first.ptr()), Home::of(second.ptr()));
}

TEST_F(AHome, IsAnotherInAnotherWorld) {
  Port port;
  auto const lane = port.laneIs(kFirst);
  WorldOfItsOwn other;
  WorldScope const inOther(other);
  Port otherPort;
  EXPECT_NE(Home::of(otherPort.laneIs(kFirst).ptr()), Home::of(lane.ptr()));
}

// It makes something whenever the load changes.
struct Maker final : Reactor<Lane, Test::Owner, Maker> {
  using Reactor::Reactor;
  void onLoad() override { made = make<ColdOne>(); }
  Ptr<ColdOne> made;
};

TEST_F(AHome, TakesInWhatAHandlerOfItsObjectsMakes) {
  Port port;
  auto const lane = port.laneIs(kFirst);
  Vesk::Test::Owner owner;
  Ptr<Maker> maker;
  {
    HomeScope const scope(kSecond);
    maker = make<Maker>(owner, lane);
  }
  lane->loadIs(1);
  EXPECT_EQ(Home::of(maker->made.ptr()), Home::of(maker.ptr()));
  EXPECT_FALSE(Home::of(make<ColdOne>().ptr())) << "nobody's handler runs any more";
}

TEST_F(AHome, TakesInWhatIsMadeBesideItsObjects) {
  Port port;
  auto const lane = port.laneIs(kFirst);
  BesideScope const beside(lane.ptr());
  EXPECT_EQ(Home::of(make<ColdOne>().ptr()), Home::of(lane.ptr()));
}

TEST_F(AHome, StaysWhileThingsAreMadeBesideAnObjectThatHasGone) {
  size_t const before = homes().members();
  {
    Port port;
    auto lane = port.laneIs(kFirst);
    BesideScope const beside(lane.ptr());
    port.laneDel(kFirst);
    lane = nullptr;
    EXPECT_EQ(homes().members(), before + 1);
    EXPECT_TRUE(Home::of(make<ColdOne>().ptr()));
  }
  EXPECT_EQ(homes().members(), before);
}

TEST_F(AHome, IsNotForWhatASinkOfTheWorldMakes) {
  HomeScope const scope(kFirst);
  Ptr<ColdOne> made;
  callOut([&] { made = make<ColdOne>(); });
  EXPECT_FALSE(Home::of(made.ptr()));
  EXPECT_TRUE(Home::of(make<ColdOne>().ptr()));
}

TEST_F(AHome, GoesWithItsLastObject) {
  size_t const before = homes().members();
  {
    Port port;
    auto const lane = port.laneIs(kFirst);
    EXPECT_EQ(homes().members(), before + 1);
    port.laneDel(kFirst);
    EXPECT_EQ(homes().members(), before + 1);
  }
  EXPECT_EQ(homes().members(), before);
}

TEST_F(AHome, StaysForWhatOutlivesItsWorld) {
  Ptr<ColdOne> made;
  {
    WorldOfItsOwn other;
    WorldScope const inOther(other);
    HomeScope const scope(kFirst);
    made = make<ColdOne>();
  }
  EXPECT_EQ(made->references(), 1u);
  EXPECT_EQ(Home::of(made.ptr())->objects(), 1u);
}

TEST_F(AHome, HasWhatIsHotInFrontOfAllElse) {
  HomeScope const scope(kFirst);
  auto const cold = make<ColdOne>();
  auto const hot = make<HotOne>();
  auto const alsoCold = make<ColdOne>();
  auto const alsoHot = make<HotOne>();
  auto const place = [](auto const& object) { return reinterpret_cast<uintptr_t>(object.ptr()); };
  EXPECT_LT(place(hot), place(alsoHot));
  EXPECT_LT(place(alsoHot) - place(hot), 64u);
  EXPECT_LT(place(alsoHot), place(alsoCold));
  EXPECT_LT(place(alsoCold), place(cold));
}

struct Named final : HashMapEntry {
  explicit Named(Lumo::IntfId of) : name(of) {}
  Lumo::IntfId fwkKey() const { return name; }
  Lumo::IntfId const name;
};
struct WithMembers final : PtrInterface {
  HashMap<Named, Lumo::IntfId> members;
};

TEST_F(AHome, HasTheTableOfAMapThatLiesInIt) {
  HomeScope const scope(kFirst);
  auto const owner = make<WithMembers>();
  Home& home = *Home::of(owner.ptr());
  auto const first = make<Named>(kFirst), second = make<Named>(kSecond);
  owner->members.insert(first.ptr());
  size_t const before = home.objects();
  owner->members.insert(second.ptr());
  EXPECT_EQ(home.objects(), before + 1);
  EXPECT_EQ(owner->members.find(kSecond), second.ptr());
}

TEST_F(AHome, ThatIsFullSendsTheRestToTheHeap) {
  HomeScope const scope(kFirst);
  std::vector<Ptr<Large>> made;
  for (int i = 0; i < 5; ++i) made.push_back(make<Large>());
  EXPECT_TRUE(Home::of(made.front().ptr()));
  EXPECT_FALSE(Home::of(made.back().ptr()));
  EXPECT_EQ(Home::of(made.front().ptr())->octets(), Home::kBlock);
}

// Where each access is checked, it isn't used again, so that none to what has gone is missed.
TEST_F(AHome, UsesTheMemoryOfWhatHasGoneAgain) {
  HomeScope const scope(kFirst);
  auto const stays = make<ColdOne>();
  void const* const place = make<ColdOne>().ptr();
  EXPECT_EQ(make<ColdOne>().ptr() == place, !kAddressesAreChecked);
}

TEST_F(AHome, LosesNothingToAConstructorThatThrows) {
  struct Throwing final : PtrInterface {
    Throwing() { throw 1; }
  };
  size_t const before = home().objects();
  {
    HomeScope const scope(kFirst);
    auto const stays = make<ColdOne>();
    EXPECT_THROW(make<Throwing>(), int);
    EXPECT_EQ(home().objects(), before + 2);
  }
}

TEST_F(AHome, IsntThereInAWorldThatHasNone) {
  world.objectsHaveHomesIs(false);
  Port port;
  EXPECT_FALSE(Home::of(port.laneIs(kFirst).ptr()));
}

TEST_F(AHome, TakesNothingInWhilePointersAreCountedForThreads) {
  HomeScope const scope(kFirst);
  size_t const before = homes().members();
  VFPtrInterface::enableThreadSafePointers = 1;
  auto const made = make<ColdOne>();
  {
    HomeScope const inner(kSecond);
    EXPECT_EQ(homes().members(), before);
  }
  VFPtrInterface::enableThreadSafePointers = 0;
  EXPECT_FALSE(Home::of(made.ptr()));
}

TEST_F(AHome, HasNoObjectOfTheHeapOrTheStack) {
  int onStack = 0;
  static int outside = 0;
  auto const onHeap = std::make_unique<int>();
  for (void const* place :
       {static_cast<void const*>(&onStack), static_cast<void const*>(&outside),
        static_cast<void const*>(onHeap.get()), static_cast<void const*>(nullptr)}) {
    EXPECT_FALSE(Home::of(place));
  }
}

TEST(AnInterfaceTable, HasOneObjectForEachInterfaceInItsHome) {
  Support::TestWorld world;
  WorldScope const inWorld(world);
  struct Kept : AtHome<Home::Part::hot> {
    explicit Kept(int given) : value(given) {}
    int value;
  };
  InterfaceTable<Kept> table;
  EXPECT_FALSE(table.find(kFirst));
  Kept& kept = table.memberIs(kFirst, 1);
  EXPECT_EQ(&table.memberIs(kFirst, 2), &kept);
  EXPECT_EQ(table.find(kFirst)->value, 1);
  EXPECT_EQ(Home::of(&kept), world.kept<Homes>().homeIs(kFirst));
  EXPECT_FALSE(table.find(kSecond));
  table.memberDel(kSecond);
  table.memberDel(kFirst);
  EXPECT_FALSE(table.find(kFirst));
}

}  // namespace
}  // namespace Vesk
