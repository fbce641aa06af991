#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <vector>

#include "hardware/HwEmulator.h"
#include "host/Host.h"
#include "host/watch/FormerKeys.h"
#include "host/watch/NonceWatch.h"
#include "lab/data/SecY.h"
#include "lab/scenario/Scenario.h"

namespace Lab {

/// The MACsec hardware of one switch: a slice with an entry for each interface. The emulator
/// answers into a copy that nobody else sees; what it answers reaches the slice at once, after
/// a delay, or never, and the transmit SA with a packet number if one is given. It sends nothing
/// with a key that the host holds back, and goes on with a key where it stood. Frames of data go
/// through a SecY that has what was installed and is still asked for, or was until a while ago.
///
///     CpStatus -> HwEmulator -> copy -> (mood) -> slice -> HwStatusSm -> engine
///                                          |
///                                          +----> SecY
class Hardware {
 public:
  /// Puts the slice into the host's directory of slices. All calls are made inside the world of the
  /// switch. `name` is that of the switch for the watch, which is told of each transmit SA.
  Hardware(Macsecd::Host& host, std::vector<Lumo::IntfId> const& interfaces,
           std::string const& name, Macsecd::NonceWatch& nonces);
  ~Hardware();
  Hardware(Hardware const&) = delete;
  Hardware& operator=(Hardware const&) = delete;

  /// Begins to answer what this status asks for, from what it asks for already. After a restart it
  /// is another one, and what the slice has installed stays as it is.
  void follow(Vesk::Ptr<Macsec::Status> const& status);
  /// The process dies: what is taken down with it isn't taken out of the hardware.
  void followNothing();
  /// Another mood; what is still asked for is answered at once (normal), after `delay` seconds from
  /// now on (slow), or not (silent).
  void moodIs(HardwareMood mood, double delay);
  /// The transmit SA that the interface asks for, now or next, is reported with this packet number:
  /// next too while the one that it asks for now is held back.
  void packetNumberIs(Lumo::IntfId intfId, uint32_t number);
  /// The same of the one that it asks for next.
  void nextPacketNumberIs(Lumo::IntfId intfId, uint32_t number) { packetNumbers_[intfId] = number; }
  /// The transmit key is lost, and installed again.
  void keyLost(Lumo::IntfId intfId);

  /// The interface is there; or it has gone, with all that was installed on it.
  void interfaceIs(Lumo::IntfId intfId);
  void interfaceDel(Lumo::IntfId intfId);
  /// Somebody sets the device down through which the traffic of the interface goes, or up again.
  void deviceIs(Lumo::IntfId intfId, bool up);
  bool isDeviceDown(Lumo::IntfId intfId) const { return downDevices_.contains(intfId); }

  Vesk::Ptr<Macsec::MacSecStatus> const& slice() const { return slice_; }
  /// What protects and validates the frames of an interface; null without one that is up.
  SecY* secY(Lumo::IntfId intfId);
  /// It answers at once, and owes no answer.
  bool isWell() const { return mood_ == HardwareMood::normal && answers_.empty(); }
  /// When the next answer is due; infinity when none is.
  double nextTime() const;
  /// Gives the answer that is due first, if it is due by `Vesk::now()`. False if none was due.
  bool answerOne();

 private:
  struct CopyReactor;
  struct SliceReactor;
  struct HoldReactor;
  struct StatusReactor;
  struct CpStatusReactor;
  // Something that the copy has and the slice hasn't yet.
  struct Answer {
    double due;
    Lumo::IntfId intfId;
    std::optional<Macsec::AssociationNumber> rx;  ///< none for the transmit SA
  };

  // What has been sent with the transmit SA of an interface, as hardware tells whoever starts.
  struct Sent {
    Macsecd::SakId id;
    uint32_t ssci;
    uint64_t next;
  };

  void noteSent(Lumo::IntfId intfId, Sent const& sent);
  Macsecd::HardwareReport report(Lumo::IntfId intfId) const;
  bool isInstalled(Lumo::IntfId intfId, std::optional<Macsec::AssociationNumber> rx) const;
  void copied(Lumo::IntfId intfId, std::optional<Macsec::AssociationNumber> rx);
  void give(Answer const& answer);
  void giveRx(Lumo::IntfId intfId, Macsec::AssociationNumber an);
  void giveTx(Lumo::IntfId intfId);
  std::optional<uint64_t> firstToSend(Lumo::IntfId intfId, Macsec::Sak const& sak);
  uint32_t ssciOf(Lumo::IntfId intfId) const;
  void sendNothing(Lumo::IntfId intfId);
  void handleHold(Lumo::IntfId intfId);
  void handleMySsci(Lumo::IntfId intfId);
  void sendWith(Lumo::IntfId intfId, Macsec::Sak const& sak, uint64_t first);
  void receiveWith(Lumo::IntfId intfId, Macsec::Sak const& sak);
  void handleAsked(Lumo::IntfId intfId);
  void keepWhatIsAskedFor(Lumo::IntfId intfId);
  void handlePeerSsci(Lumo::IntfId intfId);
  double dueTime() const;

  Macsecd::Host& host_;
  std::string const name_;
  Macsecd::NonceWatch& nonces_;
  Vesk::Ptr<Macsec::MacSecStatus> slice_;
  Vesk::Ptr<Macsec::MacSecIntfStatusPtrDir> copy_;
  std::map<Lumo::IntfId, Vesk::Ptr<CopyReactor>> copyReactors_;
  std::map<Lumo::IntfId, Vesk::Ptr<SliceReactor>> sliceReactors_;
  Vesk::Ptr<HoldReactor> holdReactor_;
  Vesk::Ptr<StatusReactor> statusReactor_;
  Vesk::Ptr<Macsec::Status> status_;
  Vesk::Ptr<Macsec::HwEmulator> emulator_;
  HardwareMood mood_ = HardwareMood::normal;
  double delay_ = 0;
  bool takingUp_ = false;
  std::deque<Answer> answers_;
  std::map<Lumo::IntfId, uint32_t> packetNumbers_;
  std::set<Lumo::IntfId> downDevices_;
  // What handles frames of data, and the receive keys that stay in it for a while.
  struct DataPath {
    SecY secY;
    Macsecd::FormerKeys formerKeys;
  };
  std::map<Lumo::IntfId, DataPath> dataPaths_;
  std::map<Lumo::IntfId, Sent> sent_;
};

}  // namespace Lab
