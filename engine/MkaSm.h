#pragma once

#include <vector>

#include "engine/MkaPortSm.h"
#include "model/MacSecStatus.h"
#include "model/MkaPamManager.h"
#include "model/Status.h"
#include "platform/EthIntfStatus.h"
#include "runtime/Reactor.h"
#include "runtime/TimerWheel.h"

namespace Macsec {

/// Decides for each interface whether a port exists. A port of an interface with an `IntfStatus`:
///
///                   link and hardware, or link up            link down
///     +--------+  ------------------------------>  +---------+ ----> +---------+
///     | Absent |                                   | Running |       | Waiting |
///     +--------+  <------------------------------  +---------+ <---- +---------+
///          ^         IntfStatus, Ethernet interface or       link up       |
///          |         hardware gone; end of MkaSm                           |
///          +---------------------------------------------------------------+
///
/// Waiting keeps `MkaPortStatus` and `CpStatus`; Running has an `MkaPortSm` as well.
class MkaSm final : public Vesk::StateMachine {
 public:
  MkaSm(Vesk::Ptr<Status> status, Vesk::Ptr<Interface::EthIntfStatusDir const> ethIntfStatusDir,
        Vesk::Ptr<MkaPamManager> pamManager, Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
        Vesk::Ptr<Zorn::TimerWheel> timerWheel);
  MkaSm(Vesk::Unstarted, Vesk::Ptr<Status> status,
        Vesk::Ptr<Interface::EthIntfStatusDir const> ethIntfStatusDir,
        Vesk::Ptr<MkaPamManager> pamManager, Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
        Vesk::Ptr<Zorn::TimerWheel> timerWheel);
  ~MkaSm() override;
  static Vesk::Ptr<MkaSm> MkaSmIs(Vesk::Ptr<Status> status,
                                  Vesk::Ptr<Interface::EthIntfStatusDir const> ethIntfStatusDir,
                                  Vesk::Ptr<MkaPamManager> pamManager,
                                  Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
                                  Vesk::Ptr<Zorn::TimerWheel> timerWheel);
  void hasNotificationActiveIs(bool active) override;

  Vesk::Ptr<Status> const& status() const;
  Vesk::Ptr<Interface::EthIntfStatusDir const> const& ethIntfStatusDir() const;
  Vesk::Ptr<MkaPamManager> const& pamManager() const { return pamManager_; }
  Vesk::Ptr<MacSecIntfStatusPtrDir const> const& hwStatus() const;
  Vesk::Ptr<Zorn::TimerWheel> const& timerWheel() const { return timerWheel_; }

  using MkaPortSmMap = Vesk::HashMap<MkaPortSm, Lumo::IntfId>;
  MkaPortSmMap const& mkaPortSm() const { return mkaPortSm_; }
  Vesk::Ptr<MkaPortSm> mkaPortSm(Lumo::IntfId intfId) const { return mkaPortSm_[intfId]; }
  /// The port that there is, or a new one of these.
  Vesk::Ptr<MkaPortSm> mkaPortSmIs(Lumo::IntfId intfId, Vesk::Ptr<Status> const& status,
                                   Vesk::Ptr<MkaPamManager> const& pamManager,
                                   Vesk::Ptr<MacSecIntfStatusPtrDir const> const& hwStatus,
                                   Vesk::Ptr<Zorn::TimerWheel> const& timerWheel);
  void mkaPortSmDel(Lumo::IntfId intfId);
  void mkaPortSmDelAll();
  /// A state machine has no notifiees: this reaches nobody.
  void mkaPortSmNotify(Lumo::IntfId) const {}
  bool initialized() const { return initialized_; }

  void handleInitialized();
  void handleIntfStatus();
  void handleIntfStatus(Lumo::IntfId intfId);
  void handleHwStatus(Lumo::IntfId intfId);
  /// Takes the interface to Running (`del` false, given link and hardware) or to Absent.
  void createOrDeletePortSm(Lumo::IntfId intfId, bool del);
  void updateSci(Lumo::IntfId intfId);
  void handleCleanUp();

 protected:
  void end() override;

 private:
  struct StatusReactor;
  struct EthIntfStatusDirReactor;
  struct HwStatusReactor;

  bool isLinkUp(Lumo::IntfId intfId) const;
  bool isPortAskedFor(Lumo::IntfId intfId) const;
  std::vector<Lumo::IntfId> portSmKeys() const;
  void repairCpStatus();
  void repairPortStatus();
  void createPort(Lumo::IntfId intfId);
  void deletePort(Lumo::IntfId intfId);

  Vesk::Ptr<StatusReactor> status_;
  Vesk::Ptr<EthIntfStatusDirReactor> ethIntfStatusDir_;
  Vesk::Ptr<MkaPamManager> pamManager_;
  Vesk::Ptr<HwStatusReactor> hwStatus_;
  Vesk::Ptr<Zorn::TimerWheel> timerWheel_;
  MkaPortSmMap mkaPortSm_;
  // Counts the steps towards a port: the end of one sees whether another has been asked for in it.
  uint64_t portsAskedFor_ = 0;
  bool initialized_ = false;
};

/// Builds the state machine with its notification on.
Vesk::Ptr<MkaSm> mkaSmFactory(Vesk::Ptr<Status> status,
                              Vesk::Ptr<Interface::EthIntfStatusDir const> ethIntfStatusDir,
                              Vesk::Ptr<MkaPamManager> pamManager,
                              Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
                              Vesk::Ptr<Zorn::TimerWheel> timerWheel);

/// Empties what a `CpStatus` asks of the data path and closes its controlled port.
void resetCpStatus(CpStatus& cpStatus);

}  // namespace Macsec
