#pragma once

#include "tests/support/Port.h"

namespace Support {

/// Another member of the association, whose MKPDUs a test writes.
struct Peer {
  Peer(uint8_t number, bool claimsToServe = false, uint8_t itsPriority = 20)
      : sci(Lumo::EthAddr({2, 0, 0, 0, 0, number}), 1),
        claims(claimsToServe),
        priority(itsPriority) {
    std::string digits = "b0b1b2b3b4b5b6b7b8b9ba";
    digits += "0123456789abcdef"[number >> 4];
    digits += "0123456789abcdef"[number & 15];
    id = Vesk::String8(digits);
  }

  /// An MKPDU that lists nobody.
  Mkpdu hello(Vesk::String8 const& ckn = Port::kPrimary) {
    Mkpdu mkpdu;
    mkpdu.basic = Macsec::BasicInfo(priority, claims, true, 2, sci, id, ++msgNum, ckn);
    mkpdu.sakUse = sakUse;
    mkpdu.sakDist = sakDist;
    mkpdu.cakDist = cakDist;
    return mkpdu;
  }
  /// One that lists the switch's actor as live, `lag` message numbers behind.
  Mkpdu listing(Switch const& to, int64_t lag = 0, Vesk::String8 const& ckn = Port::kPrimary) {
    Mkpdu mkpdu = hello(ckn);
    auto const actor = to.actor(ckn);
    mkpdu.live.emplace_back(actor->msgId(), static_cast<uint32_t>(actor->msgNum() - lag));
    return mkpdu;
  }
  /// Reports the key in the latest slot.
  void uses(Macsec::Sak const& sak, bool tx, bool rx, uint32_t lpn = 0, bool delayProtect = false) {
    sakUse.latestKeyInfoIs(
        Macsec::KeyInfo(sak.an().value(), tx, rx, sak.keyMsgId(), sak.keyNum(), lpn));
    sakUse.plainTextInfoIs(Macsec::PlainTextInfo(false, false, delayProtect));
  }

  Vesk::String8 id;
  Macsec::Sci sci;
  bool claims;
  uint8_t priority;
  uint32_t msgNum = 0;
  Macsec::SakUseInfo sakUse;
  Macsec::SakDistInfo sakDist;
  Macsec::CakDistInfo cakDist;
};

/// A port with one actor, of the primary key.
class ActorPort : public Port {
 public:
  ActorPort() : Port(key(kPrimary), Macsec::Cak()) {}

  Macsec::MkaActorStatus& status() const { return *actor(kPrimary); }
  Macsec::MkaActorSm& sm() const { return *actorSm(kPrimary); }
  /// The MKPDU that the actor sends when its timer fires now.
  Mkpdu transmit() {
    in([&] { sm().handleMkpduTimerExpiry(); });
    return sent.back();
  }
  void live(Peer& peer) { receive(peer.listing(*this)); }
  size_t tracedOnce(std::string const& what) const {
    return world.traced(what + " for actor 6162 on Ethernet1");
  }
};

/// Takes down in which order the attributes of an actor are written.
struct ActorWrites final : Vesk::Reactor<Macsec::MkaActorStatus const, Switch, ActorWrites> {
  using Reactor::Reactor;
  void onCak() override { order.push_back("cak"); }
  void onMsgId() override { order.push_back("msgId"); }
  void onMsgNum() override { order.push_back("msgNum"); }
  void onIck() override { order.push_back("ick"); }
  void onKek() override { order.push_back("kek"); }
  void onLivePeer(Vesk::String8 const&) override { order.push_back("livePeer"); }
  void onPotentialPeer(Vesk::String8 const&) override { order.push_back("potentialPeer"); }
  void onElectedSelf() override { order.push_back("electedSelf"); }
  void onDistSak() override { order.push_back("distSak"); }
  void onDistCak() override { order.push_back("distCak"); }
  void onKeyNum() override { order.push_back("keyNum"); }
  void onNewSak() override { order.push_back("newSak"); }
  void onKeyServer() override { order.push_back("keyServer"); }
  void onKeysLPN() override { order.push_back("keysLPN"); }
  void onSakTransmit() override { order.push_back("sakTransmit"); }
  void onSuccess() override { order.push_back("success"); }
  std::vector<std::string> order;
};

/// Fails unless the message has all these fields.
inline void expectHandle(Vesk::LogHandle const& handle, char const* name, int severity,
                         char const* format, char const* explanation, double interval) {
  EXPECT_STREQ(handle.name(), name);
  EXPECT_EQ(static_cast<int>(handle.severity()), severity);
  EXPECT_STREQ(handle.format(), format);
  EXPECT_STREQ(handle.explanation(), explanation);
  EXPECT_STREQ(handle.recommendedAction(), Vesk::NoActionRequired);
  EXPECT_EQ(handle.interval(), interval);
  EXPECT_EQ(handle.reserved(), 1.0);
  EXPECT_EQ(handle.rateLimitArgs(), 255);
}

}  // namespace Support
