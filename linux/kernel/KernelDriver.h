#pragma once

#include <map>
#include <memory>
#include <set>

#include "linux/kernel/KernelPort.h"
#include "model/Status.h"

namespace Linux {

/// The kernel's MACsec as the hardware behind `MacSecStatus`: one device on each interface that has
/// a port, with the keys that its `CpStatus` asks for.
///
/// What the kernel holds outlives a driver; another one on the same tree takes it up untouched.
class KernelDriver final {
 public:
  /// Puts an entry into `slice` for each interface. `kernel` lives longer than the driver.
  KernelDriver(Vesk::Ptr<Macsec::Status const> status, Vesk::Ptr<Macsec::MacSecStatus> slice,
               MacsecKernel& kernel, KernelDriverOptions options = {});
  ~KernelDriver();
  KernelDriver(KernelDriver const&) = delete;
  KernelDriver& operator=(KernelDriver const&) = delete;

  /// Takes the orders of another tree from now on; null for none for the time being, in which what
  /// is installed stays.
  void follow(Vesk::Ptr<Macsec::Status const> status);
  /// Takes away all devices of this driver's, as at the end of MACsec on this machine,
  /// and follows no tree any more.
  void removeAll();
  /// Whether traffic may pass, as it may until this is told; shown on devices that come up dormant.
  void authorizedIs(Lumo::IntfId intfId, bool authorized);

  /// Whether nothing is to be sent on this interface, whatever key is asked for, from now on.
  void transmitHeldIs(Lumo::IntfId intfId, bool held);

  /// What is said of the device of this interface from now on. One of another name is made in
  /// place of the present one.
  void deviceIs(Lumo::IntfId intfId, DeviceOptions const& device);

  /// An Ethernet interface is there, with its index in the kernel; again when that changes.
  void interfaceIs(Lumo::IntfId intfId, int index);
  /// The longest packet that it takes has so many octets, from now on.
  void interfaceMtuIs(Lumo::IntfId intfId, uint32_t mtu);
  void interfaceDel(Lumo::IntfId intfId);
  /// Takes away what a former process has left on interfaces that there are no ports for.
  void removeOthers();

  /// The network device of this index stands otherwise than before, or has gone.
  void deviceChanged(int index, bool isThere);

  /// As long as what this returns lives, one reading of the kernel serves all ports.
  KernelReader::Round round() { return KernelReader::Round(reader_); }

  /// When `run()` wants to be called, in seconds of the world's clock; infinity for never.
  double nextTime() const;
  void run();

  /// What the kernel held of this interface's device at the last poll, or was told since; null if
  /// there is none.
  SecY const* held(Lumo::IntfId intfId) const;
  /// The port on an interface; null if there is none.
  KernelPort const* port(Lumo::IntfId intfId) const;
  /// The next packet number to send at the last poll, all 64 bits; nothing without a transmit SA.
  std::optional<uint64_t> packetNumber(Lumo::IntfId intfId) const;
  KernelCounts const& counts() const { return counts_; }

 private:
  struct StatusReactor;
  struct CpStatusReactor;
  struct PortStatusReactor;

  void workOn(Lumo::IntfId intfId);
  void workAgain();
  void lowestIs(Lumo::IntfId intfId, Macsec::AssociationNumber an);
  std::optional<KeyId> keyBehind(Lumo::IntfId intfId, Macsec::AssociationNumber an) const;
  void raiseLowest();
  void readThoseBehind();
  void deleteDevice(int index);
  void tellPort(KernelPort& port);
  void poll();
  void faultIs(Lumo::IntfId intfId, Macsecd::Fault const& fault) const;
  DeviceOptions deviceOf(Lumo::IntfId intfId) const;

  Vesk::Ptr<Macsec::MacSecStatus> const slice_;
  MacsecKernel& kernel_;
  KernelReader reader_;
  KernelDriverOptions const options_;
  Macsecd::KeyHistory ownHistory_;
  KernelCounts counts_;
  std::map<Lumo::IntfId, DeviceOptions> devices_;
  KernelPort::Holders holders_;
  KernelPort::Retries retries_;
  std::map<Lumo::IntfId, std::unique_ptr<KernelPort>> ports_;
  Vesk::Ptr<StatusReactor> status_;
  std::map<Lumo::IntfId, int> waiting_;    // interfaces with their index, for MACsec in the kernel
  std::map<Lumo::IntfId, uint32_t> mtus_;  // of the interfaces
  std::set<Lumo::IntfId> unauthorized_;
  std::set<Lumo::IntfId> transmitHeld_;
  double nextPoll_ = 0;
  Macsecd::Backoff look_;
  double nextLook_ = 0;  // at the kernel, while interfaces wait
  std::set<Lumo::IntfId> leftovers_;
  /// Whose lowest packet number may have to be raised, and the key for which it was told.
  std::map<std::pair<Lumo::IntfId, Macsec::AssociationNumber>, KeyId> behind_;
  double nextRaise_ = 0;
};

}  // namespace Linux
