#include "runtime/ValueMap.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "runtime/String8.h"

namespace Vesk::Test {
namespace {

using Values = ValueMap<String8, String8>;

std::set<void const*> addresses(Values const& map) {
  std::set<void const*> found;
  for (auto& entry : map) found.insert(&entry);
  return found;
}

TEST(ValueMap, AbsentKeyGivesNull) {
  Values map;
  EXPECT_EQ(map["a"], nullptr);
  map.xIs("a", "1");
  EXPECT_EQ(*map["a"], "1");
  EXPECT_EQ(map["b"], nullptr);
}

TEST(ValueMap, SaysWhetherAWriteChangedIt) {
  Values map;
  EXPECT_TRUE(map.xIs("a", "1"));
  EXPECT_FALSE(map.xIs("a", "1"));
  EXPECT_TRUE(map.xIs("a", "2"));
  EXPECT_EQ(map.members(), 1u);
  EXPECT_TRUE(map.xDel("a"));
  EXPECT_FALSE(map.xDel("a"));
  EXPECT_TRUE(map.empty());
}

TEST(ValueMap, EmptiedAndRefilledUsesItsEntriesAgain) {
  Values map;
  for (char const* key : {"a", "b", "c"}) map.xIs(key, "1");
  auto const first = addresses(map);
  for (char const* key : {"a", "b", "c"}) map.xDel(key);
  for (char const* key : {"d", "e", "f"}) map.xIs(key, "2");
  EXPECT_EQ(addresses(map), first);
  EXPECT_EQ(*map["e"], "2");
  EXPECT_EQ(map["b"], nullptr);
}

TEST(ValueMap, SpareEntryGivesUpItsTextsAtOnce) {
  struct Counted {
    std::shared_ptr<int> text;
    bool operator==(Counted const&) const = default;
  };
  auto text = std::make_shared<int>(1);
  ValueMap<String8, Counted> map;
  map.xIs("a", Counted{text});
  EXPECT_EQ(text.use_count(), 2);
  map.xDel("a");
  EXPECT_EQ(text.use_count(), 1);
}

TEST(ValueMap, EntryUnderAnIteratorIsNotUsedAgainWhileItIsHeld) {
  Values map;
  for (int i = 0; i < 8; ++i) map.xIs(String8(std::to_string(i)), "1");
  std::vector<std::string> seen;
  for (auto i = map.iterator(); i; ++i) {
    String8 const key = i.key();
    seen.emplace_back(key.view());
    map.xDel(key);
    map.xIs(key, "2");
    EXPECT_EQ(i.key(), key);
    EXPECT_EQ(i->value(), "1");
  }
  EXPECT_EQ(seen.size(), 8u);
  EXPECT_EQ(map.members(), 8u);
}

}  // namespace
}  // namespace Vesk::Test
