#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/KeyDerivation.h"
#include "tests/support/Peer.h"

namespace Macsec {

/// Takes down in which order the controlled port writes.
struct CpWrites final : Vesk::Reactor<CpStatus const, Support::Switch, CpWrites> {
  using Reactor::Reactor;
  void onControlledPortEnabled() override { order.push_back("enabled"); }
  void onOldSakContext() override { order.push_back("old"); }
  void onLatestSakContext() override { order.push_back("latest"); }
  void onTxSak() override { order.push_back("tx"); }
  void onRxSak(AssociationNumber const&) override { order.push_back("rxSak"); }
  void onRxLPN(AssociationNumber const&) override { order.push_back("rxLPN"); }
  void onMySsci() override { order.push_back("mySsci"); }
  void onPeerSsci() override { order.push_back("peerSsci"); }
  std::vector<std::string> order;
};

inline Sak salted(Sak sak) {
  Vesk::String8 salt;
  generateSalt(reinterpret_cast<unsigned char const*>(sak.keyMsgId().charPtr()), sak.keyNum(),
               salt);
  sak.saltIs(salt);
  return sak;
}

/// The controlled port of a principal actor whose status and hardware the test writes.
class ControlledPort : public ::testing::Test {
 protected:
  /// Makes the actor principal, with hardware that stays silent until the test reports.
  void begin(bool electedSelf = false) {
    port.in([&] {
      port.emulator = nullptr;
      port.actor("6162")->electedSelfIs(electedSelf);
      port.actor("6162")->principalIs(true);
    });
  }
  void distSakIs(Sak const& sak) { port.distSakIs("6162", sak); }
  void receiveUp(Sak const& sak) {
    port.in([&] {
      auto hw = port.slice->status(port.intfId);
      hw->rxSaStatusDel(sak.an());
      hw->rxSaStatusIs(sak.an(), sak.keyMsgId(), sak.keyNum());
    });
  }
  void transmitUp(Sak const& sak) {
    port.in([&] {
      port.slice->status(port.intfId)->txSaStatusIs(sak.an(), sak.keyMsgId(), sak.keyNum());
    });
  }
  CpStatus const& cp() const { return *port.cpStatus(); }
  SakContext const& latest() const { return cp().latestSakContext(); }
  SakContext const& old() const { return cp().oldSakContext(); }
  ControlledPortSm& sm() const { return *port.sm().cpSm(); }
  size_t traced(std::string const& decision) const {
    return port.world.traced(decision + "6162 on Ethernet1");
  }
  Support::ActorPort port;
};

}  // namespace Macsec
