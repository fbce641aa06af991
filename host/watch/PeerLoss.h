#pragma once

#include <set>

#include "host/watch/PortChanges.h"
#include "platform/IntfForwardingModel.h"

namespace Macsecd {

/// Closes open ports that have lost all their peers, where that is wanted, until a peer is there
/// again. The engine keeps such a port open; this acts on forwarding alone, by an input of its own.
class PeerLoss final : public Vesk::StateMachine, private PortListener {
 public:
  using Input = Interface::IntfForwardingModelInputDir;

  /// `ports` lives longer.
  PeerLoss(PortChanges& ports, Vesk::Ptr<Input> input);

  /// The interfaces on which ports are to be closed.
  void closingIs(std::set<Lumo::IntfId> closing);

 private:
  void end() override;
  void portChanged(Lumo::IntfId intfId) override { look(intfId); }
  void look(Lumo::IntfId intfId);
  bool isLost(Lumo::IntfId intfId) const;

  PortChanges& ports_;
  Vesk::Ptr<Input> const input_;
  std::set<Lumo::IntfId> closing_;
};

}  // namespace Macsecd
