#pragma once

#include "linux/KernelDriver.h"
#include "platform/IntfForwardingModel.h"

namespace Linux {

/// Shows on each MACsec device whether its port may carry traffic: dormant while forwarding is told
/// that it is unauthorized, up when it isn't (RFC 2863, ifOperStatus). Routing, bonds and bridges
/// go by that; it holds no frame back by itself.
///
/// The driver's devices have to come up dormant (`KernelDriverOptions::dormant`).
class PortForwarding final {
 public:
  using Directory = Interface::IntfForwardingModelInputDir;

  /// Shows what the directory says, and what it says from now on. The driver lives longer.
  PortForwarding(Vesk::Ptr<Directory const> directory, KernelDriver& driver);
  ~PortForwarding();
  PortForwarding(PortForwarding const&) = delete;
  PortForwarding& operator=(PortForwarding const&) = delete;

 private:
  struct DirectoryReactor;
  void show(Lumo::IntfId intfId);

  KernelDriver& driver_;
  Vesk::Ptr<DirectoryReactor> directory_;
};

}  // namespace Linux
