#include "host/watch/StageTrace.h"

#include "runtime/Trace.h"

namespace Macsecd {

using Macsec::PeerStage;

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

StageTrace::StageTrace(PortChanges& ports, KeyServerOf keyServerOf)
    : ports_(ports), keyServerOf_(std::move(keyServerOf)) {
  ports_.listenerIs(*this);
}

StageTrace::~StageTrace() { ports_.listenerDel(*this); }

void StageTrace::look(Lumo::IntfId intfId) {
  if (!traceHandle.isEnabled(2)) return;
  PortStages const now = stagesOf(*ports_.status(), intfId, keyServerOf_(intfId).ptr());
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
