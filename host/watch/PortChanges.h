#pragma once

#include <functional>

#include "model/Status.h"

namespace Macsecd {

/// Tells when something of a port may have changed that decides whether traffic may pass on it: its
/// controlled port, the keys that it asks for, its actors, their role and their live peers.
class PortChanges {
 public:
  using Changed = std::function<void(Lumo::IntfId)>;

  /// Tells of every port once when `begin` is called, and from then on of each change.
  PortChanges(Vesk::Ptr<Macsec::Status const> status, Changed changed);
  ~PortChanges();
  PortChanges(PortChanges const&) = delete;
  PortChanges& operator=(PortChanges const&) = delete;

  void begin();
  Vesk::Ptr<Macsec::Status const> const& status() const;

 private:
  struct StatusReactor;
  struct CpStatusReactor;
  struct PortStatusReactor;
  struct ActorStatusReactor;

  Changed const changed_;
  Vesk::Ptr<StatusReactor> status_;
};

}  // namespace Macsecd
