#include <gtest/gtest.h>

#include "codec/FrameBuffer.h"
#include "tests/codec/CodecBench.h"

namespace Codec {
namespace {

using Macsec::CipherSuite;

std::string hex(Bytes const& octets) { return std::string(Macsec::hexString(octets).view()); }

TEST(FrameWriter, WritesAWholeFrameOctetByOctet) {
  CodecBench bench;
  bench.actorIs();
  EXPECT_EQ(hex(bench.fullFrame()),
            "0180c2000003"
            "020000000001"
            "888e"
            "03"
            "05"
            "00d0"
            "010ae03c"
            "0200000000010001"
            "a1a2a3a4a5a6a7a8a9aaabac"
            "00000007"
            "0080c201"
            "6162636465666768696a6b6c6d6e6f707172737475767778797a303132333435"
            "01000010b1b2b3b4b5b6b7b8b9babbbc00000003"
            "02000010c1c2c3c4c5c6c7c8c9cacbcc01020304"
            "03db5028"
            "b1b2b3b4b5b6b7b8b9babbbc0000000200000066"
            "a1a2a3a4a5a6a7a8a9aaabac0000000100000055"
            "04d00024000000020080c20001000003"
            "116771c88648360e9aaff76dc6e18292b6496b89c29c10fe"
            "ff000004"
            "9ea5d3af34de1f1d092f24bf6365d9e1");
}

TEST(FrameWriter, LeavesOutWhatTheMessageLacks) {
  CodecBench bench;
  bench.actorIs();
  bench.fillBasic();
  // Headers, basic set with its name, ICV indicator, ICV.
  EXPECT_EQ(bench.sentFrame().size(), 18u + 32 + 32 + 4 + 16);
  EXPECT_EQ(bench.sentOn, bench.intf);
}

TEST(FrameWriter, LeavesOutASakThatAnotherKeyServerHasMade) {
  CodecBench bench;
  auto const actor = bench.actorIs();
  size_t const whole = bench.fullFrame().size();
  Macsec::Sak sak{Macsec::AssociationNumber(1)};
  sak.keyMsgIdIs(kMemberA);
  actor->distSakIs(sak);
  EXPECT_EQ(bench.fullFrame().size(), whole);
  sak.keyMsgIdIs(kMemberB);
  actor->distSakIs(sak);
  EXPECT_EQ(bench.fullFrame().size(), whole - 4 - 36);
}

TEST(FrameWriter, TakesTheMessageInsideTheNotification) {
  CodecBench bench;
  bench.actorIs();
  Bytes const first = bench.fullFrame();
  bench.txInfo().baseInfoIs(Macsec::BasicInfo());
  bench.tx().livePeerDelAll();
  EXPECT_EQ(bench.sent.back(), first);
  EXPECT_EQ(bench.sent.size(), 1u);
}

TEST(FrameWriter, EndsAShortNameWithZerosThatDontCount) {
  CodecBench bench;
  bench.actorIs("abcdef");
  bench.fillBasic("abcdef");
  Bytes const frame = bench.sentFrame();
  EXPECT_EQ(hex(frame).substr(2 * 20, 4), "e01f");
  EXPECT_EQ(hex(frame).substr(2 * 50, 8), "abcdef00");
}

TEST(FrameWriter, SendsANameThatIsNoHexadecimalTextAsItsCharacters) {
  CodecBench bench;
  bench.actorIs("core");
  bench.fillBasic("core");
  EXPECT_EQ(hex(bench.sentFrame()).substr(2 * 50, 8), "636f7265");
}

TEST(FrameWriter, FollowsTheDialectOfItsInterface) {
  CodecBench bench;
  bench.actorIs("abcd");
  bench.fillBasic("abcd");
  bench.codec().dialectIs(bench.intf, {NameOnWire::characters, IcvIndicator::length16});
  std::string const sixteen = hex(bench.sentFrame());
  EXPECT_EQ(sixteen.substr(2 * 50, 8), "61626364");
  EXPECT_EQ(sixteen.substr(sixteen.size() - 40, 8), "ff000010");
  bench.codec().dialectIs(bench.intf, {NameOnWire::octets, IcvIndicator::leftOut});
  EXPECT_EQ(bench.sentFrame().size(), 18u + 32 + 4 + 16);
  EXPECT_EQ(bench.codec().dialect(Lumo::IntfId("other")), Dialect());
}

TEST(FrameWriter, WritesANameOfMoreThan32CharactersAsOctetsInEveryDialect) {
  CodecBench bench;
  bench.actorIs();
  bench.fillBasic();
  bench.codec().dialectIs(bench.intf, {NameOnWire::characters, IcvIndicator::length4});
  EXPECT_EQ(hex(bench.sentFrame()).substr(2 * 50, 64), kCkn);
}

TEST(FrameWriter, WritesAKeyOf256BitsInTheLongForm) {
  CodecBench bench;
  bench.actorIs();
  bench.fillBasic();
  bench.txInfo().sakDistInfoIs(Macsec::SakDistInfo(Macsec::ANOffset(0, 0), 0,
                                                   CipherSuite::gcmAesXpn256,
                                                   WardcodeLib::doEncodeKey(std::string(64, '5'))));
  std::string const frame = hex(bench.sentFrame());
  EXPECT_EQ(frame.substr(2 * 82, 32), "04000034000000000080c20001000004");
}

struct Unsendable {
  char const* what;
  SubType subType;
  void (*spoil)(CodecBench&);
};

class UnsendableTest : public testing::TestWithParam<Unsendable> {};

TEST_P(UnsendableTest, IsCountedAndNotSent) {
  CodecBench bench;
  bench.actorIs();
  bench.fillAll();
  GetParam().spoil(bench);
  EXPECT_TRUE(bench.sentFrame().empty());
  EXPECT_EQ(bench.failures(GetParam().subType, Direction::tx), 1u);
  EXPECT_EQ(bench.successes(Direction::tx), 0u);
}

INSTANTIATE_TEST_SUITE_P(
    FrameWriter, UnsendableTest,
    testing::Values(Unsendable{"NoSuchActor", SubType::unrecognizedCkn,
                               [](CodecBench& b) { b.fillBasic("other"); }},
                    Unsendable{"NoAddress", SubType::eapolErr,
                               [](CodecBench& b) { b.eth->intfStatusDel(b.intf); }},
                    Unsendable{"NoIck", SubType::icvValidationErr,
                               [](CodecBench& b) { b.actorIs()->ickIs("nonsense"); }},
                    Unsendable{"NoKek", SubType::distSakSetErr,
                               [](CodecBench& b) { b.actorIs()->kekIs(Vesk::String8()); }},
                    Unsendable{"SakThatDoesntDecode", SubType::distSakSetErr,
                               [](CodecBench& b) {
                                 b.txInfo().sakDistInfoIs(Macsec::SakDistInfo(
                                     Macsec::ANOffset(), 1, CipherSuite::gcmAesXpn128, "nonsense"));
                               }},
                    Unsendable{"SakOfAnotherLength", SubType::distSakSetErr,
                               [](CodecBench& b) {
                                 b.txInfo().sakDistInfoIs(Macsec::SakDistInfo(
                                     Macsec::ANOffset(), 1, CipherSuite::gcmAesXpn256,
                                     WardcodeLib::doEncodeKey(kSak)));
                               }},
                    Unsendable{"CakThatDoesntDecode", SubType::distCakSetErr,
                               [](CodecBench& b) {
                                 b.txInfo().cakDistInfoIs(Macsec::CakDistInfo("nonsense", "group"));
                               }},
                    Unsendable{"BadOwnIdentifier", SubType::basicParamSetErr,
                               [](CodecBench& b) {
                                 auto basic = b.txInfo().baseInfo();
                                 basic.msgIdIs("nonsense");
                                 b.txInfo().baseInfoIs(basic);
                               }},
                    Unsendable{"BadPeerIdentifier", SubType::livePeerListErr,
                               [](CodecBench& b) { b.tx().livePeerIs("nonsense", 1); }}),
    [](auto const& test) { return std::string(test.param.what); });

/// Member identifiers, each another one.
Vesk::String8 member(int number) {
  std::array<uint8_t, 12> id{0xb0};
  id[10] = static_cast<uint8_t>(number >> 8);
  id[11] = static_cast<uint8_t>(number);
  return Macsec::MemberIdentifier(id).stringValue();
}

/// All that a frame can hold beside its peers, in their longest forms.
void fillLongest(CodecBench& bench) {
  bench.fillAll();
  bench.tx().livePeerDelAll();
  bench.tx().potentialPeerDelAll();
  auto const key = WardcodeLib::doEncodeKey(std::string(64, '5'));
  bench.txInfo().sakDistInfoIs(
      Macsec::SakDistInfo(Macsec::ANOffset(0, 0), 0, CipherSuite::gcmAesXpn256, key));
  bench.txInfo().cakDistInfoIs(Macsec::CakDistInfo(key, Vesk::String8(kCkn)));
}

TEST(FrameWriter, SendsWhatFitsOfAPotentialListOfAnyLengthAndEverythingElse) {
  for (int const peers : {10, 70, 73, 74, 75, 76, 77, 100, 1000}) {
    CodecBench bench;
    bench.actorIs();
    fillLongest(bench);
    bench.tx().livePeerIs(kMemberB, 3);
    for (int at = 0; at < peers; ++at) bench.tx().potentialPeerIs(member(at), 1);
    Bytes const frame = bench.sentFrame();
    ASSERT_FALSE(frame.empty()) << peers;
    EXPECT_LE(frame.size(), FrameBuffer::kMaxFrame);
    bench.receive(frame);
    ASSERT_EQ(bench.successes(), 1u) << peers;
    size_t const listed = bench.rx().potentialPeer().members();
    EXPECT_EQ(listed, static_cast<size_t>(std::min(peers, 75))) << peers;
    EXPECT_EQ(bench.failures(SubType::potentialPeerListErr, Direction::tx), peers > 75 ? 1u : 0u);
    EXPECT_EQ(bench.failures(SubType::livePeerListErr, Direction::tx), 0u);
    EXPECT_EQ(bench.successes(Direction::tx), 1u);
    EXPECT_NE(bench.rx().livePeer(kMemberB), nullptr);
    EXPECT_EQ(bench.rx().mkaInfo()->sakUseInfo(), bench.txInfo().sakUseInfo());
    EXPECT_NE(bench.rx().mkaInfo()->sakDistInfo(), Macsec::SakDistInfo());
    EXPECT_NE(bench.rx().mkaInfo()->cakDistInfo(), Macsec::CakDistInfo());
  }
}

TEST(FrameWriter, SendsAFrameEvenWhenTheLivePeersHaveNoRoom) {
  CodecBench bench;
  bench.actorIs();
  fillLongest(bench);
  for (int at = 0; at < 200; ++at) bench.tx().livePeerIs(member(at), 1);
  bench.tx().potentialPeerIs(kMemberB, 3);
  bench.receive(bench.sentFrame());
  ASSERT_EQ(bench.successes(), 1u);
  EXPECT_EQ(bench.rx().livePeer().members(), 77u);
  EXPECT_EQ(bench.rx().potentialPeer().members(), 0u);
  EXPECT_EQ(bench.failures(SubType::livePeerListErr, Direction::tx), 1u);
  EXPECT_EQ(bench.failures(SubType::potentialPeerListErr, Direction::tx), 1u);
}

TEST(FrameWriter, ListsPeersThatWereHeardBeforeThoseThatOthersOnlyList) {
  CodecBench bench;
  auto const actor = bench.actorIs();
  bench.fillBasic();
  for (int at = 0; at < 200; ++at) {
    bench.tx().potentialPeerIs(member(at), 1);
    Macsec::BasicInfo heard;
    if (at % 10 == 0) heard.sciIs(bench.sci);
    actor->potentialPeerIs(member(at))->baseInfoIs(heard);
  }
  bench.receive(bench.sentFrame());
  ASSERT_GT(bench.rx().potentialPeer().members(), 30u);
  for (int at = 0; at < 200; at += 10) {
    EXPECT_NE(bench.rx().potentialPeer(member(at)), nullptr) << at;
  }
}

TEST(FrameWriter, CountsOnAnInterfaceThatNobodyKnows) {
  CodecBench bench;
  bench.fillBasic();
  bench.tx().intfIdIs(Lumo::IntfId("nowhere"));
  EXPECT_TRUE(bench.sentFrame().empty());
  EXPECT_EQ(bench.codec().counters().value(Lumo::IntfId(), Direction::tx, Type::failure,
                                           SubType::unrecognizedCkn),
            1u);
}

}  // namespace
}  // namespace Codec
