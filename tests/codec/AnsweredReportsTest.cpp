#include "codec/AnsweredReports.h"

#include <gtest/gtest.h>

#include "model/PacketNumbers.h"
#include "tests/codec/CodecBench.h"

namespace Codec {
namespace {

using Macsec::KeyInfo;
using Macsec::nearlyUsedUp;
using Macsec::Sak;
using Macsec::SakUseInfo;

/// A key server that made its keys 1 and 2, and what its peer reports of them.
class AReportOfPacketNumbers : public ::testing::Test {
 protected:
  AReportOfPacketNumbers() {
    actor->electedSelfIs(true);
    actor->distSakIs(sak(2));
  }
  static Sak sak(uint32_t number) {
    Sak sak{Macsec::AssociationNumber(number % 4)};
    sak.keyMsgIdIs(kMemberA);
    sak.keyNumIs(number);
    return sak;
  }
  static KeyInfo key(uint32_t number, uint32_t lowest) {
    KeyInfo key;
    key.keyServerMsgIdIs(kMemberA);
    key.keyNumIs(number);
    key.keyANIs(static_cast<uint8_t>(number % 4));
    key.keyLLPNIs(lowest);
    return key;
  }
  SakUseInfo lowered(SakUseInfo report) const {
    lowerAnswered(report, *actor);
    return report;
  }

  CodecBench bench;
  Vesk::Ptr<Macsec::MkaActorStatus> actor = bench.actorIs();
  SakUseInfo const former{key(1, nearlyUsedUp), key(2, 7), {}};
  SakUseInfo const latest{key(1, 7), key(2, nearlyUsedUp), {}};
};

TEST_F(AReportOfPacketNumbers, IsLoweredForAKeyThatAnotherOneFollowsAlready) {
  SakUseInfo const told = lowered(former);
  EXPECT_EQ(told.oldKeyInfo(), key(1, nearlyUsedUp - 1));
  EXPECT_EQ(told.latestKeyInfo(), key(2, 7));
  EXPECT_EQ(lowered({{}, key(1, 0xFFFFFFFF), {}}).latestKeyInfo(), key(1, nearlyUsedUp - 1));
}

TEST_F(AReportOfPacketNumbers, StandsForTheKeyThatIsDistributedNow) {
  EXPECT_EQ(lowered(latest), latest);
}

TEST_F(AReportOfPacketNumbers, StandsBelowTheLimit) {
  SakUseInfo const report{key(1, nearlyUsedUp - 1), key(2, 7), {}};
  EXPECT_EQ(lowered(report), report);
}

TEST_F(AReportOfPacketNumbers, StandsWhereAnotherMemberIsKeyServer) {
  actor->electedSelfIs(false);
  EXPECT_EQ(lowered(former), former);
}

TEST_F(AReportOfPacketNumbers, StandsAsLongAsNoKeyIsDistributed) {
  actor->distSakIs(Sak());
  EXPECT_EQ(lowered(former), former);
}

TEST_F(AReportOfPacketNumbers, IsLoweredForAKeyOfAnotherKeyServerWithTheSameNumber) {
  KeyInfo other = key(2, nearlyUsedUp);
  other.keyServerMsgIdIs(kMemberB);
  EXPECT_EQ(lowered({other, {}, {}}).oldKeyInfo().keyLLPN(), nearlyUsedUp - 1);
}

}  // namespace
}  // namespace Codec
