#include "runtime/Dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/runtime/TestEntity.h"
#include "tests/support/DescribedLayout.h"

namespace Vesk::Test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class DirReactor final : public Reactor<Dir, Owner, DirReactor> {
 public:
  using Reactor::Reactor;
  void onEntityPtr(Name const& name) override { owner().hear(std::string(name.view())); }
  void onEntityPtrImmediate() override { owner().hear("all"); }
};

class DirTest : public testing::Test {
 protected:
  Owner owner;
  Ptr<Dir> dir = make<Dir>("dir");
  Ptr<DirReactor> reactor = make<DirReactor>(owner, dir);
};

TEST_F(DirTest, HoldsEntitiesByName) {
  Ptr<Port> port = make<Port>("a");
  dir->entityPtrIs(port);
  EXPECT_TRUE(dir->entry("a") == port);
  EXPECT_TRUE(dir->entry("b") == nullptr);
  EXPECT_EQ(port->references(), 2u);
  EXPECT_THAT(owner.heard, ElementsAre("a"));
}

TEST_F(DirTest, SameEntityAgainIsNothingAndAnotherOfTheNameReplacesIt) {
  Ptr<Port> port = make<Port>("a"), second = make<Port>("a");
  dir->entityPtrIs(port);
  dir->entityPtrIs(port);
  EXPECT_THAT(owner.heard, ElementsAre("a"));
  dir->entityPtrIs(second);
  EXPECT_THAT(owner.heard, ElementsAre("a", "a"));
  EXPECT_TRUE(dir->entry("a") == second);
  EXPECT_EQ(port->references(), 1u);
}

TEST_F(DirTest, DeletionReturnsTheEntityAndTellsAndOfAnAbsentNameNeither) {
  Ptr<Port> port = make<Port>("a");
  dir->entityPtrIs(port);
  owner.heard.clear();
  EXPECT_TRUE(dir->entityPtrDel("b") == nullptr);
  EXPECT_THAT(owner.heard, IsEmpty());
  EXPECT_TRUE(dir->entityPtrDel("a") == port);
  EXPECT_THAT(owner.heard, ElementsAre("a"));
}

TEST_F(DirTest, DeletionOfAllTellsEachName) {
  dir->entityPtrIs(make<Port>("a"));
  dir->entityPtrIs(make<Port>("b"));
  owner.heard.clear();
  dir->entityPtrDelAll();
  EXPECT_THAT(owner.heard, testing::UnorderedElementsAre("a", "b"));
  EXPECT_TRUE(dir->entityPtr().empty());
}

TEST_F(DirTest, NullEntityIsRefused) {
  try {
    dir->entityPtrIs(nullptr);
    FAIL() << "nothing thrown";
  } catch (RangeException const& e) {
    EXPECT_STREQ(e.what(),
                 "null _entityPtr parameter to mutator for Vesk::Dir::entityPtr not allowed\"");
  }
}

TEST_F(DirTest, ToldWithoutAChangeDeliversTheName) {
  dir->entityPtrNotify("a");
  EXPECT_THAT(owner.heard, ElementsAre("a"));
}

TEST_F(DirTest, DescribesItself) { expectEveryAttributeDescribed(*dir); }

}  // namespace
}  // namespace Vesk::Test
