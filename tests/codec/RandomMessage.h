#pragma once

#include "tests/codec/CodecBench.h"
#include "tests/codec/Dice.h"

namespace Codec {

inline std::string randomHex(Dice& dice, size_t digits) {
  std::string text;
  while (text.size() < digits) text += "0123456789abcdef"[dice.below(16)];
  return text;
}

inline uint32_t randomWord(Dice& dice) { return static_cast<uint32_t>(dice.next()); }

inline Macsec::KeyInfo randomKeyInfo(Dice& dice) {
  if (dice.below(4) == 0) return Macsec::KeyInfo();
  return Macsec::KeyInfo(static_cast<uint8_t>(dice.below(4)), dice.coin(), dice.coin(),
                         Vesk::String8(randomHex(dice, 24)), randomWord(dice), randomWord(dice));
}

inline Macsec::SakDistInfo randomSakDist(Dice& dice) {
  bool const isLong = dice.coin();
  return Macsec::SakDistInfo(
      Macsec::ANOffset(static_cast<uint8_t>(dice.below(4)), static_cast<uint8_t>(dice.below(4))),
      randomWord(dice),
      isLong ? Macsec::CipherSuite::gcmAesXpn256 : Macsec::CipherSuite::gcmAesXpn128,
      WardcodeLib::doEncodeKey(randomHex(dice, isLong ? 64 : 32)));
}

/// Fills the message to transmit with whatever a message can say.
inline void fillRandom(CodecBench& bench, Dice& dice) {
  bench.fillBasic();
  auto& info = bench.txInfo();
  info.baseInfoIs(Macsec::BasicInfo(
      static_cast<uint8_t>(dice.below(256)), dice.coin(), dice.coin(),
      static_cast<uint8_t>(dice.below(4)),
      Macsec::Sci(Lumo::EthAddr({2, 0, 0, 0, 0, static_cast<uint8_t>(dice.below(256))}),
                  static_cast<uint16_t>(dice.below(65536))),
      Vesk::String8(randomHex(dice, 24)), randomWord(dice), kCkn));
  bench.tx().livePeerDelAll();
  bench.tx().potentialPeerDelAll();
  for (size_t n = dice.below(8); n-- > 0;) {
    bench.tx().livePeerIs(Vesk::String8(randomHex(dice, 24)), randomWord(dice));
  }
  for (size_t n = dice.below(8); n-- > 0;) {
    bench.tx().potentialPeerIs(Vesk::String8(randomHex(dice, 24)), randomWord(dice));
  }
  info.sakUseInfoIs(
      Macsec::SakUseInfo(randomKeyInfo(dice), randomKeyInfo(dice),
                         Macsec::PlainTextInfo(dice.coin(), dice.coin(), dice.coin())));
  info.sakDistInfoIs(dice.coin() ? randomSakDist(dice) : Macsec::SakDistInfo());
  info.cakDistInfoIs(dice.below(4) > 0
                         ? Macsec::CakDistInfo()
                         : Macsec::CakDistInfo(WardcodeLib::doEncodeKey(randomHex(dice, 32)),
                                               Vesk::String8(randomHex(dice, 2 * dice.below(17)))));
}

}  // namespace Codec
