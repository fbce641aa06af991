#include "tests/host/state/OwnTree.h"

#include <gmock/gmock.h>

#include "host/state/StateKeeper.h"
#include "host/state/StateRebuilding.h"
#include "runtime/EntityCopy.h"
#include "tests/host/KeptState.h"
#include "tests/support/TestWorld.h"

namespace Macsecd::Test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Lumo::IntfId const kSeven("7");

void fillShelf(Shelf& shelf) {
  shelf.bookIs(kSeven, 400)->titleIs("it's 50%");
  shelf.book(kSeven)->markIs("a/b", 9);
  shelf.book(kSeven)->readerIs(3);
}

// A tree that nothing names but the descriptions of its own classes.
struct OwnTree : testing::Test {
  Support::TestWorld world;
  Vesk::WorldScope scope{world};
  KeptState store;
  Vesk::Ptr<Shelf> shelf = Vesk::make<Shelf>();
  StateValues const filled{
      {"book/7", "400"}, {"book/7/mark/a%2fb", "9"}, {"book/7/title", "'it\\'s 50%'"}};
};

TEST_F(OwnTree, IsStored) {
  StateKeeper keeper(shelf, store);
  fillShelf(*shelf);
  keeper.commit();
  EXPECT_EQ(store.values, filled);
  shelf->bookDel(kSeven);
  keeper.commit();
  EXPECT_THAT(store.values, IsEmpty());
}

TEST_F(OwnTree, IsRebuiltWithoutWhatIsOfTheProcess) {
  Rebuilding rebuilding(filled);
  rebuilding.putAll(*shelf);
  EXPECT_THAT(rebuilding.dropped, IsEmpty());
  auto const wanted = Vesk::make<Shelf>();
  fillShelf(*wanted);
  wanted->book(kSeven)->readerIs(0);
  EXPECT_EQ(Vesk::entityToText(*shelf), Vesk::entityToText(*wanted));
}

TEST_F(OwnTree, IsCopied) {
  fillShelf(*shelf);
  auto const copy = Vesk::make<Shelf>();
  Vesk::copyEntity(*shelf, *copy);
  EXPECT_EQ(Vesk::entityToText(*copy), Vesk::entityToText(*shelf));
  EXPECT_NE(copy->book(kSeven), shelf->book(kSeven));
}

TEST_F(OwnTree, NamesThePathsOfItsEntities) {
  fillShelf(*shelf);
  auto const book = shelf->book(kSeven);
  EXPECT_EQ(statePathOf(*book, *shelf), "book/7");
  shelf->bookDel(kSeven);
  EXPECT_EQ(statePathOf(*book, *shelf), std::nullopt);
}

TEST_F(OwnTree, IsWatchedByTheNumbersOfItsAttributes) {
  struct Watch final : Vesk::AttributeFollower {
    void attributeWritten(Vesk::AttributeWrite const& write) override {
      if (auto* book = write.of<Book>({Book::kTitle, Book::kMark})) {
        seen.emplace_back(*statePathOf(*book, *root) + " " + write.attribute);
      } else if (write.of<Shelf>({Shelf::kBook})) {
        seen.emplace_back(write.value + Vesk::plainText(write.key));
      }
    }
    Vesk::Entity const* root;
    std::vector<std::string> seen;
  } watch;
  watch.root = shelf.ptr();
  StateKeeper keeper(shelf, store);
  world.attributeFollowerIs(watch);
  fillShelf(*shelf);
  world.attributeFollowerDel(watch);
  EXPECT_THAT(watch.seen, ElementsAre("+7", "book/7 title", "book/7 mark"));
}

}  // namespace
}  // namespace Macsecd::Test
