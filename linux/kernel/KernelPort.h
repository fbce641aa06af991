#pragma once

#include <functional>
#include <limits>
#include <map>
#include <set>
#include <tuple>

#include "host/state/KeyHistory.h"
#include "host/watch/Backoff.h"
#include "host/watch/FormerKeys.h"
#include "linux/kernel/Agenda.h"
#include "linux/kernel/KernelReader.h"
#include "linux/kernel/KernelRemedy.h"
#include "linux/kernel/SaKey.h"
#include "model/CpStatus.h"
#include "model/MacSecStatus.h"

namespace Linux {

/// What a MACsec device is made with, and can't be changed on a living one.
struct DeviceKind {
  SciNumber sci = 0;
  uint64_t cipher = kGcmAesXpn128;
  bool sendSci = true;
  friend bool operator==(DeviceKind const&, DeviceKind const&) = default;
};

/// What is said of the MACsec device of one interface.
struct DeviceOptions {
  /// Its name; empty for the default (host/config/DeviceName.h).
  std::string name = {};
  /// How many packet numbers late a frame may be.
  uint32_t replayWindow = 0;
  /// The longest packet that it takes in octets; 0 for what the interface below leaves it.
  uint32_t mtu = 0;
  /// What it is while there is no port, as before the link is up: then it is there without keys,
  /// and dormant. Nothing: there is a device only with a port.
  std::optional<DeviceKind> standing = {};
  friend bool operator==(DeviceOptions const&, DeviceOptions const&) = default;
};

struct KernelDriverOptions {
  /// Devices come up dormant, and show by their state whether they are authorized.
  bool dormant = false;
  /// Runs when what keeps an interface from being secured changes; its text is empty when nothing
  /// does any more. Nothing runs if it is empty.
  std::function<void(Lumo::IntfId, Macsecd::Fault const&)> faultIs = {};
  /// What the network device of this index is a member of; nobody knows if it is empty.
  std::function<Master(int)> masterOf = {};
  /// What was sent and received with each key, over devices and processes; null for one of the
  /// driver's own, which ends with it.
  Macsecd::KeyHistory* history = nullptr;
  /// Runs when nothing may be sent with a key any more that is asked for; nothing does if it is
  /// empty.
  std::function<void(Lumo::IntfId, Macsecd::SakId const&)> keyIsSpent = {};
  /// Runs when the device of an interface, or what the kernel holds for it, may stand otherwise;
  /// nothing does if it is empty.
  std::function<void(Lumo::IntfId)> changed = {};
};

/// What the driver has done so far, over all interfaces.
struct KernelCounts {
  uint64_t devicesMade = 0, devicesRemoved = 0;
  uint64_t devicesAdopted = 0;  ///< found there as they should be
  uint64_t sasInstalled = 0, sasRemoved = 0;
  uint64_t refusals = 0;     ///< requests that the kernel refused
  uint64_t keysRefused = 0;  ///< keys that were never handed to the kernel
  uint64_t polls = 0;
  friend bool operator==(KernelCounts const&, KernelCounts const&) = default;
};

/// The MACsec device on one interface: brings the kernel to where `CpStatus` wants it, step by
/// step, and reports each step that the kernel confirmed. What it knows of the kernel it has read
/// or been answered; after an error it reads again.
///
///     CpStatus -> work() -> requests -> answers -> held -> MacSecIntfStatus
class KernelPort {
 public:
  /// The ports whose devices are there.
  struct Holders {
    std::map<int, KernelPort*> byDevice = {};  ///< by the index of the device
    size_t number = 0;
  };
  /// When `work()` wants to be called again after an error.
  using Retries = Agenda<Lumo::IntfId>;

  /// All but the first three are shared with the other ports.
  KernelPort(Lumo::IntfId intfId, int parent, DeviceOptions device,
             KernelDriverOptions const& options, Macsecd::KeyHistory& history, KernelCounts& counts,
             Holders& holders, Retries& retries, KernelReader& reader,
             Vesk::Ptr<Macsec::MacSecIntfStatus> report);
  ~KernelPort();
  KernelPort(KernelPort const&) = delete;
  KernelPort& operator=(KernelPort const&) = delete;

  Lumo::IntfId intfId() const { return intfId_; }
  int parent() const { return parent_; }
  std::string const& deviceName() const { return name_; }
  /// What the kernel held when it was last asked; null as long as there is no device.
  SecY const* held() const { return held_ ? &*held_ : nullptr; }

  /// What is wanted from now on: a null `CpStatus` means no key, and no device but a standing one.
  void wantedIs(Vesk::Ptr<Macsec::CpStatus const> cpStatus, Macsec::Sci const& mySci);
  bool isWanted() const { return static_cast<bool>(cpStatus_); }
  /// Does what there is to do, at once. May be called out of its own reports.
  void work();
  /// The key whose receive SA, as far as is known, stands below the lowest acceptable packet number
  /// that was told; nothing if none does.
  std::optional<KeyId> keyBehind(Macsec::AssociationNumber an);
  /// Raises the packet number of that SA, if the kernel says now that it is below.
  void raiseLowest(Macsec::AssociationNumber an);
  /// What the kernel holds now, as a listing of all devices told it.
  void takeListed(SecYTable const& all);
  /// The device stands otherwise than before; or it isn't there any more, whoever took it away.
  void deviceChanged(bool isThere);
  /// How often the device was made.
  uint32_t devicesMade() const { return devicesMade_; }
  /// Whether traffic may pass; shown on a device that came up dormant.
  void authorizedIs(bool authorized);
  /// Whether nothing is to be sent, whatever key is asked for.
  void transmitHeldIs(bool held);
  /// What is said of the device from now on.
  void deviceIs(DeviceOptions const& device);
  /// Whether the present device can stay under what is said of it now.
  bool canStay(DeviceOptions const& device) const;
  /// The longest packet that the interface below takes, from now on.
  void parentMtuIs(uint32_t mtu);
  /// Takes the device away.
  void remove();

  /// When the kernel was last seen to have dropped frames because they weren't valid under their
  /// key; minus infinity for never.
  double notValidTime() const { return notValidTime_; }

 private:
  using Sak = Macsec::Sak;
  using AssociationNumber = Macsec::AssociationNumber;

  static std::string nameOf(Lumo::IntfId intfId, DeviceOptions const& device);
  bool pass();
  // Each of these returns whether the kernel is where it should be.
  bool readKernel();
  void takeFrom(std::vector<MacsecLink> const& links, SecYTable const& all);
  KernelAnswer deleteDevice(int index);
  void removeOthers(std::vector<MacsecLink> const& links, int index);
  bool removeDevice();
  std::optional<DeviceKind> wantedKind() const;
  bool keepStanding();
  bool setUpDevice();
  bool make(DeviceKind const& kind);
  bool readMade();
  bool setSettings();
  void setMtu();
  bool setUpReceive();
  bool dropOtherChannels(SciNumber sci);
  bool dropOtherReceiveSas(SciNumber sci);
  bool installReceive(Sak const& sak, SciNumber sci);
  bool setUpTransmit();
  bool installTransmit(Sak const& sak, KeyId const& keyId);
  bool dropOtherTransmitSas(HeldSa const* keep);
  bool install(SaPlace const& place, Sak const& sak, uint64_t packetNumber, uint32_t ssci,
               char const* what, std::vector<HeldSa>& sas);
  bool dropSa(SaPlace const& place, std::vector<HeldSa>& sas);

  bool isHeldAsWanted(HeldSa const& sa) const;
  bool stays(HeldSa const& sa);
  HeldRxSc* rxSc(SciNumber sci);
  HeldSa* saBehind(Macsec::AssociationNumber an);
  HeldSa* txSa(KeyId const& keyId);
  std::optional<uint64_t> firstPacketNumber(Sak const& sak, KeyId const& keyId,
                                            uint32_t ssci) const;
  bool refuseSpent(KeyId const& keyId);
  void upIfItCan();
  void showAuthorized();
  void take(SecY const* secY);
  void hold(SecY const* secY);
  void lookForNotValid(SecY const& now);
  void tellIfChanged();

  void reportNothing();
  void reportReceive();
  void reportTransmit();
  void reportNumbers();

  static constexpr char kMakeDevice[] = "make the device";

  bool did(KernelAnswer const& answer, char const* what);
  void refuse(char const* what, Macsecd::Fault const& why);
  void tell(std::string const& what, Macsecd::Fault const& why, bool byKernel);
  void refuseMtu();
  bool isNews(std::string const& problem, std::string const& remedy);
  void showProblems();
  void tryAgainLater();
  void retryTimeIs(double time);

  Lumo::IntfId const intfId_;
  int const parent_;
  KernelDriverOptions const& options_;
  Macsecd::KeyHistory& history_;
  KernelCounts& counts_;
  Holders& holders_;
  Retries& retries_;
  KernelReader& reader_;
  MacsecKernel& kernel_;
  Vesk::Ptr<Macsec::MacSecIntfStatus> const report_;
  DeviceOptions device_;
  std::string name_;  // of the device that is there, or will be made

  Vesk::Ptr<Macsec::CpStatus const> cpStatus_;
  SciNumber mySci_ = 0;
  bool known_ = false;  // held_ is what the kernel holds
  std::optional<SecY> held_;
  uint32_t devicesMade_ = 0;
  // What was told of it: the index of the device, and whether it sends and receives.
  std::tuple<int, bool, bool> toldOf_ = {0, false, false};
  bool upWanted_ = false;
  bool authorized_ = true;
  uint32_t parentMtu_ = 0;     // 0 while it isn't known
  uint32_t mtu_ = 0;           // what the kernel was told of the device's; 0 for nothing
  std::optional<bool> shown_;  // what the kernel was told of `authorized_`
  bool transmitHeld_ = false;
  // The packet number that was reserved for a key which the kernel hasn't taken yet.
  std::optional<std::pair<KeyId, uint64_t>> reserved_;
  Macsecd::FormerKeys formerKeys_;  // for receive

  bool working_ = false;
  bool again_ = false;
  std::map<std::string, std::string> problems_;  // with what to do about them
  std::map<std::string, std::string> told_;
  double notValidTime_ = -std::numeric_limits<double>::infinity();
  Macsecd::Backoff retry_;
  double retryTime_ = Zorn::never;
};

}  // namespace Linux
