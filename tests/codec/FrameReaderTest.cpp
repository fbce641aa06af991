#include <gtest/gtest.h>

#include "model/SakUseSet.h"
#include "tests/codec/CodecBench.h"

namespace Codec {
namespace {

using Macsec::CipherSuite;

// Octets of the full frame in which its sets begin.
constexpr size_t kLive = 82;
constexpr size_t kPotential = 102;
constexpr size_t kUse = 122;
constexpr size_t kSakSet = 166;
constexpr size_t kIndicator = 206;

struct Spoiled {
  char const* what;
  SubType subType;
  void (*spoil)(Bytes&);
};

class SpoiledTest : public testing::TestWithParam<Spoiled> {};

TEST_P(SpoiledTest, IsRefusedUnderItsCounterAndChangesNothing) {
  CodecBench bench;
  bench.actorIs();
  Bytes frame = bench.fullFrame();
  bench.receive(frame);
  std::string const before = textOf(bench.rx());
  GetParam().spoil(frame);
  bench.receive(frame);
  EXPECT_EQ(bench.failures(GetParam().subType), 1u);
  EXPECT_EQ(bench.successes(), 1u);
  EXPECT_EQ(textOf(bench.rx()), before);
  EXPECT_EQ(bench.pam->rxPamCounter(bench.intf)->failure(), 1u);
  EXPECT_EQ(bench.pam->rxPamCounter(bench.intf)->success(), 1u);
}

// Each is wrong in what stands behind the check that has to refuse it too: the ICV no longer fits.
INSTANTIATE_TEST_SUITE_P(
    BeforeTheIcv, SpoiledTest,
    testing::Values(
        Spoiled{"Empty", SubType::eapolErr, [](Bytes& f) { f.clear(); }},
        Spoiled{"ShorterThanItsHeaders", SubType::eapolErr, [](Bytes& f) { f.resize(17); }},
        Spoiled{"BodyLongerThanTheFrame", SubType::eapolErr, [](Bytes& f) { f.pop_back(); }},
        Spoiled{"BodyUnder32", SubType::eapolErr,
                [](Bytes& f) { f.resize(18 + 28), fixBodyLength(f); }},
        Spoiled{"BodyNoMultipleOf4", SubType::eapolErr,
                [](Bytes& f) { f.push_back(0), fixBodyLength(f), resign(f); }},
        Spoiled{"OtherDestination", SubType::eapolErr, [](Bytes& f) { f[5] = 0, resign(f); }},
        Spoiled{"OtherEtherType", SubType::eapolErr, [](Bytes& f) { f[13] = 0x8f, resign(f); }},
        Spoiled{"OldEapolVersion", SubType::eapolErr, [](Bytes& f) { f[14] = 2, resign(f); }},
        Spoiled{"OtherEapolType", SubType::eapolErr, [](Bytes& f) { f[15] = 3, resign(f); }},
        Spoiled{"MkaVersion0", SubType::basicParamSetErr, [](Bytes& f) { f[18] = 0, resign(f); }},
        Spoiled{"NoName", SubType::basicParamSetErr, [](Bytes& f) { f[21] = 28, resign(f); }},
        Spoiled{"NameTooLong", SubType::basicParamSetErr, [](Bytes& f) { f[21] = 61, resign(f); }},
        Spoiled{"NoRoomForTheIcv", SubType::basicParamSetErr,
                [](Bytes& f) { f.resize(18 + 32 + 32), fixBodyLength(f); }},
        Spoiled{"UnknownName", SubType::unrecognizedCkn, [](Bytes& f) { f[50] ^= 1, resign(f); }},
        Spoiled{"ShorterName", SubType::unrecognizedCkn, [](Bytes& f) { f[21] = 59, resign(f); }},
        Spoiled{"OtherAlgorithm", SubType::basicParamSetErr, [](Bytes& f) { f[49] ^= 1; }},
        Spoiled{"WrongIcv", SubType::icvValidationErr, [](Bytes& f) { f.back() ^= 1; }},
        Spoiled{"ChangedSource", SubType::icvValidationErr, [](Bytes& f) { f[6] ^= 1; }}),
    [](auto const& test) { return std::string(test.param.what); });

INSTANTIATE_TEST_SUITE_P(
    BehindTheIcv, SpoiledTest,
    testing::Values(Spoiled{"LiveListOfAnOddLength", SubType::livePeerListErr,
                            [](Bytes& f) { f[kLive + 3] = 12, resign(f); }},
                    Spoiled{"LiveListBeyondTheEnd", SubType::livePeerListErr,
                            [](Bytes& f) { f[kLive + 2] = 1, resign(f); }},
                    Spoiled{"LiveListTwice", SubType::livePeerListErr,
                            [](Bytes& f) { f[kPotential] = 1, resign(f); }},
                    Spoiled{"PotentialListOfAnOddLength", SubType::potentialPeerListErr,
                            [](Bytes& f) { f[kPotential + 3] = 20, resign(f); }},
                    Spoiled{"SakUseOfAnotherLength", SubType::sakUseSetErr,
                            [](Bytes& f) { f[kUse + 3] = 36, resign(f); }},
                    Spoiled{"DistSakOfAnotherLength", SubType::distSakSetErr,
                            [](Bytes& f) { f[kSakSet + 3] = 32, resign(f); }},
                    Spoiled{"WrappedSakChanged", SubType::distSakSetErr,
                            [](Bytes& f) { f[kSakSet + 20] ^= 1, resign(f); }},
                    Spoiled{"SuiteOfAnotherKeyLength", SubType::distSakSetErr,
                            [](Bytes& f) { f[kSakSet + 15] = 4, resign(f); }},
                    Spoiled{"DistCakTooShort", SubType::distCakSetErr,
                            [](Bytes& f) { f[kLive] = 5, resign(f); }},
                    Spoiled{"DistCakWithoutIntegrity", SubType::distCakSetErr,
                            [](Bytes& f) { f[kSakSet] = 5, resign(f); }},
                    Spoiled{"IndicatorOfAnotherLength", SubType::icvIndicatorErr,
                            [](Bytes& f) { f[kIndicator + 3] = 8, resign(f); }},
                    Spoiled{"IndicatorInTheMiddle", SubType::icvIndicatorErr,
                            [](Bytes& f) { f[kLive] = 255, f[kLive + 3] = 4, resign(f); }},
                    Spoiled{"UnknownSetBeyondTheEnd", SubType::unrecognizedSetErr,
                            [](Bytes& f) { f[kSakSet] = 9, f[kSakSet + 2] = 9, resign(f); }}),
    [](auto const& test) { return std::string(test.param.what); });

TEST(FrameReader, HandsUpAllThatWasSent) {
  CodecBench bench;
  bench.actorIs();
  bench.receive(bench.fullFrame());
  EXPECT_EQ(bench.rx().count(), 1u);
  EXPECT_EQ(bench.rx().intfId(), bench.intf);
  auto const& info = *bench.rx().mkaInfo();
  EXPECT_EQ(info.baseInfo(), bench.txInfo().baseInfo());
  EXPECT_EQ(info.sakUseInfo(), bench.txInfo().sakUseInfo());
  EXPECT_EQ(info.sakDistInfo().anAndOffset(), Macsec::ANOffset(3, 1));
  EXPECT_EQ(info.sakDistInfo().cipherSuite(), CipherSuite::gcmAesXpn128);
  EXPECT_EQ(WardcodeLib::doDecodeKey(info.sakDistInfo().sak()), kSak);
  EXPECT_EQ(info.icvIndicatorInfo().icvLength(), 16);
  EXPECT_EQ(*bench.rx().livePeer(kMemberB), 3u);
  EXPECT_EQ(bench.rx().livePeer().members(), 1u);
  EXPECT_EQ(bench.rx().potentialPeer().members(), 1u);
}

TEST(FrameReader, LeavesSetsThatTheFrameLacksAtTheirDefault) {
  CodecBench bench;
  bench.actorIs();
  bench.receive(bench.fullFrame());
  bench.tx().livePeerDelAll();
  bench.tx().potentialPeerDelAll();
  bench.txInfo().sakUseInfoIs(Macsec::SakUseInfo());
  bench.txInfo().sakDistInfoIs(Macsec::SakDistInfo());
  bench.codec().dialectIs(bench.intf, {NameOnWire::octets, IcvIndicator::leftOut});
  bench.receive(bench.sentFrame());
  auto const& info = *bench.rx().mkaInfo();
  EXPECT_EQ(info.sakUseInfo(), Macsec::SakUseInfo());
  EXPECT_EQ(info.sakDistInfo(), Macsec::SakDistInfo());
  EXPECT_EQ(info.icvIndicatorInfo(), Macsec::IcvIndicatorInfo());
  EXPECT_TRUE(bench.rx().livePeer().empty() && bench.rx().potentialPeer().empty());
  EXPECT_EQ(bench.rx().count(), 2u);
}

TEST(FrameReader, AcceptsAHigherMkaVersion) {
  CodecBench bench;
  bench.actorIs();
  Bytes frame = bench.fullFrame();
  frame[18] = 3;
  frame[14] = 4;
  resign(frame);
  bench.receive(frame);
  EXPECT_EQ(bench.successes(), 1u);
}

TEST(FrameReader, IgnoresPaddingBehindTheBody) {
  CodecBench bench;
  bench.actorIs();
  Bytes frame = bench.fullFrame();
  frame.resize(frame.size() + 7, 0xee);
  bench.receive(frame);
  EXPECT_EQ(bench.successes(), 1u);
}

/// A frame of the basic set, the sets given, and the ICV.
Bytes framed(CodecBench& bench, std::string const& sets) {
  bench.fillBasic();
  Bytes frame = bench.sentFrame();
  frame.resize(82);
  Bytes const added = Macsec::octetsOf(sets + "ff000004" + std::string(32, '0'));
  frame.insert(frame.end(), added.begin(), added.end());
  fixBodyLength(frame);
  resign(frame);
  return frame;
}

constexpr char kWrapped[] = "116771c88648360e9aaff76dc6e18292b6496b89c29c10fe";

TEST(FrameReader, SkipsUnknownSetsByTheirLengthAndCountsThem) {
  CodecBench bench;
  bench.actorIs();
  bench.receive(framed(bench,
                       "0600000501020304050000000800000001000010"
                       "b1b2b3b4b5b6b7b8b9babbbc00000003"));
  EXPECT_EQ(bench.successes(), 1u);
  EXPECT_EQ(bench.failures(SubType::unrecognizedSetErr), 2u);
  EXPECT_EQ(bench.pam->rxPamCounter(bench.intf)->failure(), 0u);
  EXPECT_EQ(*bench.rx().livePeer(kMemberB), 3u);
}

TEST(FrameReader, TakesTheDefaultSuiteAsNoSuiteOfOurs) {
  CodecBench bench;
  bench.actorIs();
  bench.receive(framed(bench, std::string("0440001c00000005") + kWrapped));
  auto const& sak = bench.rx().mkaInfo()->sakDistInfo();
  EXPECT_EQ(sak.cipherSuite(), CipherSuite::None);
  EXPECT_EQ(sak.keyNum(), 5u);
  EXPECT_EQ(WardcodeLib::doDecodeKey(sak.sak()), kSak);
}

TEST(FrameReader, TakesASuiteThatIsntOursAsNone) {
  CodecBench bench;
  bench.actorIs();
  bench.receive(framed(bench, std::string("04400024000000050080c20001000001") + kWrapped));
  EXPECT_EQ(bench.rx().mkaInfo()->sakDistInfo().cipherSuite(), CipherSuite::None);
}

TEST(FrameReader, NeverTakesADistributedSakForNone) {
  CodecBench bench;
  bench.actorIs();
  for (std::string const& set :
       {std::string("04000000"), std::string("0400001c00000000") + kWrapped,
        std::string("04000024000000000080c20001000003") + kWrapped}) {
    bench.receive(framed(bench, set));
    EXPECT_NE(bench.rx().mkaInfo()->sakDistInfo(), Macsec::SakDistInfo()) << set;
  }
  EXPECT_EQ(bench.successes(), 3u);
}

TEST(FrameReader, KeepsTheStoredFormOfASakThatIsRepeated) {
  CodecBench bench;
  bench.actorIs();
  Bytes const frame = bench.fullFrame();
  bench.receive(frame);
  auto const first = bench.rx().mkaInfo()->sakDistInfo();
  bench.receive(frame);
  EXPECT_EQ(bench.rx().mkaInfo()->sakDistInfo(), first);
}

TEST(FrameReader, UnwrapsARepeatedSakAgainUnderAnotherKek) {
  CodecBench bench;
  auto const actor = bench.actorIs();
  Bytes const frame = bench.fullFrame();
  bench.receive(frame);
  actor->kekIs(WardcodeLib::doEncodeKey("000102030405060708090a0b0c0d0e0f"));
  bench.receive(frame);
  EXPECT_EQ(bench.successes(), 1u);
  EXPECT_EQ(bench.failures(SubType::distSakSetErr), 1u);
}

TEST(FrameReader, TakesAnEmptySakUseSetAsNone) {
  CodecBench bench;
  bench.actorIs();
  bench.receive(framed(bench, "03000000"));
  EXPECT_EQ(bench.successes(), 1u);
  EXPECT_EQ(bench.rx().mkaInfo()->sakUseInfo(), Macsec::SakUseInfo());
}

TEST(FrameReader, TakesTwelveZeroOctetsAsTheEmptyIdentifier) {
  CodecBench bench;
  bench.actorIs();
  bench.receive(framed(bench, "01000010" + std::string(24, '0') + "00000009"));
  EXPECT_EQ(*bench.rx().livePeer(Vesk::String8()), 9u);
}

TEST(FrameReader, HandsANameUpInTheSpellingOfItsOwner) {
  CodecBench bench;
  bench.actorIs("ABcd");
  bench.fillBasic("ABcd");
  for (auto form : {NameOnWire::octets, NameOnWire::characters}) {
    bench.codec().dialectIs(bench.intf, {form, IcvIndicator::length16});
    bench.receive(bench.sentFrame());
    EXPECT_EQ(bench.rx().mkaInfo()->baseInfo().ckn(), "ABcd");
  }
  EXPECT_EQ(bench.successes(), 2u);
}

TEST(FrameReader, TellsTwoSpellingsOfOneNameByTheirKeys) {
  constexpr char kOther[] = "fedcba9876543210fedcba9876543210";
  CodecBench bench;
  bench.actorIs("abcd");
  bench.actorIs("ABCD", kOther);
  bench.fillBasic("ABCD");
  bench.receive(bench.sentFrame());
  EXPECT_EQ(bench.rx().mkaInfo()->baseInfo().ckn(), "ABCD");
}

TEST(FrameReader, KnowsACknOnItsOwnInterfaceAlone) {
  CodecBench bench;
  bench.actorIs();
  Bytes const frame = bench.fullFrame();
  Lumo::IntfId const other("Ethernet2");
  bench.eth->intfStatusIs(other, Lumo::EthAddr({2, 0, 0, 0, 0, 2}), 2);
  bench.codec().receive(other, frame);
  EXPECT_EQ(
      bench.codec().counters().value(other, Direction::rx, Type::failure, SubType::unrecognizedCkn),
      1u);
  EXPECT_EQ(bench.rx().count(), 0u);
}

TEST(FrameReader, UnwrapsADistributedCakOfEitherLength) {
  for (size_t digits : {32u, 64u}) {
    for (char const* name : {"", "abcd", "abcdef"}) {
      CodecBench bench;
      bench.actorIs();
      bench.fillBasic();
      std::string const cak(digits, '7');
      bench.txInfo().cakDistInfoIs(
          Macsec::CakDistInfo(WardcodeLib::doEncodeKey(cak), Vesk::String8(name)));
      bench.receive(bench.sentFrame());
      auto const& info = bench.rx().mkaInfo()->cakDistInfo();
      EXPECT_EQ(WardcodeLib::doDecodeKey(info.cak()), Vesk::String8(cak));
      EXPECT_EQ(info.ckn(), Vesk::String8(name));
    }
  }
}

}  // namespace
}  // namespace Codec
