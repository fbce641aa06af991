#pragma once

#include <set>

#include "linux/net/LinkTable.h"
#include "runtime/IntfId.h"

namespace Linux {

/// What follows the ports of the switch.
class PortObserver {
 public:
  virtual ~PortObserver() = default;
  /// A port is there, with its link down: with this index in the kernel, and this address.
  virtual void portIs(Lumo::IntfId intfId, int index, Lumo::EthAddr const& addr) = 0;
  virtual void portLinkIs(Lumo::IntfId intfId, bool up) = 0;
  /// Whether somebody has set the interface up, whatever its link.
  virtual void portSetUpIs(Lumo::IntfId intfId, bool setUp) = 0;
  /// The longest packet that the interface takes has so many octets.
  virtual void portMtuIs(Lumo::IntfId intfId, uint32_t mtu) = 0;
  virtual void portDel(Lumo::IntfId intfId) = 0;
};

/// Which of the machine's interfaces are ports of the switch: those that the configuration names. A
/// port that takes another address goes and comes again, since its identity towards its peers is
/// another one.
class Ports {
 public:
  Ports(LinkTable const& table, PortObserver& observer) : table_(table), observer_(observer) {}

  /// The names that the configuration has.
  void namesIs(std::set<std::string> names);
  /// Something has changed in the table.
  void changed(LinkChange const& change);

 private:
  bool isPort(std::string const& name) const { return names_.contains(name); }
  void enter(Link const& link);
  void leave(std::string const& name);

  LinkTable const& table_;
  PortObserver& observer_;
  std::set<std::string> names_;
};

}  // namespace Linux
