#include "host/watch/StageTrace.h"

#include "runtime/Reactor.h"
#include "runtime/Trace.h"

namespace Macsecd {

using Macsec::CpStatus;
using Macsec::MkaActorStatus;
using Macsec::MkaPortStatus;
using Macsec::PeerStage;
using Macsec::Status;

namespace {

Vesk::TraceHandle traceHandle("Macsecd::StageTrace");

template <class Stage>
char const* nameOf(std::optional<Stage> stage) {
  return stage ? Macsec::nameOf(*stage) : "none";
}

PeerStage stageIn(PortStages const& stages, PortStages::Member const& member) {
  auto const found = stages.members.find(member);
  return found == stages.members.end() ? PeerStage::unknown : found->second;
}

void traceMembers(Lumo::IntfId intfId, PortStages const& from, PortStages const& to) {
  auto members = from.members;
  members.insert(to.members.begin(), to.members.end());
  for (auto const& [member, stage] : members) {
    auto const [was, is] = std::pair(stageIn(from, member), stageIn(to, member));
    if (was == is) continue;
    VESK_TRACE(2, ": Member ", member.second, " of actor ", member.first, " on ", intfId, ": ", was,
               " -> ", is);
  }
}

}  // namespace

struct StageTrace::CpStatusReactor final
    : Vesk::Reactor<CpStatus const, StageTrace, CpStatusReactor> {
  using Reactor::Reactor;
  Lumo::IntfId fwkKey() const { return notifier()->intfId(); }
  void onLatestSakContext() override { owner().look(fwkKey()); }
  void onOldSakContext() override { owner().look(fwkKey()); }
};

struct StageTrace::ActorStatusReactor final
    : Vesk::Reactor<MkaActorStatus const, StageTrace, ActorStatusReactor> {
  ActorStatusReactor(StageTrace& owner, Vesk::Ptr<MkaActorStatus const> actor, Lumo::IntfId intfId)
      : Reactor(owner, std::move(actor)), intfId(intfId) {}
  Vesk::String8 fwkKey() const { return notifier()->ckn(); }
  void onPrincipal() override { owner().look(intfId); }
  void onNewSak() override { owner().look(intfId); }
  void onDistSak() override { owner().look(intfId); }
  void onLivePeer(Vesk::String8 const&) override { owner().look(intfId); }
  void onLivePeerImmediate() override { owner().look(intfId); }
  void onPotentialPeer(Vesk::String8 const&) override { owner().look(intfId); }
  void onPotentialPeerImmediate() override { owner().look(intfId); }
  Lumo::IntfId const intfId;
};

struct StageTrace::PortStatusReactor final
    : Vesk::Reactor<MkaPortStatus const, StageTrace, PortStatusReactor> {
  PortStatusReactor(StageTrace& owner, Vesk::Ptr<MkaPortStatus const> port)
      : Reactor(owner, std::move(port)) {
    for (MkaActorStatus& actor : notifier()->actorStatus()) follow(actor.ckn());
  }
  Lumo::IntfId fwkKey() const { return notifier()->intfId(); }
  void onActorStatus(Vesk::String8 const& ckn) override {
    follow(ckn);
    owner().look(fwkKey());
  }
  void follow(Vesk::String8 const& ckn) {
    Vesk::Ptr<MkaActorStatus const> const actor = notifier()->actorStatus(ckn);
    if (!actor) return actors.xDel(ckn);
    actors.xIs(ckn, actor,
               [&] { return Vesk::make<ActorStatusReactor>(owner(), actor, fwkKey()); });
  }
  Vesk::NestedReactors<ActorStatusReactor, Vesk::String8> actors;
};

struct StageTrace::StatusReactor final : Vesk::Reactor<Status const, StageTrace, StatusReactor> {
  StatusReactor(StageTrace& owner, Vesk::Ptr<Status const> status)
      : Reactor(owner, std::move(status)) {
    for (CpStatus& member : notifier()->cpStatus()) followCp(member.intfId());
    for (MkaPortStatus& member : notifier()->portStatus()) followPort(member.intfId());
  }
  void onCpStatus(Lumo::IntfId const& intfId) override {
    followCp(intfId);
    owner().look(intfId);
  }
  void onPortStatus(Lumo::IntfId const& intfId) override {
    followPort(intfId);
    owner().look(intfId);
  }
  void followCp(Lumo::IntfId intfId) {
    Vesk::Ptr<CpStatus const> const cp = notifier()->cpStatus(intfId);
    if (!cp) return cpStatus.xDel(intfId);
    cpStatus.xIs(intfId, cp, [&] { return Vesk::make<CpStatusReactor>(owner(), cp); });
  }
  void followPort(Lumo::IntfId intfId) {
    Vesk::Ptr<MkaPortStatus const> const port = notifier()->portStatus(intfId);
    if (!port) {
      return portStatus.xDel(intfId, [](PortStatusReactor& gone) { gone.actors.retireAll(); });
    }
    portStatus.xIs(intfId, port, [&] { return Vesk::make<PortStatusReactor>(owner(), port); });
  }
  Vesk::NestedReactors<CpStatusReactor, Lumo::IntfId> cpStatus;
  Vesk::NestedReactors<PortStatusReactor, Lumo::IntfId> portStatus;
};

StageTrace::StageTrace(Vesk::Ptr<Status const> status, KeyServerOf keyServerOf)
    : keyServerOf_(std::move(keyServerOf)),
      status_(Vesk::make<StatusReactor>(*this, std::move(status))) {
  status_->hasNotificationActiveIs(true);
}

StageTrace::~StageTrace() {
  status_->cpStatus.retireAll();
  for (PortStatusReactor& port : status_->portStatus.map()) port.actors.retireAll();
  status_->portStatus.retireAll();
  Vesk::retire(status_);
}

void StageTrace::look(Lumo::IntfId intfId) {
  if (!traceHandle.isEnabled(2)) return;
  PortStages const now = stagesOf(*status_->notifier(), intfId, keyServerOf_(intfId).ptr());
  PortStages const was = std::exchange(last_[intfId], now);
  if (now == PortStages()) last_.erase(intfId);
  if (was.key != now.key) {
    VESK_TRACE(2, ": Key on ", intfId, ": ", nameOf(was.key), " -> ", nameOf(now.key));
  }
  if (was.guard != now.guard) {
    VESK_TRACE(2, ": Guard on ", intfId, ": ", nameOf(was.guard), " -> ", nameOf(now.guard));
  }
  traceMembers(intfId, was, now);
}

}  // namespace Macsecd
