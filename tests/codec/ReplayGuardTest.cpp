#include "codec/ReplayGuard.h"

#include <gtest/gtest.h>

#include "codec/PeerLimit.h"
#include "tests/codec/CodecBench.h"

namespace Codec {
namespace {

/// The member identifier with this number.
Vesk::String8 memberId(size_t number) {
  std::string const digits = std::to_string(number);
  return Vesk::String8("e" + std::string(23 - digits.size(), '0') + digits);
}

/// A codec with its guard, at the port of member A, that receives from member B.
class TheReplayGuard : public ::testing::Test {
 protected:
  TheReplayGuard() {
    bench.hasReplayGuard = true;
    own = bench.actorIs();
    own->msgIdIs(kMemberA);
    own->msgNumIs(20);
  }

  /// A frame of this member that lists nobody.
  Bytes hello(uint32_t number, char const* sender = kMemberB) {
    bench.tx().livePeerDelAll();
    bench.tx().potentialPeerDelAll();
    bench.tx().intfIdIs(bench.intf);
    bench.txInfo().sakDistInfoIs({});
    bench.txInfo().cakDistInfoIs({});
    bench.txInfo().baseInfoIs(
        Macsec::BasicInfo(10, true, true, 2, bench.sci, sender, number, kCkn));
    return bench.sentFrame();
  }
  /// One that distributes a SAK, and lists this end with this number, among the live or the
  /// potential peers.
  Bytes keyFor(uint32_t number, uint32_t listed, bool live = true, char const* listing = kMemberA) {
    hello(number);
    (live ? bench.tx().livePeerIs(listing, listed) : bench.tx().potentialPeerIs(listing, listed));
    bench.txInfo().sakDistInfoIs(Macsec::SakDistInfo(Macsec::ANOffset(1, 0), 2,
                                                     Macsec::CipherSuite::gcmAesXpn128,
                                                     WardcodeLib::doEncodeKey(kSak)));
    return bench.sentFrame();
  }
  SubType verdict(Bytes const& frame) {
    uint32_t const before = bench.rx().count();
    SubType const why = bench.codec().receive(bench.intf, frame).subType;
    EXPECT_EQ(bench.rx().count() != before, why == SubType::none);
    return why;
  }

  CodecBench bench;
  Vesk::Ptr<Macsec::MkaActorStatus> own;
};

TEST_F(TheReplayGuard, TakesAFrameOnceAndNeverAgain) {
  Bytes const frame = hello(1);
  EXPECT_EQ(verdict(frame), SubType::none);
  EXPECT_EQ(verdict(frame), Reason::replayErr);
  EXPECT_EQ(verdict(frame), Reason::replayErr);
  EXPECT_EQ(bench.failures(Reason::replayErr), 2u);
  EXPECT_EQ(bench.successes(), 1u);
}

TEST_F(TheReplayGuard, RefusesAFrameThatComesBehindALaterOne) {
  Bytes const first = hello(1), second = hello(2);
  EXPECT_EQ(verdict(second), SubType::none);
  EXPECT_EQ(verdict(first), Reason::replayErr);
}

TEST_F(TheReplayGuard, TellsTheMembersApart) {
  EXPECT_EQ(verdict(hello(5)), SubType::none);
  EXPECT_EQ(verdict(hello(5, "c1c2c3c4c5c6c7c8c9cacbcc")), SubType::none);
}

TEST_F(TheReplayGuard, TakesTheNextMessageOfAMemberThatRepeatedANumber) {
  EXPECT_EQ(verdict(hello(5)), SubType::none);
  EXPECT_EQ(verdict(hello(5)), Reason::replayErr);
  EXPECT_EQ(verdict(hello(6)), SubType::none);
}

TEST_F(TheReplayGuard, TakesNoNumberFromAFrameWhoseIcvIsWrong) {
  Bytes forged = hello(0xffffffff);
  forged.back() ^= 1;
  EXPECT_EQ(verdict(forged), SubType::icvValidationErr);
  EXPECT_EQ(verdict(hello(1)), SubType::none);
}

TEST_F(TheReplayGuard, RemembersOverTheEndOfTheActor) {
  Bytes const frame = hello(1);
  EXPECT_EQ(verdict(frame), SubType::none);
  bench.status->portStatusDel(bench.intf);
  own = bench.actorIs();
  EXPECT_EQ(verdict(frame), Reason::replayErr);
}

TEST_F(TheReplayGuard, TakesUpWhomAFormerProcessHasHeard) {
  Bytes const frame = hello(6), next = hello(7);
  auto const peer = own->livePeerIs(kMemberB);
  peer->baseInfoIs(Macsec::BasicInfo(10, true, true, 2, bench.sci, kMemberB, 6, kCkn));
  bench.codecDel();
  EXPECT_EQ(verdict(frame), Reason::replayErr);
  EXPECT_EQ(verdict(next), SubType::none);
}

TEST_F(TheReplayGuard, DoesNotTakeAMemberForHeardThatAnotherOneListed) {
  auto const peer = own->potentialPeerIs(kMemberB);
  Macsec::BasicInfo listed;
  listed.msgNumIs(6);
  peer->baseInfoIs(listed);
  bench.codecDel();
  EXPECT_EQ(verdict(hello(6)), SubType::none);
}

TEST_F(TheReplayGuard, TakesAKeyFromWhoListsThisEndWithOneOfItsLastNumbers) {
  uint32_t number = 0;
  for (bool const live : {true, false}) {
    for (uint32_t const listed : {20u, 19u, 18u}) {
      EXPECT_EQ(verdict(keyFor(++number, listed, live)), SubType::none) << listed;
    }
  }
}

TEST_F(TheReplayGuard, LeavesOutAKeyThatIsForTheLivePeersOfItsSenderWhileThisEndIsNone) {
  EXPECT_EQ(verdict(keyFor(1, 20, false)), SubType::none);
  EXPECT_EQ(bench.rx().mkaInfo()->sakDistInfo(), Macsec::SakDistInfo());
  EXPECT_TRUE(bench.rx().potentialPeer(kMemberA));
  EXPECT_EQ(verdict(keyFor(2, 20, true)), SubType::none);
  EXPECT_NE(bench.rx().mkaInfo()->sakDistInfo(), Macsec::SakDistInfo());
}

TEST_F(TheReplayGuard, RefusesAKeyFromWhoListsThisEndWithANumberOfLongAgoOrNoneYetSent) {
  EXPECT_EQ(verdict(keyFor(1, 17)), Reason::livenessErr);
  EXPECT_EQ(verdict(keyFor(2, 21)), Reason::livenessErr);
  EXPECT_EQ(verdict(keyFor(3, 20, true, "c1c2c3c4c5c6c7c8c9cacbcc")), Reason::livenessErr);
  EXPECT_EQ(bench.failures(Reason::livenessErr), 3u);
}

TEST_F(TheReplayGuard, RefusesAKeyForAFormerMemberIdentifierOfThisEnd) {
  Bytes const frame = keyFor(1, 0);
  own->msgIdIs("d1d2d3d4d5d6d7d8d9dadbdc");
  own->msgNumIs(0);
  EXPECT_EQ(verdict(frame), Reason::livenessErr);
}

TEST_F(TheReplayGuard, AsksTheSameOfADistributedCak) {
  hello(1);
  bench.txInfo().cakDistInfoIs(Macsec::CakDistInfo(WardcodeLib::doEncodeKey(kSak), "c0de0009"));
  EXPECT_EQ(verdict(bench.sentFrame()), Reason::livenessErr);
}

TEST_F(TheReplayGuard, LearnsNothingFromAFrameThatItRefuses) {
  EXPECT_EQ(verdict(keyFor(9, 1)), Reason::livenessErr);
  EXPECT_EQ(verdict(keyFor(8, 20)), SubType::none);
}

TEST_F(TheReplayGuard, IsOutOfTheWayWhenItIsSwitchedOff) {
  bench.codec().replayGuardIs(false);
  Bytes const frame = keyFor(1, 1);
  EXPECT_EQ(verdict(frame), SubType::none);
  EXPECT_EQ(verdict(frame), SubType::none);
}

TEST_F(TheReplayGuard, LogsOnceAMinuteHoweverManyFramesItRefuses) {
  Bytes const frame = hello(1);
  for (int i = 0; i < 1000; ++i) verdict(frame);
  EXPECT_EQ(bench.world.logged("MACSECD_MKPDU_REPLAYED"), 1u);
  for (uint32_t i = 2; i < 1000; ++i) verdict(keyFor(i, 1));
  EXPECT_EQ(bench.world.logged("MACSECD_KEY_WITHOUT_PROOF"), 1u);
}

// A member that makes others up, or replays of more identifiers than are remembered.
TEST_F(TheReplayGuard, LeavesOutStrangersWhenTheListsAreFull) {
  for (size_t i = 0; i < PeerLimit::kMostPeers; ++i) own->potentialPeerIs(memberId(i));
  EXPECT_EQ(verdict(hello(1)), Reason::tooManyPeersErr);
  EXPECT_EQ(verdict(hello(1, memberId(5).charPtr())), SubType::none);
  // Who lists this end becomes a live peer, and needs no room among the potential ones.
  EXPECT_EQ(verdict(keyFor(2, 20)), SubType::none);
  for (size_t i = 0; i < PeerLimit::kMostPeers; ++i) own->livePeerIs(memberId(i));
  EXPECT_EQ(verdict(keyFor(3, 20)), Reason::tooManyPeersErr);
  EXPECT_EQ(bench.world.logged("MACSECD_TOO_MANY_PEERS"), 1u);
}

TEST_F(TheReplayGuard, HandsOnOnlyAsManyListedStrangersAsThereIsRoomFor) {
  for (size_t i = 0; i + 2 < PeerLimit::kMostPeers; ++i) own->potentialPeerIs(memberId(i));
  hello(1);
  bench.tx().livePeerIs(kMemberA, 20);
  bench.tx().livePeerIs(memberId(7), 3);
  for (size_t i = 1000; i < 1020; ++i) bench.tx().livePeerIs(memberId(i), 3);
  EXPECT_EQ(verdict(bench.sentFrame()), SubType::none);
  EXPECT_TRUE(bench.rx().livePeer(kMemberA));
  EXPECT_TRUE(bench.rx().livePeer(memberId(7)));
  EXPECT_EQ(bench.rx().livePeer().members(), 4u);
}

}  // namespace
}  // namespace Codec
