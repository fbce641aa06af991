#include <gtest/gtest.h>

#include "runtime/EthAddr.h"
#include "runtime/Exceptions.h"
#include "runtime/IntfId.h"
#include "runtime/NetValues.h"
#include "runtime/Pkt.h"

namespace Lumo {
namespace {

TEST(NetValue, ABytePatternIsTheValueInNetworkOrder) {
  NetU32 value(0x01020304);
  EXPECT_EQ(value.bytes()[0], 1);
  EXPECT_EQ(value.bytes()[3], 4);
  EXPECT_EQ(value.value(), 0x01020304u);
  EXPECT_EQ(NetU64(0x0080C20001000003).value(), 0x0080C20001000003u);
}

TEST(EthAddr, ATextThatItPrintsParsesBackAndOthersDoNot) {
  auto addr = EthAddr::parsed("02:00:00:00:0A:01");
  ASSERT_TRUE(addr);
  EXPECT_EQ(addr->stringValue(), "02:00:00:00:0a:01");
  EXPECT_FALSE(EthAddr::parsed("02:00:00:00:0a"));
  EXPECT_FALSE(EthAddr::parsed("02:00:00:00:0a:0g"));
  EXPECT_FALSE(EthAddr::parsed("02-00-00-00-0a-01"));
}

TEST(EthAddr, TheOrderIsThatOfTheNumberThatTheBytesMake) {
  EXPECT_LT(EthAddr({0, 0, 0, 0, 0, 0xff}), EthAddr({0, 0, 0, 0, 1, 0}));
  EXPECT_LT(EthAddr({0x7f}), EthAddr({0x80}));
}

TEST(IntfId, TheSameNameIsTheSameInterfaceAndTheDefaultIsTheEmptyOne) {
  EXPECT_EQ(IntfId("Ethernet1"), IntfId("Ethernet1"));
  EXPECT_NE(IntfId("Ethernet1"), IntfId("Ethernet2"));
  EXPECT_EQ(IntfId(""), IntfId());
  EXPECT_EQ(IntfId("Ethernet1").hash(), Vesk::String8("Ethernet1").hash());
  EXPECT_EQ(sizeof(IntfId), 4u);
}

TEST(Pkt, ThePositionStaysInsideTheBuffer) {
  auto pkt = Vesk::make<Pkt>(size_t{4});
  pkt->positionIs(4);
  EXPECT_EQ(pkt->remaining(), 0u);
  EXPECT_THROW(pkt->positionIs(5), Vesk::RangeException);
}

}  // namespace
}  // namespace Lumo
