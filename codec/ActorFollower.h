#pragma once

#include <functional>

#include "codec/ActorKeys.h"
#include "codec/Ports.h"
#include "model/Status.h"
#include "runtime/IntfId.h"
#include "runtime/Reactor.h"

namespace Codec {

/// Follows the status tree from the ports to their actors: each actor's keys stand in the table of
/// ports for as long as the actor stands in the tree.
class ActorFollower {
 public:
  /// What else happens when a port appears and when it goes.
  struct PortHandlers {
    std::function<void(Lumo::IntfId)> onNew;
    std::function<void(Lumo::IntfId)> onDel;
  };

  ActorFollower(Vesk::Ptr<Macsec::Status const> status, Ports& ports, PortHandlers handlers);
  ~ActorFollower();

 private:
  struct StatusReactor;
  struct PortStatusReactor;
  struct ActorStatusReactor;

  Ports& ports_;
  PortHandlers handlers_;
  Vesk::Ptr<StatusReactor> statusReactor_;
};

}  // namespace Codec
