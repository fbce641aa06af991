#pragma once

#include <functional>
#include <string>

#include "runtime/NestedReactors.h"
#include "tests/support/Switch.h"

namespace Support {

/// Hears all that the engine writes into the status tree and the message to transmit of a switch,
/// as an agent would. It stands before the engine in every list that it can be in before.
class Told {
 public:
  explicit Told(Switch& s) : world_(s.world) {
    Vesk::WorldScope scope(world_);
    status_ = Vesk::make<StatusReactor>(*this, s.status);
    message_ = Vesk::make<MessageReactor>(*this, s.pamManager->txMessageInfo());
  }
  ~Told() {
    Vesk::WorldScope scope(world_);
    Vesk::retire(status_);
    Vesk::retire(message_);
  }

  /// Called inside each notification, with what was written.
  std::function<void(char const* what)> then = [](char const*) {};

 private:
  struct ActorReactor final : Vesk::Reactor<Macsec::MkaActorStatus const, Told, ActorReactor> {
    using Reactor::Reactor;
    Vesk::String8 const& fwkKey() const { return notifier()->ckn(); }
    void onCak() override { owner().then("cak"); }
    void onMsgId() override { owner().then("msgId"); }
    void onMsgNum() override { owner().then("msgNum"); }
    void onIck() override { owner().then("ick"); }
    void onKek() override { owner().then("kek"); }
    void onLivePeer(Vesk::String8 const&) override { owner().then("livePeer"); }
    void onPotentialPeer(Vesk::String8 const&) override { owner().then("potentialPeer"); }
    void onElectedSelf() override { owner().then("electedSelf"); }
    void onDistSak() override { owner().then("distSak"); }
    void onKeyNum() override { owner().then("keyNum"); }
    void onNewSak() override { owner().then("newSak"); }
    void onPrincipal() override { owner().then("principal"); }
    void onKeyServer() override { owner().then("keyServer"); }
    void onKeysLPN() override { owner().then("keysLPN"); }
    void onSakTransmit() override { owner().then("sakTransmit"); }
    void onLlpnExhaustion() override { owner().then("llpnExhaustion"); }
    void onSuccess() override { owner().then("success"); }
    void onDefaultActor() override { owner().then("defaultActor"); }
  };
  struct PortReactor final : Vesk::Reactor<Macsec::MkaPortStatus const, Told, PortReactor> {
    using Reactor::Reactor;
    Lumo::IntfId fwkKey() const { return notifier()->intfId(); }
    void onMySci() override { owner().then("mySci"); }
    void onAnOfNextKey() override { owner().then("anOfNextKey"); }
    void onActorStatus(Vesk::String8 const& ckn) override {
      actors.follow(owner(), notifier()->actorStatus(), ckn);
      owner().then("actorStatus");
    }
    auto nested() { return std::tie(actors); }
    Vesk::NestedReactors<ActorReactor, Vesk::String8> actors;
  };
  struct CpReactor final : Vesk::Reactor<Macsec::CpStatus const, Told, CpReactor> {
    using Reactor::Reactor;
    Lumo::IntfId fwkKey() const { return notifier()->intfId(); }
    void onControlledPortEnabled() override { owner().then("controlledPortEnabled"); }
    void onOldSakContext() override { owner().then("oldSakContext"); }
    void onLatestSakContext() override { owner().then("latestSakContext"); }
    void onTxSak() override { owner().then("txSak"); }
    void onRxSak(Macsec::AssociationNumber const&) override { owner().then("rxSak"); }
    void onRxLPN(Macsec::AssociationNumber const&) override { owner().then("rxLPN"); }
    void onMySsci() override { owner().then("mySsci"); }
    void onPeerSsci() override { owner().then("peerSsci"); }
  };
  struct StatusReactor final : Vesk::Reactor<Macsec::Status const, Told, StatusReactor> {
    using Reactor::Reactor;
    void onIntfStatus(Lumo::IntfId const&) override { owner().then("intfStatus"); }
    void onPortStatus(Lumo::IntfId const& intfId) override {
      ports.follow(owner(), notifier()->portStatus(), intfId);
      owner().then("portStatus");
    }
    void onCpStatus(Lumo::IntfId const& intfId) override {
      controlled.follow(owner(), notifier()->cpStatus(), intfId);
      owner().then("cpStatus");
    }
    auto nested() { return std::tie(ports, controlled); }
    Vesk::NestedReactors<PortReactor, Lumo::IntfId> ports;
    Vesk::NestedReactors<CpReactor, Lumo::IntfId> controlled;
  };
  struct MessageReactor final : Vesk::Reactor<Macsec::MkaMessageInfo const, Told, MessageReactor> {
    using Reactor::Reactor;
    void onLivePeer(Vesk::String8 const&) override { owner().then("tx livePeer"); }
    void onPotentialPeer(Vesk::String8 const&) override { owner().then("tx potentialPeer"); }
    void onMkaInfo() override { owner().then("tx mkaInfo"); }
    void onCount() override { owner().then("tx count"); }
  };

  TestWorld& world_;
  Vesk::Ptr<StatusReactor> status_;
  Vesk::Ptr<MessageReactor> message_;
};

}  // namespace Support
