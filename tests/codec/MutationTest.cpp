#include <gtest/gtest.h>

#include "tests/codec/RandomMessage.h"
#include "tests/platform/AllocationCount.h"
#include "tests/support/Thinned.h"

namespace Codec {
namespace {

constexpr int kFrames = 100000 / static_cast<int>(Support::kEach);

void mutate(Bytes& frame, Dice& dice) {
  switch (dice.below(3)) {
    case 0:
      for (size_t n = 1 + dice.below(4); n-- > 0;) {
        frame[dice.below(frame.size())] ^= static_cast<uint8_t>(1 + dice.below(255));
      }
      return;
    case 1:
      frame.resize(dice.below(frame.size()));
      return;
    default: {
      Bytes const added(1 + dice.below(24), static_cast<uint8_t>(dice.below(256)));
      frame.insert(frame.begin() + static_cast<ptrdiff_t>(dice.below(frame.size())), added.begin(),
                   added.end());
    }
  }
}

uint64_t keysRefused(CodecBench& bench) {
  return bench.failures(SubType::distSakSetErr) + bench.failures(SubType::distCakSetErr);
}

bool distributesKey(CodecBench& bench) {
  return bench.txInfo().sakDistInfo() != Macsec::SakDistInfo() ||
         bench.txInfo().cakDistInfo() != Macsec::CakDistInfo();
}

TEST(Mutation, LeavesEverythingAsItIsUnlessTheFrameIsRight) {
  CodecBench bench;
  bench.actorIs();
  Dice dice(2);
  Bytes const first = bench.fullFrame();
  bench.receive(first);
  // The first refusal of each kind lets OpenSSL set itself up.
  Bytes spoiled = first;
  spoiled[190] ^= 1;
  resign(spoiled);
  bench.receive(spoiled);
  int accepted = 0;
  int refusedBehindTheIcv = 0;
  for (int i = 0; i < kFrames; ++i) {
    if (i % 100 == 0) fillRandom(bench, dice);
    Bytes frame = bench.sentFrame();
    bench.sent.clear();
    Bytes const original = frame;
    mutate(frame, dice);
    bool const resigned = dice.coin() && frame.size() >= 18 + 48;
    if (resigned) {
      if (dice.coin()) fixBodyLength(frame);
      resign(frame);
    }
    bool const same = frame.size() >= original.size() &&
                      std::equal(original.begin(), original.end(), frame.begin());
    uint32_t const count = bench.rx().count();
    std::string const before = textOf(bench.rx());
    uint64_t const icvFailures = bench.failures(SubType::icvValidationErr);
    uint64_t const keyFailures = keysRefused(bench);
    uint64_t const allocations = Macsec::allocations();
    bench.receive(frame);
    if (bench.rx().count() == count) {
      // A cipher is made for a key; only a peer that has the ICK can send one.
      if (!resigned || (!distributesKey(bench) && keysRefused(bench) == keyFailures)) {
        ASSERT_EQ(Macsec::allocations(), allocations) << i;
      }
      ASSERT_EQ(textOf(bench.rx()), before) << i;
      refusedBehindTheIcv += resigned && bench.failures(SubType::icvValidationErr) == icvFailures;
    } else {
      ASSERT_TRUE(resigned || same) << i;
      ++accepted;
    }
  }
  // Both sides of the ICV were reached, many times.
  EXPECT_GT(accepted, kFrames / 100);
  EXPECT_GT(refusedBehindTheIcv, kFrames / 100);
  EXPECT_GT(bench.failures(SubType::icvValidationErr), kFrames / 100u);
  for (SubType s : {SubType::eapolErr, SubType::basicParamSetErr, SubType::unrecognizedCkn,
                    SubType::livePeerListErr, SubType::potentialPeerListErr, SubType::sakUseSetErr,
                    SubType::distSakSetErr, SubType::distCakSetErr, SubType::icvIndicatorErr,
                    SubType::unrecognizedSetErr}) {
    EXPECT_GT(bench.failures(s), 0u) << s;
  }
}

}  // namespace
}  // namespace Codec
