#include "runtime/Assert.h"

#include <gtest/gtest.h>

#include <string>

#include "runtime/World.h"
#include "tests/runtime/TestEntity.h"

namespace Vesk::Test {
namespace {

int assertingLine = 0;

void assertsPositive(int n) {
  assertingLine = __LINE__ + 1;
  VESK_ASSERT(n > 0);
}

TEST(AssertDeathTest, EndsTheProcessWithConditionFileLineAndFunction) {
  assertsPositive(1);
  std::string const where = "AssertTest.cpp:" + std::to_string(assertingLine) + ": ";
  EXPECT_DEATH(assertsPositive(0),
               where + "void Vesk::Test::.*assertsPositive\\(int\\): Assertion `n > 0' failed\\.");
}

TEST(AssertDeathTest, NamesTheConditionAsToldTo) {
  EXPECT_DEATH(VESK_ASSERT_NAMED(false, "the sky is up"), "Assertion `the sky is up' failed\\.");
}

TEST(AssertDeathTest, OfDebugBuildsAloneIsNotEvenEvaluatedInOthers) {
#ifdef NDEBUG
  int evaluated = 0;
  VESK_DEBUG_ASSERT(++evaluated == 0);
  EXPECT_EQ(evaluated, 0);
#else
  EXPECT_DEATH(VESK_DEBUG_ASSERT(1 == 2), "Assertion `1 == 2' failed\\.");
#endif
}

TEST(AssertDeathTest, HashMapTakesNoSecondMemberOfOneKeyAndNoMemberOfAnotherMap) {
  HashMap<Lane, Lumo::IntfId> map, other;
  auto lane = make<Lane>(Lumo::IntfId("1"), 1u);
  auto twin = make<Lane>(Lumo::IntfId("1"), 1u);
  map.insert(lane.ptr());
  EXPECT_DEATH(map.insert(twin.ptr()), "Assertion `the key is new' failed\\.");
  EXPECT_DEATH(other.insert(lane.ptr()), "Assertion `the entry is in no map' failed\\.");
}

}  // namespace
}  // namespace Vesk::Test
