#include "host/explain/Explain.h"

#include <algorithm>

#include "host/explain/Explainer.h"
#include "host/watch/PortActors.h"

namespace Macsecd {

bool Explanation::has(CauseKind kind) const {
  return std::ranges::find(causes, kind, &Cause::kind) != causes.end();
}

Explainer::Explainer(Host const& host, Lumo::IntfId intfId)
    : host_(host),
      intfId_(intfId),
      passage_(host.passage(intfId)),
      evidence_(host.frameEvidence(intfId)),
      ethIntf_(host.ethIntfStatusDir()->intfStatus(intfId)),
      intfStatus_(host.status()->intfStatus(intfId)),
      port_(host.status()->portStatus(intfId)),
      cp_(host.status()->cpStatus(intfId)) {
  if (port_) principal_ = principalOf(*port_);
}

Explanation Explainer::explanation() {
  out_.intfId = intfId_;
  out_.secured = passage_ == Passage::open;
  out_.stages = stagesOf(*host_.status(), intfId_, host_.keyServerSm(intfId_).ptr());
  if (host_.transmitHold(intfId_) == TransmitHold::Reason::tooManyMembers) noteTooManyMembers();
  if (configuration() && key() && link() && hardware() && frames() && members() && principal()) {
    keys();
  }
  if (!out_.secured && out_.causes.empty()) noteWaitingForPeer();
  noteConfiguration();
  return std::move(out_);
}

void Explainer::note(CauseKind kind, std::string what, std::string remedy) {
  out_.causes.push_back({kind, std::move(what), std::move(remedy)});
}

Explanation explain(Host const& host, Lumo::IntfId intfId) {
  Vesk::WorldScope const scope(host.world());
  return Explainer(host, intfId).explanation();
}

}  // namespace Macsecd
