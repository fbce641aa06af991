#pragma once

#include <set>

#include "host/watch/PortChanges.h"
#include "platform/IntfForwardingModel.h"

namespace Macsecd {

/// Closes open ports that have lost all their peers, where that is wanted, until a peer is there
/// again. The engine keeps such a port open; this acts on forwarding alone, by an input of its own.
class PeerLoss {
 public:
  using Input = Interface::IntfForwardingModelInputDir;

  PeerLoss(Vesk::Ptr<Macsec::Status const> status, Vesk::Ptr<Input> input);

  /// The interfaces on which ports are to be closed.
  void closingIs(std::set<Lumo::IntfId> closing);

 private:
  void look(Lumo::IntfId intfId);
  bool isLost(Lumo::IntfId intfId) const;

  Vesk::Ptr<Input> const input_;
  std::set<Lumo::IntfId> closing_;
  PortChanges const ports_;
};

}  // namespace Macsecd
