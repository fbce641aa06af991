#include "host/watch/PeerLoss.h"

#include "host/watch/PortActors.h"

namespace Macsecd {

PeerLoss::PeerLoss(PortChanges& ports, Vesk::Ptr<Input> input)
    : ports_(ports), input_(std::move(input)) {
  ports_.listenerIs(*this);
}

void PeerLoss::end() { ports_.listenerDel(*this); }

void PeerLoss::closingIs(std::set<Lumo::IntfId> closing) {
  for (Lumo::IntfId const intfId : std::exchange(closing_, closing)) look(intfId);
  for (Lumo::IntfId const intfId : closing) look(intfId);
}

bool PeerLoss::isLost(Lumo::IntfId intfId) const {
  if (!closing_.contains(intfId)) return false;
  auto const& tree = ports_.status();
  auto const cpStatus = tree->cpStatus(intfId);
  if (!cpStatus || !cpStatus->controlledPortEnabled()) return false;
  auto const port = tree->portStatus(intfId);
  return !port || !hasLivePeer(*port);
}

void PeerLoss::look(Lumo::IntfId intfId) {
  bool const wasLost = input_->forwardingModelInput(intfId) != nullptr;
  bool const lost = isLost(intfId);
  if (lost == wasLost) return;
  if (lost) {
    input_->forwardingModelInputIs(intfId, Interface::intfForwardingModelUnauthorized());
  } else {
    input_->forwardingModelInputDel(intfId);
  }
}

}  // namespace Macsecd
