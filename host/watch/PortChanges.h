#pragma once

#include <vector>

#include "model/Status.h"
#include "runtime/StateMachine.h"

namespace Macsecd {

/// Hears of the changes of all ports (`PortChanges`).
class PortListener {
 public:
  /// Something of a port may have changed that decides whether traffic may pass on it: its
  /// controlled port, the keys that it asks for, its actors, their role and their live peers.
  virtual void portChanged(Lumo::IntfId intfId) = 0;
  /// A key, a member or the guard on new SAKs may have come to another stage, and nothing of the
  /// above has changed.
  virtual void portStepped(Lumo::IntfId intfId) { static_cast<void>(intfId); }

 protected:
  PortListener() = default;
  ~PortListener() = default;
};

/// Follows all ports of a status tree for those who listen.
class PortChanges final : public Vesk::StateMachine {
 public:
  explicit PortChanges(Vesk::Ptr<Macsec::Status const> status);

  /// Who hears of each change, behind those who came before; it leaves before it ends.
  void listenerIs(PortListener& listener) { listeners_.push_back(&listener); }
  void listenerDel(PortListener& listener) { std::erase(listeners_, &listener); }

  /// The interfaces with a controlled port.
  std::vector<Lumo::IntfId> ports() const;
  Vesk::Ptr<Macsec::Status const> const& status() const;

 private:
  struct StatusReactor;
  struct CpStatusReactor;
  struct PortStatusReactor;
  struct ActorStatusReactor;

  void end() override;
  void changed(Lumo::IntfId intfId);
  void stepped(Lumo::IntfId intfId);

  std::vector<PortListener*> listeners_;
  Vesk::Ptr<StatusReactor> status_;
};

}  // namespace Macsecd
