#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "codec/FrameCodec.h"
#include "model/Factories.h"
#include "platform/AesCmac.h"
#include "platform/Hex.h"
#include "platform/KeyDerivation.h"
#include "platform/KeyWrap.h"
#include "platform/WardcodeLib.h"
#include "tests/platform/CountingWorld.h"
#include "tests/platform/OctetText.h"

namespace Codec {

using Bytes = std::vector<uint8_t>;
using Direction = Macsec::MessageCounterDirection;
using Type = Macsec::MessageCounterType;

constexpr char kCak[] = "0123456789abcdef0123456789abcdef";
constexpr char kCkn[] = "6162636465666768696a6b6c6d6e6f707172737475767778797a303132333435";
constexpr char kMemberA[] = "a1a2a3a4a5a6a7a8a9aaabac";
constexpr char kMemberB[] = "b1b2b3b4b5b6b7b8b9babbbc";
constexpr char kSak[] = "378f101a582e734030e761c62b7ab8c9";

inline Vesk::String8 derived(char const* cak, std::string const& ckn, bool ick) {
  Vesk::String8 out;
  int const bits = static_cast<int>(std::string(cak).size()) * 4;
  (ick ? Macsec::deriveIck : Macsec::deriveKek)(Macsec::chars(cak), Macsec::chars(ckn.c_str()),
                                                bits, out);
  return out;
}

/// One switch with a codec and no engine: what goes out is kept, what comes in stands in `rx`.
class CodecBench : public FrameSink {
 public:
  CodecBench() { eth->intfStatusIs(intf, Lumo::EthAddr({2, 0, 0, 0, 0, 1}), 1); }

  void send(Lumo::IntfId intfId, std::span<uint8_t const> frame) override {
    sentOn = intfId;
    sent.emplace_back(frame.begin(), frame.end());
  }

  Vesk::Ptr<Macsec::MkaActorStatus> actorIs(std::string const& ckn = kCkn, char const* cak = kCak) {
    auto actor = status->portStatusIs(intf)->actorStatusIs(Vesk::String8(ckn));
    actor->ickIs(WardcodeLib::doEncodeKey(derived(cak, ckn, true)));
    actor->kekIs(WardcodeLib::doEncodeKey(derived(cak, ckn, false)));
    return actor;
  }

  /// The message to transmit, as an actor fills it.
  Macsec::MkaMessageInfo& tx() { return *pam->txMessageInfo(); }
  Macsec::MkaMessageInfo& rx() { return *pam->rxMessageInfo(); }
  Macsec::MkaInfo& txInfo() { return *tx().mkaInfoIs(); }

  void fillBasic(std::string const& ckn = kCkn) {
    tx().intfIdIs(intf);
    txInfo().baseInfoIs(Macsec::BasicInfo(10, true, true, 2, sci, kMemberA, 7, Vesk::String8(ckn)));
  }
  void fillAll() {
    fillBasic();
    tx().livePeerIs(kMemberB, 3);
    tx().potentialPeerIs("c1c2c3c4c5c6c7c8c9cacbcc", 0x01020304);
    txInfo().sakUseInfoIs(Macsec::SakUseInfo(Macsec::KeyInfo(2, true, true, kMemberA, 1, 0x55),
                                             Macsec::KeyInfo(3, false, true, kMemberB, 2, 0x66),
                                             Macsec::PlainTextInfo(false, true, true)));
    txInfo().sakDistInfoIs(Macsec::SakDistInfo(Macsec::ANOffset(3, 1), 2,
                                               Macsec::CipherSuite::gcmAesXpn128,
                                               WardcodeLib::doEncodeKey(kSak)));
  }
  /// Sends what has been filled in; the frame, or none if it was refused.
  Bytes sentFrame() {
    codec();
    size_t const before = sent.size();
    tx().countInc(1);
    return sent.size() > before ? sent.back() : Bytes();
  }
  Bytes fullFrame() {
    fillAll();
    return sentFrame();
  }
  void receive(Bytes const& frame) { codec().receive(intf, frame); }

  FrameCodec& codec() {
    if (codec_) return *codec_;
    codec_ = std::make_unique<FrameCodec>(pam, status, eth, *this);
    codec_->replayGuardIs(hasReplayGuard);
    return *codec_;
  }
  void codecDel() { codec_.reset(); }

  uint64_t failures(SubType subType, Direction direction = Direction::rx) {
    return codec().counters().value(intf, direction, Type::failure, subType);
  }
  uint64_t successes(Direction direction = Direction::rx) {
    return codec().counters().value(intf, direction, Type::success, SubType::none);
  }

  Vesk::CountingWorld world;
  Vesk::WorldScope scope{world};
  Lumo::IntfId intf{"Ethernet1"};
  Macsec::Sci sci{Lumo::EthAddr({2, 0, 0, 0, 0, 1}), 1};
  Vesk::Ptr<Interface::EthIntfStatusDir> eth = Interface::EthIntfStatusDir::EthIntfStatusDirIs("e");
  Vesk::Ptr<Macsec::Status> status = Macsec::statusFactory("status");
  Vesk::Ptr<Macsec::MkaPamManager> pam = Macsec::mkaPamManagerFactory(nullptr);
  /// Most tests are of frames as such, and give one frame again and again.
  bool hasReplayGuard = false;
  std::vector<Bytes> sent;
  Lumo::IntfId sentOn;

 private:
  std::unique_ptr<FrameCodec> codec_;
};

/// Puts a right ICV at the end of a frame that was changed.
inline void resign(Bytes& frame, char const* cak = kCak, std::string const& ckn = kCkn) {
  if (frame.size() < 16) return;
  auto const ick = Macsec::octetsOf(derived(cak, ckn, true).view());
  std::span<uint8_t> const all(frame);
  Macsec::AesCmac cmac(ick);
  static_cast<void>(cmac.compute(all.first(all.size() - 16), all.last<16>()));
}

/// Puts the length of what follows the EAPOL header into it.
inline void fixBodyLength(Bytes& frame) {
  if (frame.size() < 18) return;
  frame[16] = static_cast<uint8_t>((frame.size() - 18) >> 8);
  frame[17] = static_cast<uint8_t>(frame.size() - 18);
}

/// All that a receiver can see of the received message.
inline std::string textOf(Macsec::MkaMessageInfo const& message) {
  std::string text = Vesk::valueToStrep(message.intfId()) + "#" + std::to_string(message.count());
  if (auto const& info = message.mkaInfo()) {
    text += Vesk::valueToStrep(info->baseInfo()) + Vesk::valueToStrep(info->sakUseInfo()) +
            Vesk::valueToStrep(info->sakDistInfo()) + Vesk::valueToStrep(info->cakDistInfo()) +
            Vesk::valueToStrep(info->icvIndicatorInfo());
  }
  for (auto const& peer : message.livePeer()) {
    text += "L" + std::string(peer.fwkKey().view()) + ":" + std::to_string(peer.value());
  }
  for (auto const& peer : message.potentialPeer()) {
    text += "P" + std::string(peer.fwkKey().view()) + ":" + std::to_string(peer.value());
  }
  return text;
}

}  // namespace Codec
