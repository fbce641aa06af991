#include "runtime/HashMap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "runtime/String8.h"

namespace Vesk::Test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

class Entry final : public HashMapEntry {
 public:
  explicit Entry(String8 key) : key_(std::move(key)) {}
  String8 const& fwkKey() const { return key_; }

 private:
  String8 key_;
};
using Map = HashMap<Entry, String8>;

// A key whose hash a test chooses.
struct ChosenKey {
  uint32_t hashed;
  int number;
  uint32_t hash() const { return hashed; }
  friend auto operator<=>(ChosenKey const&, ChosenKey const&) = default;
};
class ChosenEntry final : public HashMapEntry {
 public:
  ChosenEntry(uint32_t hash, int number) : key_{hash, number} {}
  ChosenKey const& fwkKey() const { return key_; }

 private:
  ChosenKey key_;
};

void add(Map& map, String8 const& key) { map.insert(make<Entry>(key).ptr()); }

std::vector<std::string> walk(Map const& map) {
  std::vector<std::string> keys;
  for (Entry& e : map) keys.emplace_back(e.fwkKey().view());
  return keys;
}

std::vector<String8> numbered(int n) {
  std::vector<String8> keys;
  for (int i = 0; i < n; ++i) keys.emplace_back("key" + std::to_string(i));
  return keys;
}

TEST(HashMap, FindsMembersAndNeverCreatesOne) {
  Map map;
  EXPECT_TRUE(map["a"] == nullptr);
  add(map, "a");
  EXPECT_EQ(map["a"]->fwkKey(), "a");
  EXPECT_TRUE(map["b"] == nullptr);
  EXPECT_EQ(map.members(), 1u);
}

TEST(HashMap, DeletionReturnsTheMemberAndOfAnAbsentKeyNull) {
  Map map;
  add(map, "a");
  Ptr<Entry> entry = map.xDel("a");
  EXPECT_EQ(entry->references(), 1u);
  EXPECT_TRUE(map.empty());
  EXPECT_TRUE(map.xDel("a") == nullptr);
}

TEST(HashMap, LetsItsMembersGoWithItself) {
  Ptr<Entry> entry = make<Entry>("a");
  {
    Map map;
    map.insert(entry.ptr());
    EXPECT_EQ(entry->references(), 2u);
  }
  EXPECT_EQ(entry->references(), 1u);
  Map another;
  another.insert(entry.ptr());
  EXPECT_EQ(another.members(), 1u);
}

TEST(HashMap, WalkFollowsTheBitReversedHashAndThenTheKey) {
  HashMap<ChosenEntry, ChosenKey> map;
  for (auto [hash, number] : {std::pair{1u, 2}, {3u, 0}, {2u, 0}, {1u, 1}, {0u, 0}, {1u, 3}}) {
    map.insert(make<ChosenEntry>(hash, number).ptr());
  }
  std::vector<std::pair<uint32_t, int>> seen;
  for (auto& e : map) seen.emplace_back(e.fwkKey().hashed, e.fwkKey().number);
  std::vector<std::pair<uint32_t, int>> const expected{{0, 0}, {2, 0}, {1, 1},
                                                       {1, 2}, {1, 3}, {3, 0}};
  EXPECT_EQ(seen, expected);
}

TEST(HashMap, ReversesBits) {
  EXPECT_EQ(reversedBits(0x00000001), 0x80000000u);
  EXPECT_EQ(reversedBits(0x12345678), 0x1e6a2c48u);
}

// Any history that ends with the same contents gives the same walk, in a table grown far and in one
// that never was larger.
TEST(HashMap, WalkDependsOnTheContentsAlone) {
  std::mt19937 draw(7);  // tidy: allow(randomness) seeded, to draw histories
  auto keys = numbered(300);
  for (int round = 0; round < 30; ++round) {
    std::shuffle(keys.begin(), keys.end(), draw);
    size_t const kept = draw() % 40;
    Map direct, grown;
    for (size_t i = 0; i < kept; ++i) add(direct, keys[i]);
    auto order = keys;
    std::shuffle(order.begin(), order.end(), draw);
    for (auto const& key : order) add(grown, key);
    auto const others = std::span(keys).subspan(kept);
    std::vector<String8> leaving(others.begin(), others.end());
    std::shuffle(leaving.begin(), leaving.end(), draw);
    for (auto const& key : leaving) grown.xDel(key);
    EXPECT_THAT(walk(grown), ElementsAreArray(walk(direct)));
  }
}

TEST(HashMap, WalkWithRandomDeletionsAndInsertionsSeesAllThatStayedAndNoneTwice) {
  std::mt19937 draw(11);  // tidy: allow(randomness) seeded, to draw deletions
  auto const keys = numbered(100);
  for (int round = 0; round < 50; ++round) {
    Map map;
    for (auto const& key : keys) add(map, key);
    std::vector<std::string> seen;
    std::vector<String8> deleted;
    int fresh = 0;
    for (Map::Iterator i = map.iterator(); i; ++i) {
      seen.emplace_back(i.key().view());
      if (draw() % 2) map.xDel(i), deleted.push_back(i.key());
      auto const& victim = keys[draw() % keys.size()];
      if (map.xDel(victim)) deleted.push_back(victim);
      if (draw() % 3 == 0) add(map, String8("fresh" + std::to_string(fresh++)));
    }
    auto unique = seen;
    std::sort(unique.begin(), unique.end());
    EXPECT_EQ(std::unique(unique.begin(), unique.end()), unique.end());
    for (auto const& key : keys) {
      bool const stayed = std::find(deleted.begin(), deleted.end(), key) == deleted.end();
      EXPECT_TRUE(!stayed || std::find(seen.begin(), seen.end(), key.view()) != seen.end());
    }
  }
}

class HashMapWalkTest : public testing::Test {
 protected:
  HashMapWalkTest() {
    for (auto const& key : numbered(5)) add(map, key);
    order = walk(map);
  }
  Map map;
  std::vector<std::string> order;
};

TEST_F(HashMapWalkTest, DeletionThroughTheIteratorKeepsTheWalkValid) {
  std::vector<std::string> seen;
  for (Map::Iterator i = map.iterator(); i; ++i) {
    seen.emplace_back(i.key().view());
    EXPECT_TRUE(map.xDel(i) != nullptr);
    EXPECT_TRUE(map.xDel(i) == nullptr);
  }
  EXPECT_EQ(seen, order);
  EXPECT_TRUE(map.empty());
}

TEST_F(HashMapWalkTest, DeletionByKeyOfTheNextMemberSkipsIt) {
  std::vector<std::string> seen;
  for (Map::Iterator i = map.iterator(); i; ++i) {
    seen.emplace_back(i.key().view());
    map.xDel(String8(order[1]));
  }
  EXPECT_THAT(seen, ElementsAre(order[0], order[2], order[3], order[4]));
}

TEST_F(HashMapWalkTest, DeletionOfAllEndsTheWalkAndTheMemberUnderTheIteratorIsStillRead) {
  Map::Iterator i = map.iterator();
  map.clear();
  EXPECT_EQ(i->fwkKey(), String8(order[0]));
  ++i;
  EXPECT_FALSE(i);
}

TEST_F(HashMapWalkTest, ReinsertionDuringTheWalkCountsByPosition) {
  std::vector<std::string> seen;
  for (Map::Iterator i = map.iterator(); i; ++i) {
    seen.emplace_back(i.key().view());
    if (seen.size() != 3) continue;
    map.xDel(i);
    map.xDel(String8(order[0]));
    add(map, String8(order[0]));
    add(map, String8(order[2]));
  }
  EXPECT_EQ(seen, order);
  EXPECT_EQ(map.members(), 5u);
}

TEST_F(HashMapWalkTest, SameEntryBackInTheMapIsWalkedOnFrom) {
  std::vector<std::string> seen;
  for (Map::Iterator i = map.iterator(); i; ++i) {
    seen.emplace_back(i.key().view());
    Ptr<Entry> entry = map.xDel(i);
    map.insert(entry.ptr());
  }
  EXPECT_EQ(seen, order);
}

TEST_F(HashMapWalkTest, EntryThatWentIntoAnotherMapIsWalkedOnFromToo) {
  Map other;
  std::vector<std::string> seen;
  for (Map::Iterator i = map.iterator(); i; ++i) {
    seen.emplace_back(i.key().view());
    other.insert(map.xDel(i).ptr());
  }
  EXPECT_EQ(seen, order);
  EXPECT_EQ(walk(other), order);
}

TEST_F(HashMapWalkTest, GrowthOfTheTableDuringTheWalkKeepsItValid) {
  std::vector<std::string> seen;
  bool grown = false;
  for (Map::Iterator i = map.iterator(); i; ++i) {
    if (i.key().view().substr(0, 3) == "key") seen.emplace_back(i.key().view());
    for (int n = 0; !grown && n < 200; ++n) add(map, String8("more" + std::to_string(n)));
    grown = true;
  }
  EXPECT_EQ(seen, order);
}

}  // namespace
}  // namespace Vesk::Test
