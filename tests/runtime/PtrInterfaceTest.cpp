#include "runtime/PtrInterface.h"

#include <gtest/gtest.h>

#include <functional>

namespace Vesk::Test {
namespace {

class Thing : public PtrInterface {
 public:
  explicit Thing(int& destroyed) : destroyed_(destroyed) {}
  ~Thing() override { ++destroyed_; }

 private:
  int& destroyed_;
};

TEST(Ptr, CountsTheReferencesAndTheLastOneDestroys) {
  int destroyed = 0;
  Ptr<Thing> a = make<Thing>(destroyed);
  EXPECT_EQ(a->references(), 1u);
  Ptr<Thing> b = a;
  Ptr<Thing const> view = b;
  EXPECT_EQ(a->references(), 3u);
  b = nullptr;
  Ptr<Thing> moved = std::move(a);
  EXPECT_EQ(moved->references(), 2u);
  EXPECT_FALSE(a);
  EXPECT_TRUE(view == moved);
  moved = nullptr;
  EXPECT_EQ(destroyed, 0);
  view = nullptr;
  EXPECT_EQ(destroyed, 1);
}

TEST(Ptr, AssignedToItselfKeepsItsObject) {
  int destroyed = 0;
  Ptr<Thing> a = make<Thing>(destroyed);
  Ptr<Thing>& same = a;
  a = same;
  EXPECT_EQ(a->references(), 1u);
  EXPECT_EQ(destroyed, 0);
}

TEST(Ptr, CastToAClassThatTheObjectIsNotOfIsNull) {
  class Other : public PtrInterface {};
  int destroyed = 0;
  Ptr<PtrInterface> thing = make<Thing>(destroyed);
  EXPECT_TRUE(ptrCast<Thing>(thing) == thing);
  EXPECT_TRUE(ptrCast<Other>(thing) == nullptr);
}

TEST(PtrInterface, FlagsLieBesideTheCount) {
  int destroyed = 0;
  Ptr<Thing> a = make<Thing>(destroyed);
  EXPECT_FALSE(a->isMarkedForDeletion());
  EXPECT_FALSE(a->hasNotificationActive());
  a->isMarkedForDeletionIs(true);
  a->hasNotificationActiveIs(true);
  Ptr<Thing> b = a;
  EXPECT_EQ(a->references(), 2u);
  EXPECT_TRUE(a->isMarkedForDeletion());
  EXPECT_TRUE(a->hasNotificationActive());
  a->isMarkedForDeletionIs(false);
  EXPECT_FALSE(a->isMarkedForDeletion());
  EXPECT_TRUE(a->hasNotificationActive());
  EXPECT_EQ(a->references(), 2u);
}

TEST(PtrInterface, WithBothFlagsSetIsDestroyedByTheLastReferenceToo) {
  int destroyed = 0;
  Ptr<Thing> a = make<Thing>(destroyed);
  a->isMarkedForDeletionIs(true);
  a->hasNotificationActiveIs(true);
  a = nullptr;
  EXPECT_EQ(destroyed, 1);
}

TEST(PtrInterface, ADerivedClassHearsOfItsMark) {
  struct Marked final : PtrInterface {
    void isMarkedForDeletionIs(bool marked) override {
      ++heard;
      PtrInterface::isMarkedForDeletionIs(marked);
    }
    int heard = 0;
  };
  Ptr<Marked> marked = make<Marked>();
  Ptr<PtrInterface>(marked)->isMarkedForDeletionIs(true);
  EXPECT_EQ(marked->heard, 1);
  EXPECT_TRUE(marked->isMarkedForDeletion());
}

TEST(PtrInterface, WordIsOneOf32Bits) {
  EXPECT_EQ(sizeof(PtrInterface), 2 * sizeof(void*));  // with the table of virtuals, padded
}

// Hands out a reference to itself while it is made and while it goes.
class SelfKeeper : public PtrInterface {
 public:
  explicit SelfKeeper(int& destroyed) : destroyed_(destroyed) { Ptr<SelfKeeper> self(this); }
  ~SelfKeeper() override {
    Ptr<SelfKeeper> self(this);
    Ptr<SelfKeeper> second = self;
    ++destroyed_;
  }

 private:
  int& destroyed_;
};

TEST(PtrInterface, ReferenceToItselfInTheConstructorAndDestructorDestroysNothing) {
  int destroyed = 0;
  Ptr<SelfKeeper> a = make<SelfKeeper>(destroyed);
  EXPECT_EQ(destroyed, 0);
  EXPECT_EQ(a->references(), 1u);
  a = nullptr;
  EXPECT_EQ(destroyed, 1);
}

class Watched : public PtrInterface {
 public:
  explicit Watched(std::function<void(Watched&)> told) : told_(std::move(told)) {}

 protected:
  void tellZeroReferences() override { told_(*this); }

 private:
  std::function<void(Watched&)> told_;
};

TEST(PtrInterface, LastReferenceTellsBeforeTheObjectIsDestroyed) {
  int told = 0;
  Ptr<Watched> a = make<Watched>([&](Watched& self) {
    ++told;
    Ptr<Watched> read(&self);
    EXPECT_EQ(read->references(), 2u);
  });
  a = nullptr;
  EXPECT_EQ(told, 1);
}

TEST(PtrInterface, CountsTheSameWithLockedOperations) {
  int destroyed = 0;
  VFPtrInterface::enableThreadSafePointers = 1;
  Ptr<Thing> a = make<Thing>(destroyed);
  a->isMarkedForDeletionIs(true);
  Ptr<Thing> b = a;
  EXPECT_EQ(b->references(), 2u);
  EXPECT_TRUE(b->isMarkedForDeletion());
  b->isMarkedForDeletionIs(false);
  EXPECT_FALSE(b->isMarkedForDeletion());
  a = nullptr;
  b = nullptr;
  VFPtrInterface::enableThreadSafePointers = 0;
  EXPECT_EQ(destroyed, 1);
}

}  // namespace
}  // namespace Vesk::Test
