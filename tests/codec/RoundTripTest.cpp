#include <gtest/gtest.h>

#include "tests/codec/RandomMessage.h"

namespace Codec {
namespace {

/// The message with its keys in clear, since each encoding of a key differs.
std::string clearText(Macsec::MkaMessageInfo const& message) {
  auto const& info = *message.mkaInfo();
  std::string text = Vesk::valueToStrep(info.baseInfo()) + Vesk::valueToStrep(info.sakUseInfo());
  auto sak = info.sakDistInfo();
  sak.sakIs(WardcodeLib::doDecodeKey(sak.sak()));
  auto cak = info.cakDistInfo();
  cak.cakIs(WardcodeLib::doDecodeKey(cak.cak()));
  text += Vesk::valueToStrep(sak) + Vesk::valueToStrep(cak);
  for (auto const& peer : message.livePeer()) {
    text += "L" + std::string(peer.fwkKey().view()) + std::to_string(peer.value());
  }
  for (auto const& peer : message.potentialPeer()) {
    text += "P" + std::string(peer.fwkKey().view()) + std::to_string(peer.value());
  }
  return text;
}

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
