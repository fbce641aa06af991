#include "host/PeerLoss.h"

#include "host/PortActors.h"
#include "runtime/Log.h"

namespace Macsecd {

namespace {

Vesk::LogHandle const MACSECD_CLOSED_WITHOUT_PEERS(
    "MACSECD_CLOSED_WITHOUT_PEERS", Vesk::LogSeverity::warning,
    "Interface %s is closed: all its peers are lost",
    "No peer has been heard for a life time, and the configuration has such a port closed "
    "('on-peer-loss: close'). It opens again with the first peer that is heard.",
    "Check the other end.", 0.0, 1.0);

Vesk::LogHandle const MACSECD_OPEN_WITH_PEERS("MACSECD_OPEN_WITH_PEERS", Vesk::LogSeverity::notice,
                                              "Interface %s is open again: a peer is there",
                                              "The port was closed for the loss of all its peers.",
                                              Vesk::NoActionRequired, 0.0, 1.0);

}  // namespace

PeerLoss::PeerLoss(Vesk::Ptr<Macsec::Status const> status, Vesk::Ptr<Input> input)
    : input_(std::move(input)),
      ports_(std::move(status), [this](Lumo::IntfId intfId) { look(intfId); }) {}

void PeerLoss::closingAre(std::set<Lumo::IntfId> closing) {
  auto const former = std::exchange(closing_, std::move(closing));
  for (Lumo::IntfId const intfId : former) look(intfId);
  for (Lumo::IntfId const intfId : closing_) look(intfId);
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
    Vesk::log(MACSECD_CLOSED_WITHOUT_PEERS, intfId);
    input_->forwardingModelInputIs(intfId, Interface::intfForwardingModelUnauthorized());
  } else {
    input_->forwardingModelInputDel(intfId);
    Vesk::log(MACSECD_OPEN_WITH_PEERS, intfId);
  }
}

}  // namespace Macsecd
