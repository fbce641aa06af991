#include "lab/world/Wire.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Lab {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Wire wireOf(size_t ends, uint32_t seed = 1) { return {ends, 0.5, Random(seed, Stream::wire, 0)}; }

WireFault fault(FaultKind kind, bool bothWays, std::optional<uint32_t> frames = std::nullopt,
                double percent = 100) {
  return {kind, {}, bothWays, {frames, percent}};
}

// The first octets of what goes on its way when a frame of this octet is sent.
std::vector<int> sent(Wire& wire, size_t end, uint8_t octet) {
  std::vector<int> octets;
  for (Flight const& flight : wire.sent(end, Frame{octet, 7})) octets.push_back(flight.frame[0]);
  return octets;
}

TEST(Wire, CarriesAFrameUnchangedAfterItsDelay) {
  Wire wire = wireOf(2);
  auto const flights = wire.sent(0, Frame{1, 2, 3});
  ASSERT_EQ(flights.size(), 1u);
  EXPECT_EQ(flights[0].frame, (Frame{1, 2, 3}));
  EXPECT_EQ(flights[0].delay, 0.5);
}

TEST(Wire, LosesAsManyFramesOfOneWayAsItIsTold) {
  Wire wire = wireOf(2);
  wire.faultIs(0, fault(FaultKind::lose, false, 2));
  EXPECT_THAT(sent(wire, 0, 1), IsEmpty());
  EXPECT_THAT(sent(wire, 1, 2), ElementsAre(2));
  EXPECT_THAT(sent(wire, 0, 3), IsEmpty());
  EXPECT_THAT(sent(wire, 0, 4), ElementsAre(4));
}

TEST(Wire, CountsAFaultOfBothWaysOverAllEnds) {
  Wire wire = wireOf(3);
  wire.faultIs(1, fault(FaultKind::lose, true, 2));
  EXPECT_THAT(sent(wire, 0, 1), IsEmpty());
  EXPECT_THAT(sent(wire, 2, 2), IsEmpty());
  EXPECT_THAT(sent(wire, 1, 3), ElementsAre(3));
}

TEST(Wire, LosesAShareOfFramesAsTheSeedDecides) {
  auto losses = [](uint32_t seed) {
    Wire wire = wireOf(2, seed);
    wire.faultIs(0, fault(FaultKind::lose, false, std::nullopt, 20));
    std::vector<bool> lost;
    for (int i = 0; i < 1000; ++i) lost.push_back(wire.sent(0, Frame{1}).empty());
    return lost;
  };
  auto const lost = losses(5);
  EXPECT_EQ(lost, losses(5));
  EXPECT_NE(lost, losses(6));
  EXPECT_NEAR(static_cast<double>(std::count(lost.begin(), lost.end(), true)), 200, 40);
}

TEST(Wire, SendsADuplicateRightBehindItsFrame) {
  Wire wire = wireOf(2);
  wire.faultIs(0, fault(FaultKind::duplicate, false, 1));
  EXPECT_THAT(sent(wire, 0, 1), ElementsAre(1, 1));
  EXPECT_THAT(sent(wire, 0, 2), ElementsAre(2));
}

TEST(Wire, PutsAReorderedFrameBehindTheNextOne) {
  Wire wire = wireOf(2);
  wire.faultIs(0, fault(FaultKind::reorder, false, 2));
  EXPECT_THAT(sent(wire, 0, 1), IsEmpty());
  EXPECT_THAT(sent(wire, 0, 2), ElementsAre(2, 1));
  EXPECT_THAT(sent(wire, 0, 3), IsEmpty());
  EXPECT_THAT(sent(wire, 0, 4), ElementsAre(4, 3));
  EXPECT_THAT(sent(wire, 0, 5), ElementsAre(5));
}

TEST(Wire, InvertsTheByteOfAFrameThatHasIt) {
  Wire wire = wireOf(2);
  WireFault corrupt = fault(FaultKind::corrupt, false, 1);
  corrupt.octet = 2;
  wire.faultIs(0, corrupt);
  EXPECT_EQ(wire.sent(0, Frame{1, 2})[0].frame, (Frame{1, 2}));
  EXPECT_EQ(wire.sent(0, Frame{1, 2, 0x0f})[0].frame, (Frame{1, 2, 0xf0}));
  EXPECT_EQ(wire.sent(0, Frame{1, 2, 0x0f})[0].frame, (Frame{1, 2, 0x0f}));
}

TEST(Wire, DelaysOneWayInPlaceOfItsOwnDelay) {
  Wire wire = wireOf(2);
  WireFault delay = fault(FaultKind::delay, false);
  delay.delay = 3;
  wire.faultIs(1, delay);
  EXPECT_EQ(wire.sent(1, Frame{1})[0].delay, 3);
  EXPECT_EQ(wire.sent(0, Frame{1})[0].delay, 0.5);
}

TEST(Wire, IsCutOneWayOrBothUntilItIsRepaired) {
  Wire wire = wireOf(2);
  wire.faultIs(0, fault(FaultKind::cut, false));
  EXPECT_THAT(sent(wire, 0, 1), IsEmpty());
  EXPECT_THAT(sent(wire, 1, 1), ElementsAre(1));
  wire.faultIs(0, fault(FaultKind::cut, true));
  EXPECT_THAT(sent(wire, 1, 1), IsEmpty());
  wire.faultIs(0, fault(FaultKind::repair, false));
  EXPECT_THAT(sent(wire, 0, 1), ElementsAre(1));
  EXPECT_THAT(sent(wire, 1, 1), IsEmpty());
  wire.faultIs(0, fault(FaultKind::repair, true));
  EXPECT_THAT(sent(wire, 1, 1), ElementsAre(1));
}

TEST(Wire, KeepsAFrameThatWaitsWhenItIsRepaired) {
  Wire wire = wireOf(2);
  wire.faultIs(0, fault(FaultKind::reorder, false));
  EXPECT_THAT(sent(wire, 0, 1), IsEmpty());
  wire.faultIs(0, fault(FaultKind::repair, true));
  EXPECT_THAT(sent(wire, 0, 2), ElementsAre(2, 1));
  EXPECT_THAT(sent(wire, 0, 3), ElementsAre(3));
}

}  // namespace
}  // namespace Lab
