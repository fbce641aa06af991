#include "linux/serve/Places.h"

#include <gtest/gtest.h>

namespace Linux {
namespace {

constexpr uid_t kAnn = 1001, kBen = 1002, kCid = 1003;

Place idle(uid_t user, uint64_t lastUsed) {
  return {.user = user, .isOwner = user == 0, .isIdle = true, .lastUsed = lastUsed};
}
Place inUse(uid_t user, uint64_t lastUsed) {
  return {.user = user, .isOwner = user == 0, .isIdle = false, .lastUsed = lastUsed};
}
Place newcomer(uid_t user) { return {.user = user, .isOwner = user == 0}; }

TEST(Places, TheOneIdleForLongestOfTheUserWithTheMostIsGivenUp) {
  std::vector<Place> const places = {idle(kBen, 1), idle(kAnn, 9), idle(kAnn, 3), inUse(kAnn, 2)};
  EXPECT_EQ(placeGivenUp(places, newcomer(kCid)), 2u);
  EXPECT_EQ(placeGivenUp(places, newcomer(kBen)), 2u);
  EXPECT_EQ(placeGivenUp(places, newcomer(0)), 2u);
}

TEST(Places, WhoHoldsTheMostTakesFromNobodyElse) {
  std::vector<Place> const places = {idle(kBen, 1), inUse(kAnn, 2), inUse(kAnn, 3)};
  EXPECT_EQ(placeGivenUp(places, newcomer(kAnn)), std::nullopt);
  std::vector<Place> const equal = {idle(kBen, 1), idle(kBen, 2), idle(kAnn, 3), inUse(kAnn, 4)};
  EXPECT_EQ(placeGivenUp(equal, newcomer(kAnn)), 2u);
}

TEST(Places, OneInUseGoesOnlyToWhoHoldsLess) {
  std::vector<Place> const places = {inUse(kAnn, 1), inUse(kAnn, 2), inUse(kAnn, 3),
                                     inUse(kBen, 4)};
  EXPECT_EQ(placeGivenUp(places, newcomer(kCid)), 0u);
  EXPECT_EQ(placeGivenUp(places, newcomer(kBen)), 0u);
  std::vector<Place> const close = {inUse(kAnn, 1), inUse(kAnn, 2), inUse(kBen, 3)};
  EXPECT_EQ(placeGivenUp(close, newcomer(kBen)), std::nullopt);
}

TEST(Places, AnOwnerAlwaysGetsInAndKeepsWhatIsInUse) {
  std::vector<Place> const others = {inUse(kAnn, 2), inUse(kBen, 1)};
  EXPECT_EQ(placeGivenUp(others, newcomer(0)), 1u);
  std::vector<Place> const own = {inUse(0, 2), inUse(0, 1), inUse(0, 3)};
  EXPECT_EQ(placeGivenUp(own, newcomer(kAnn)), std::nullopt);
  EXPECT_EQ(placeGivenUp(own, newcomer(0)), 1u);
  std::vector<Place> const mixed = {inUse(0, 1), inUse(0, 2), inUse(kAnn, 3)};
  EXPECT_EQ(placeGivenUp(mixed, newcomer(0)), 2u);
}

}  // namespace
}  // namespace Linux
