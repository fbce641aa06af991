#pragma once

#include <map>
#include <optional>
#include <vector>

#include "host/Host.h"
#include "linux/kernel/FilterNetlink.h"
#include "linux/kernel/HardwareDriver.h"
#include "linux/kernel/KernelDriver.h"
#include "linux/kernel/MacsecNetlink.h"
#include "linux/kernel/ParentFilters.h"
#include "linux/kernel/PortForwarding.h"

namespace Linux {

/// The kernel of this machine as the hardware of a switch: its MACsec in a slice of its own, what
/// it shows of each port, and the filter beneath those that must be secure. The switch lives
/// longer.
class KernelHardware final : public HardwareDriver {
 public:
  /// Throws `std::system_error` if the kernel can't be spoken to.
  explicit KernelHardware(Macsecd::Host& host);
  ~KernelHardware() override;

  void configIs(Macsecd::SwitchConfig const& config) override;
  void interfaceIs(Lumo::IntfId intfId, int index, Lumo::EthAddr const& addr) override;
  void interfaceMtuIs(Lumo::IntfId intfId, uint32_t mtu) override;
  void interfaceDel(Lumo::IntfId intfId) override;
  void linkChanged(LinkChange const& change) override;
  void interfacesAreKnown() override;
  void inOneTurn(std::function<void()> const& act) override;
  double nextTime() const override;
  void run() override;
  void leave() override;
  void removeAll() override;

 private:
  struct HoldReactor;
  /// What is wrong with a port, by who says so.
  struct Faults {
    Macsecd::Fault driver = {}, filter = {};
  };

  Macsecd::HardwareReport report(Lumo::IntfId intfId) const;
  Macsecd::DeviceState stateOf(int device) const;
  void filter(Lumo::IntfId intfId, int index);
  void deviceIs(Lumo::IntfId intfId);
  void holdTransmit(Lumo::IntfId intfId);
  void lookAway();
  void faultIs(Lumo::IntfId intfId, Macsecd::Fault Faults::*whose, Macsecd::Fault const& fault);
  Master masterOf(int device) const;

  Macsecd::Host& host_;
  MacsecNetlink kernel_;
  FilterNetlink filterKernel_;
  ParentFilters filters_;
  KernelDriver driver_;
  std::optional<PortForwarding> forwarding_;
  std::vector<Vesk::Ptr<HoldReactor>> holds_;
  struct Parent {
    int index = 0;
    Lumo::EthAddr addr = {};
  };
  /// What the configuration says of an interface.
  struct Wish {
    DeviceOptions device = {};
    uint16_t portNumber = 0;
    bool mustBeSecure = false;
    Macsecd::EtherTypes clear = {};
  };

  std::map<int, Link> devices_;             // all network devices, by their index
  std::map<Lumo::IntfId, Parent> parents_;  // the interfaces that are there
  std::map<Lumo::IntfId, Wish> wishes_;
  std::map<Lumo::IntfId, Faults> faults_;
};

}  // namespace Linux
