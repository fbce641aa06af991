#include "host/watch/StageTrace.h"

#include "runtime/NestedReactors.h"
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
    : Vesk::Reactor<MkaActorStatus const, PortStatusReactor, ActorStatusReactor> {
  using Reactor::Reactor;
  Vesk::String8 fwkKey() const { return notifier()->ckn(); }
  void onPrincipal() override { look(); }
  void onNewSak() override { look(); }
  void onDistSak() override { look(); }
  void onLivePeer(Vesk::String8 const&) override { look(); }
  void onLivePeerImmediate() override { look(); }
  void onPotentialPeer(Vesk::String8 const&) override { look(); }
  void onPotentialPeerImmediate() override { look(); }
  void look();
};

struct StageTrace::PortStatusReactor final
    : Vesk::Reactor<MkaPortStatus const, StageTrace, PortStatusReactor> {
  PortStatusReactor(StageTrace& owner, Vesk::Ptr<MkaPortStatus const> port)
      : Reactor(owner, std::move(port)) {
    onActorStatusImmediate();
  }
  Lumo::IntfId fwkKey() const { return notifier()->intfId(); }
  void onActorStatus(Vesk::String8 const& ckn) override {
    actors_.follow(*this, notifier()->actorStatus(), ckn);
    look();
  }
  void onActorStatusImmediate() override { actors_.followAll(*this, notifier()->actorStatus()); }
  void look() { owner().look(fwkKey()); }
  auto nested() { return std::tie(actors_); }

 private:
  Vesk::NestedReactors<ActorStatusReactor, Vesk::String8> actors_;
};

void StageTrace::ActorStatusReactor::look() { owner().look(); }

struct StageTrace::StatusReactor final : Vesk::Reactor<Status const, StageTrace, StatusReactor> {
  StatusReactor(StageTrace& owner, Vesk::Ptr<Status const> status)
      : Reactor(owner, std::move(status)) {
    cpStatus_.followAll(owner, notifier()->cpStatus());
    portStatus_.followAll(owner, notifier()->portStatus());
  }
  void onCpStatus(Lumo::IntfId const& intfId) override {
    cpStatus_.follow(owner(), notifier()->cpStatus(), intfId);
    owner().look(intfId);
  }
  void onPortStatus(Lumo::IntfId const& intfId) override {
    portStatus_.follow(owner(), notifier()->portStatus(), intfId);
    owner().look(intfId);
  }
  auto nested() { return std::tie(cpStatus_, portStatus_); }

 private:
  Vesk::NestedReactors<CpStatusReactor, Lumo::IntfId> cpStatus_;
  Vesk::NestedReactors<PortStatusReactor, Lumo::IntfId> portStatus_;
};

StageTrace::StageTrace(Vesk::Ptr<Status const> status, KeyServerOf keyServerOf)
    : keyServerOf_(std::move(keyServerOf)),
      status_(Vesk::make<StatusReactor>(*this, std::move(status))) {
  status_->hasNotificationActiveIs(true);
}

StageTrace::~StageTrace() { Vesk::retire(status_); }

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
