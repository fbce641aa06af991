#pragma once

#include <map>
#include <optional>

#include "host/Host.h"
#include "linux/HardwareDriver.h"
#include "linux/KernelDriver.h"
#include "linux/MacsecNetlink.h"
#include "linux/PortForwarding.h"

namespace Linux {

/// The kernel of this machine as the hardware of a switch: its MACsec in a slice of its own, and
/// what it shows of each port. The switch lives longer.
class KernelHardware final : public HardwareDriver {
 public:
  /// Throws `std::system_error` if the kernel can't be spoken to.
  explicit KernelHardware(Macsecd::Host& host);
  ~KernelHardware() override;

  void configIs(Macsecd::SwitchConfig const& config) override;
  void interfaceIs(Lumo::IntfId intfId, int index, Lumo::EthAddr const& addr) override;
  void interfaceDel(Lumo::IntfId intfId) override;
  double nextTime() const override { return driver_.nextTime(); }
  void run() override { driver_.run(); }
  void leave() override;
  void removeAll() override;

 private:
  Macsecd::HardwareReport report(Lumo::IntfId intfId) const;

  Macsecd::Host& host_;
  MacsecNetlink kernel_;
  KernelDriver driver_;
  std::optional<PortForwarding> forwarding_;
};

}  // namespace Linux
