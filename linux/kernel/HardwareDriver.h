#pragma once

#include <functional>

#include "host/config/ConfigFile.h"
#include "linux/net/LinkTable.h"
#include "runtime/EthAddr.h"
#include "runtime/IntfId.h"

namespace Linux {

/// What stands behind `MacSecStatus` on a machine: installs the keys that `CpStatus` asks for, and
/// reports what is installed.
class HardwareDriver {
 public:
  virtual ~HardwareDriver() = default;

  /// What the configuration says of the interfaces, from now on.
  virtual void configIs(Macsecd::SwitchConfig const& config) = 0;
  /// An Ethernet interface is there, with its index in the kernel and its address; again when one
  /// of these changes.
  virtual void interfaceIs(Lumo::IntfId intfId, int index, Lumo::EthAddr const& addr) = 0;
  /// The longest packet that an interface takes has so many octets.
  virtual void interfaceMtuIs(Lumo::IntfId intfId, uint32_t mtu) = 0;
  virtual void interfaceDel(Lumo::IntfId intfId) = 0;
  /// What has changed of the machine's network devices, its own among them.
  virtual void linkChanged(LinkChange const& change) = 0;
  /// All interfaces that were there at the start have been told.
  virtual void interfacesAreKnown() = 0;

  /// What `act` asks of it is one turn: the hardware is looked at once for all of it.
  virtual void inOneTurn(std::function<void()> const& act) { act(); }

  /// When `run()` wants to be called, in seconds of the world's clock; infinity for never.
  virtual double nextTime() const = 0;
  virtual void run() = 0;

  /// Does nothing any more, and leaves what is installed as it stands, for the process that
  /// follows.
  virtual void leave() = 0;
  /// Takes away all that it installed, at the end of MACsec on this machine.
  virtual void removeAll() = 0;
};

}  // namespace Linux
