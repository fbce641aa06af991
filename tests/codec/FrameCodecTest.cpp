#include "codec/FrameCodec.h"

#include <gtest/gtest.h>

#include "tests/codec/CodecBench.h"
#include "tests/platform/AllocationCount.h"

namespace Codec {
namespace {

TEST(FrameCodec, FollowsAChangeOfTheActorsKeys) {
  constexpr char kOther[] = "fedcba9876543210fedcba9876543210";
  CodecBench bench;
  bench.actorIs();
  Bytes const old = bench.fullFrame();
  bench.actorIs(kCkn, kOther);
  bench.receive(old);
  EXPECT_EQ(bench.failures(SubType::icvValidationErr), 1u);
  bench.receive(bench.sentFrame());
  EXPECT_EQ(bench.successes(), 1u);
}

TEST(FrameCodec, TakesActorsThatCameBeforeItAndAfterIt) {
  CodecBench bench;
  bench.actorIs("aa");
  bench.codec();
  bench.actorIs("bb");
  for (char const* ckn : {"aa", "bb"}) {
    bench.fillBasic(ckn);
    EXPECT_FALSE(bench.sentFrame().empty());
  }
}

TEST(FrameCodec, ForgetsAnActorThatGoes) {
  CodecBench bench;
  bench.actorIs();
  Bytes const frame = bench.fullFrame();
  bench.status->portStatus(bench.intf)->actorStatusDel(kCkn);
  bench.receive(frame);
  EXPECT_EQ(bench.failures(SubType::unrecognizedCkn), 1u);
  bench.actorIs();
  bench.receive(frame);
  EXPECT_EQ(bench.successes(), 1u);
  bench.status->portStatusDel(bench.intf);
  bench.receive(frame);
  EXPECT_EQ(bench.failures(SubType::unrecognizedCkn), 2u);
}

TEST(FrameCodec, WipesTheKeysWithTheActor) {
  CodecBench bench;
  bench.actorIs();
  bench.codec();
  ASSERT_TRUE(Macsec::opensslIsCounted());
  auto const ick = Macsec::octetsOf(derived(kCak, kCkn, true).view());
  Macsec::freedOctetsWatchedIs(ick);
  bench.status->portStatus(bench.intf)->actorStatusDel(kCkn);
  EXPECT_GT(Macsec::freedBlocks(), 0u);
  EXPECT_EQ(Macsec::freedBlocksWithWatchedOctets(), 0u);
  Macsec::freedOctetsWatchedIs({});
}

TEST(FrameCodec, KeepsTheEntriesOfItsInterfaces) {
  CodecBench bench;
  bench.codec();
  EXPECT_FALSE(bench.pam->mkaIntf(bench.intf));
  EXPECT_TRUE(bench.pam->txPamCounter(bench.intf) && bench.pam->rxPamCounter(bench.intf));
  bench.actorIs();
  EXPECT_TRUE(bench.pam->mkaIntf(bench.intf));
  bench.fullFrame();
  EXPECT_EQ(bench.pam->txPamCounter(bench.intf)->success(), 1u);
  bench.status->portStatusDel(bench.intf);
  EXPECT_FALSE(bench.pam->mkaIntf(bench.intf));
  EXPECT_EQ(bench.pam->txPamCounter(bench.intf)->success(), 1u);
}

TEST(FrameCodec, FollowsAReplacedTransmitEntity) {
  CodecBench bench;
  bench.actorIs();
  bench.codec();
  bench.pam->txMessageInfoDel();
  bench.pam->txMessageInfoIs();
  EXPECT_FALSE(bench.fullFrame().empty());
}

TEST(FrameCodec, StaysAwayOnceItIsGone) {
  CodecBench bench;
  bench.actorIs();
  bench.codec();
  bench.codecDel();
  bench.fillAll();
  bench.tx().countInc(1);
  bench.actorIs("aa");
  bench.eth->intfStatusDel(bench.intf);
  EXPECT_TRUE(bench.sent.empty());
}

TEST(FrameCodec, CountsInTheTableThatItIsGiven) {
  CodecBench bench;
  auto const table = Macsec::Brine::MessageCounters::inProcess("table");
  uint64_t counted = 0;
  for (int lives = 0; lives < 2; ++lives) {
    FrameCodec codec(bench.pam, bench.status, bench.eth, bench, table);
    codec.receive(bench.intf, {});
    EXPECT_EQ(table->value(bench.intf, Direction::rx, Type::failure, SubType::eapolErr), ++counted)
        << "the table goes on where the codec ended";
  }
}

TEST(FrameCodec, AllocatesNothingForAFrameThatItRefuses) {
  CodecBench bench;
  bench.actorIs();
  Bytes const good = bench.fullFrame();
  bench.receive(good);
  for (size_t at : {size_t{0}, size_t{18}, size_t{21}, size_t{50}, size_t{85}, good.size() - 1}) {
    Bytes frame = good;
    frame[at] ^= 0x21;
    if (at == 85) resign(frame);
    bench.receive(frame);
    uint64_t const before = Macsec::allocations();
    bench.receive(frame);
    EXPECT_EQ(Macsec::allocations(), before) << at;
  }
  EXPECT_EQ(bench.successes(), 1u);
}

TEST(FrameCodec, AllocatesNothingForTextsThatStandAlready) {
  CodecBench bench;
  bench.actorIs();
  Bytes const good = bench.fullFrame();
  bench.receive(good);
  uint64_t const before = Macsec::allocations();
  bench.receive(good);
  EXPECT_EQ(Macsec::allocations(), before);
  EXPECT_EQ(bench.successes(), 2u);
}

TEST(FrameCodec, SharesTheTextsThatItHandsUp) {
  CodecBench bench;
  auto const actor = bench.actorIs();
  Vesk::String8 const own = kMemberA;
  auto basic = Macsec::BasicInfo();
  bench.fillBasic();
  basic = bench.txInfo().baseInfo();
  basic.msgIdIs(own);
  bench.txInfo().baseInfoIs(Macsec::BasicInfo());
  bench.txInfo().baseInfoIs(basic);
  bench.receive(bench.sentFrame());
  auto const& up = bench.rx().mkaInfo()->baseInfo();
  EXPECT_EQ(up.msgId().charPtr(), own.charPtr());
  EXPECT_EQ(up.ckn().charPtr(), actor->ckn().charPtr());
}

}  // namespace
}  // namespace Codec
