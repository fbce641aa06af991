#pragma once

#include <vector>

#include "linux/kernel/KernelDriver.h"
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

  using Directories = std::vector<Vesk::Ptr<Directory const>>;

  /// Shows what the directories say, and what they say from now on: a port is unauthorized if one
  /// of them says so. The driver lives longer.
  PortForwarding(Directories const& directories, KernelDriver& driver);
  ~PortForwarding();
  PortForwarding(PortForwarding const&) = delete;
  PortForwarding& operator=(PortForwarding const&) = delete;

 private:
  struct DirectoryReactor;
  void show(Lumo::IntfId intfId);

  KernelDriver& driver_;
  std::vector<Vesk::Ptr<DirectoryReactor>> directories_;
};

}  // namespace Linux
