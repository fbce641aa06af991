#include <gtest/gtest.h>

#include "tests/codec/ClearText.h"
#include "tests/codec/RandomMessage.h"

namespace Codec {
namespace {

TEST(RoundTrip, HandsUpWhatWasSentInEveryDialect) {
  CodecBench bench;
  bench.actorIs();
  Dice dice(1);
  for (int i = 0; i < 2000; ++i) {
    fillRandom(bench, dice);
    bench.codec().dialectIs(bench.intf, {static_cast<NameOnWire>(dice.below(2)),
                                         static_cast<IcvIndicator>(dice.below(3))});
    bench.receive(bench.sentFrame());
    ASSERT_EQ(clearText(bench.rx()), clearText(bench.tx())) << i;
    ASSERT_EQ(bench.rx().count(), static_cast<uint32_t>(i + 1));
  }
}

}  // namespace
}  // namespace Codec
