#pragma once

#include <optional>
#include <vector>

#include "lab/world/Simulation.h"

namespace Lab {

/// One end of a wire, as its switch has it now.
struct LinkEnd {
  Switch& owner;
  Lumo::IntfId intfId;
  PortName const& name;

  bool passes() const { return owner.passes(intfId); }
  bool isUp() const { return owner.isUp(intfId); }
  /// Whether an actor has a live peer: a port that has lost its last one stays open.
  bool hasPeer() const;
  bool hasPrincipal() const;
  Vesk::Ptr<Macsec::CpStatus const> cpStatus() const {
    return owner.host().status()->cpStatus(intfId);
  }
  /// What the hardware has installed; null without an entry.
  Vesk::Ptr<Macsec::MacSecIntfStatus const> hardware() const {
    return owner.hardware().slice()->status(intfId);
  }
  /// What the interface is configured with; null without a profile.
  Macsecd::ProfileConfig const* profile() const;
};

std::vector<LinkEnd> endsOf(Simulation const& simulation, size_t wire);
/// Both ends of a wire, if it has two whose links are up and nobody else is on it.
struct Link {
  LinkEnd a, b;

  /// Whether both are open, and in touch with one another.
  bool isOpen() const;
  /// Whether both have a key in use, too: they are of one mind, or about to be.
  bool isInUse() const;
  /// Whether both ask for one key to send with. They have such keys if they are open.
  bool sendsWithOneKey() const;
};
std::optional<Link> linkOf(Simulation const& simulation, size_t wire);
/// The number of the wire that the port is on.
std::optional<size_t> wireOf(Simulation const& simulation, PortName const& port);

}  // namespace Lab
