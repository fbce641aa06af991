#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "codec/FrameCodec.h"
#include "codec/FrameSink.h"
#include "config/ConfigSm.h"
#include "engine/MkaRootSm.h"
#include "hardware/HwEmulator.h"
#include "hardware/HwStatusSm.h"
#include "hardware/MacsecForwardingModelSm.h"
#include "host/config/ConfigFile.h"
#include "host/state/KeptConfig.h"
#include "host/state/KeyHistory.h"
#include "host/state/StateKeeper.h"
#include "host/state/StateTree.h"
#include "host/watch/FrameEvidence.h"
#include "host/watch/HardwareReport.h"
#include "host/watch/HostTap.h"
#include "host/watch/KeyAges.h"
#include "host/watch/Passage.h"
#include "host/watch/PeerLoss.h"
#include "host/watch/PortDoctor.h"
#include "host/watch/TransmitHold.h"
#include "platform/IntfForwardingModel.h"
#include "platform/MessageCounters.h"
#include "runtime/Dir.h"
#include "runtime/InterfaceTable.h"
#include "runtime/World.h"

namespace Macsecd {

class Host;

/// What is made when a switch has started, and ends before it stops.
class HostCompanion {
 public:
  virtual ~HostCompanion() = default;
};

struct HostOptions {
  /// Answers in the hardware's place, with one slice that has every interface. Otherwise the caller
  /// fills `slices()`.
  bool emulateHardware = true;
  /// Where frames are counted; null for a table in the memory of this process.
  Vesk::Ptr<Macsec::Brine::MessageCounters> counters = nullptr;
  /// Where the status tree outlives the process; null for nowhere. It has to outlive the host.
  StateStore* store = nullptr;
  /// Looks after ports that can't get well by themselves (`PortDoctor`).
  bool portDoctor = true;
  /// Makes what looks at the switch while it runs, such as a `PortJournal`; null for nothing.
  std::function<std::unique_ptr<HostCompanion>(Host&)> companion = nullptr;
  /// What the port doctor acts on.
  PortTroubles treatedTroubles = allPortTroubles();
  /// Keeps recorded MKPDUs away from the engine (`Codec::ReplayGuard`).
  bool replayGuard = true;
};

/// One switch: owns the entities, builds the state machines in the right order, and stops cleanly.
/// Every call, and every timer of its wheel, runs in its world, which it enters itself; who writes
/// to its trees enters it as well (`Vesk::WorldScope`). With a store it begins with the status tree
/// that the store holds, and whoever drives it calls `commit` at the end of each turn of his loop.
class Host {
 public:
  /// `sink` takes the frames to send. The world has to outlive the host; nobody else lives in it.
  Host(Vesk::World& world, Vesk::Name const& name, Codec::FrameSink& sink,
       HostOptions options = {});
  ~Host();
  Host(Host const&) = delete;
  Host& operator=(Host const&) = delete;

  Vesk::World& world() const { return world_; }

  /// Makes an Ethernet interface, with its link not up.
  void interfaceIs(Lumo::IntfId intfId, Lumo::EthAddr const& addr, uint16_t portNumber);
  void interfaceDel(Lumo::IntfId intfId);
  void linkIs(Lumo::IntfId intfId, bool up);
  /// Whether somebody has set the interface up, as it is unless this is told.
  void interfaceSetUpIs(Lumo::IntfId intfId, bool setUp);
  bool isSetDown(Lumo::IntfId intfId) const { return setDown_.contains(intfId); }
  /// Makes the configuration tree say what the file says; at any time.
  void configIs(SwitchConfig const& config);
  /// Takes a configuration over that was read again. One with a mistake changes nothing at all.
  /// True if it was taken.
  bool reload(ConfigResult const& read);
  /// What is in force, or was last before this process.
  KeptConfig& keptConfig() { return keptConfig_; }
  /// Why what is in force isn't what the file says; empty when it is.
  void configFaultIs(std::string fault) { configFault_ = std::move(fault); }
  std::string const& configFault() const { return configFault_; }
  /// Reads the file again and takes it over; the diagnostics because of which it wasn't taken.
  std::vector<Diagnostic> reload(std::string const& path);

  void start();
  /// Gives the store what has changed since the last time. True if there was something, and the
  /// store took it; otherwise `storeError` tells why not, and the next turn tries again.
  bool commit();
  /// Why the store refused the last transaction; empty if it took it, or if there is none.
  std::string storeError() const { return keeper_ ? keeper_->error() : std::string(); }
  /// What couldn't be taken from the store when the tree was rebuilt last.
  std::vector<DroppedState> const& droppedState() const { return droppedState_; }
  /// Destroys the state machines, which empty the tree, and commits.
  void stop();
  /// Leaves the status tree as a process leaves it that dies: the state machines end, and nothing
  /// is torn down. What starts next takes up what it finds; with a store, what was committed and
  /// nothing else.
  void die();
  /// Dies and starts.
  void restart();
  bool running() const { return machines_ != nullptr; }

  /// A frame that came in on this interface.
  void receive(Lumo::IntfId intfId, std::span<uint8_t const> frame);
  /// A frame of this interface follows the one that is handed over next. Need not be called: with
  /// thousands of interfaces it saves the time that their memory takes to come.
  void expect(Lumo::IntfId intfId) const;

  Vesk::Ptr<Macsec::Config> const& config() const { return config_; }
  Vesk::Ptr<Macsec::Status> const& status() const { return status_; }
  Vesk::Ptr<Macsec::MkaPamManager> const& pamManager() const { return pamManager_; }
  Vesk::Ptr<Interface::EthIntfStatusDir> const& ethIntfStatusDir() const {
    return ethIntfStatusDir_;
  }
  Vesk::Ptr<Dot1x::EapKeyStatus> const& eapKeyStatus() const { return eapKeyStatus_; }
  /// The hardware slices, each a `MacSecStatus`.
  Vesk::Ptr<Vesk::Dir> const& slices() const { return slices_; }
  Vesk::Ptr<Macsec::MacSecIntfStatusPtrDir> const& hwStatus() const { return hwStatus_; }
  Vesk::Ptr<Interface::IntfForwardingModelInputDir> const& forwardingModelInputDir() const {
    return forwardingModelInputDir_;
  }
  /// What is closed for the loss of all peers; beside the engine's own input.
  Vesk::Ptr<Interface::IntfForwardingModelInputDir> const& peerLossInputDir() const {
    return peerLossInputDir_;
  }
  /// Whose transmit key is held back (`TransmitHold`), and closed for that; beside the other
  /// inputs.
  Vesk::Ptr<Interface::IntfForwardingModelInputDir> const& transmitHoldInputDir() const {
    return transmitHoldInputDir_;
  }
  Vesk::Ptr<Zorn::TimerWheel> const& timerWheel() const { return timerWheel_; }
  /// Goes on over a stop and a restart.
  Vesk::Ptr<Macsec::Brine::MessageCounters> const& counters() const { return counters_; }
  /// Null while the switch doesn't run.
  Codec::FrameCodec* codec() const;
  /// What decides on new SAKs for the key in use on this interface; null when no key is in use.
  Vesk::Ptr<Macsec::MkaKeyServerSm> keyServerSm(Lumo::IntfId intfId) const;

  /// How long a port has been sending with its key; nothing for one that doesn't send.
  std::optional<KeyAge> keyAge(Lumo::IntfId intfId) const;
  /// What was sent and received with each key, for the hardware to ask and to tell.
  KeyHistory& keyHistory() { return keyHistory_; }
  KeyHistory const& keyHistory() const { return keyHistory_; }
  /// The hardware says that it can't send with this key without the danger of a nonce used twice.
  void keyIsSpent(Lumo::IntfId intfId, SakId const& sak);
  /// Why nothing is sent on an interface although a key is there.
  TransmitHold::Reason transmitHold(Lumo::IntfId intfId) const;
  /// Whether traffic may pass; if not, why not.
  Passage passage(Lumo::IntfId intfId) const;
  bool isOpen(Lumo::IntfId intfId) const { return passage(intfId) == Passage::open; }

  /// What the doctor has done; null without one, or while the switch doesn't run.
  PortDoctor::Counts const* doctorCounts() const;

  /// What the frames of an interface tell, until it goes; of one that has had none, nothing.
  FrameEvidence const& frameEvidence(Lumo::IntfId intfId) const;
  /// What keeps the hardware of an interface from doing as asked, as its driver says it, and what
  /// to do about it; empty when nothing does.
  void hardwareFaultIs(Lumo::IntfId intfId, std::string const& fault,
                       std::string const& remedy = {});
  std::string hardwareFault(Lumo::IntfId intfId) const;
  std::string hardwareRemedy(Lumo::IntfId intfId) const;
  /// Whoever tells more of the hardware than the tree; null for nobody.
  using HardwareReports = std::function<HardwareReport(Lumo::IntfId)>;
  void hardwareReportsFrom(HardwareReports reports) { hardwareReports_ = std::move(reports); }
  HardwareReport hardwareReport(Lumo::IntfId intfId) const;
  /// The device or the SAs of this interface stand otherwise than reported before.
  void hardwareReportChanged(Lumo::IntfId intfId);
  /// Who hears of frames and of the hardware, from now on or no longer.
  void tapIs(HostTap& tap) { taps_.tapIs(tap); }
  void tapDel(HostTap& tap) { taps_.tapDel(tap); }

 private:
  struct ConfigReactor;
  struct Machines;

  void handleShutdown();
  void rebuildStatus();
  void takeDialects(SwitchConfig const& config);
  void applyDialects();
  void takeClosing(SwitchConfig const& config);
  void portNumberIs(InterfaceConfig const& config);

  Vesk::World& world_;
  // While it is made, and while it ends.
  std::optional<Vesk::WorldScope> scope_;
  HostTaps taps_;
  HostOptions const options_;
  Vesk::Ptr<Macsec::Config> config_;
  Vesk::Ptr<Macsec::Status> status_;
  std::vector<DroppedState> droppedState_;
  KeyHistory keyHistory_;
  KeptConfig keptConfig_;
  std::string configFault_;
  std::unique_ptr<StateKeeper> keeper_;
  Vesk::Ptr<Macsec::MkaPamManager> pamManager_;
  Vesk::Ptr<Interface::EthIntfStatusDir> ethIntfStatusDir_;
  Vesk::Ptr<Dot1x::EapKeyStatus> eapKeyStatus_;
  Vesk::Ptr<Vesk::Dir> slices_;
  Vesk::Ptr<Macsec::MacSecIntfStatusPtrDir> hwStatus_;
  Vesk::Ptr<Interface::IntfForwardingModelInputDir> forwardingModelInputDir_;
  Vesk::Ptr<Interface::IntfForwardingModelInputDir> peerLossInputDir_;
  Vesk::Ptr<Interface::IntfForwardingModelInputDir> transmitHoldInputDir_;
  Vesk::Ptr<Zorn::TimerWheel> timerWheel_;
  Vesk::Ptr<Macsec::Brine::MessageCounters> counters_;
  Vesk::Ptr<ConfigReactor> configReactor_;
  std::map<Lumo::IntfId, Codec::Dialect> dialects_;
  std::set<Lumo::IntfId> closing_;  ///< ports without peers
  std::set<Lumo::IntfId> setDown_;  ///< interfaces
  Vesk::InterfaceTable<FrameEvidence> frameEvidence_;
  std::map<Lumo::IntfId, Fault> hardwareFaults_;
  HardwareReports hardwareReports_;
  std::unique_ptr<Machines> machines_;
};

}  // namespace Macsecd
