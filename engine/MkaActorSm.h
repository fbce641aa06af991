#pragma once

#include "controlled_port/ControlledPortSm.h"
#include "engine/MkaKeyServerSm.h"
#include "model/MacSecStatus.h"
#include "model/MkaPamManager.h"
#include "model/Status.h"
#include "runtime/Reactor.h"
#include "runtime/TimerWheel.h"

namespace Macsec {

/// One participant of the MACsec Key Agreement protocol (IEEE 802.1X-2010, clause 9): one actor for
/// one CKN on one port. It owns its member identity, its derived keys, its peer lists, its key
/// server election and its transmit timer; while it is principal it owns a key server and
/// a controlled port as well. Its state lies in `MkaActorStatus`: an actor that is made over one
/// that has been used continues where that one stopped.
class MkaActorSm final : public Vesk::StateMachine {
 public:
  static constexpr bool kIsHot = true;
  /// `cak` is encoded; `pamManager` may be null, and no MKPDU flows then.
  MkaActorSm(Vesk::String8 ckn, Vesk::String8 cak, Lumo::IntfId intfId, Vesk::Ptr<Status> status,
             Vesk::Ptr<MkaPamManager> pamManager, Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
             Vesk::Ptr<Zorn::TimerWheel> timerWheel);
  MkaActorSm(Vesk::Unstarted, Vesk::String8 ckn, Vesk::String8 cak, Lumo::IntfId intfId,
             Vesk::Ptr<Status> status, Vesk::Ptr<MkaPamManager> pamManager,
             Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
             Vesk::Ptr<Zorn::TimerWheel> timerWheel);
  ~MkaActorSm() override;
  static Vesk::Ptr<MkaActorSm> MkaActorSmIs(Vesk::String8 ckn, Vesk::String8 cak,
                                            Lumo::IntfId intfId, Vesk::Ptr<Status> status,
                                            Vesk::Ptr<MkaPamManager> pamManager,
                                            Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
                                            Vesk::Ptr<Zorn::TimerWheel> timerWheel);
  void hasNotificationActiveIs(bool active) override;

  Vesk::String8 const& fwkKey() const { return ckn_; }
  Vesk::String8 const& ckn() const { return ckn_; }
  Vesk::String8 const& cak() const { return cak_; }
  Lumo::IntfId intfId() const { return intfId_; }
  bool initialized() const { return initialized_; }
  Vesk::Ptr<Status> const& status() const { return status_; }
  Vesk::Ptr<IntfStatus const> const& intfStatus() const { return intfStatus_; }
  Vesk::Ptr<MkaActorStatus> const& actorStatus() const { return actorStatus_; }
  /// Null if it was made without one.
  Vesk::Ptr<MkaPamManager> const& pamManager() const { return pamManager_; }
  Vesk::Ptr<MacSecIntfStatusPtrDir const> const& hwStatus() const { return hwStatus_; }
  Vesk::Ptr<Zorn::TimerWheel> const& timerWheel() const { return timerWheel_; }
  Vesk::Ptr<CpStatus const> const& cpStatus() const { return cpStatus_; }
  Vesk::Ptr<MkaPortStatus> const& portStatus() const { return portStatus_; }
  /// The manager's messages; null without a manager, without which no MKPDU comes.
  Vesk::Ptr<MkaMessageInfo> txMessageInfo() const;
  Vesk::Ptr<MkaMessageInfo> rxMessageInfo() const;
  Zorn::TimerWheel::NotifieeConst const& mkpduTimer() const;

  Vesk::Ptr<MkaKeyServerSm> const& keyServerSm() const { return keyServerSm_; }
  Vesk::Ptr<MkaKeyServerSm> keyServerSmIs(Lumo::IntfId intfId, Vesk::String8 const& ckn,
                                          Vesk::Ptr<Status> const& status,
                                          Vesk::Ptr<Zorn::TimerWheel> const& mkaPeriodicTimer,
                                          Vesk::Ptr<Zorn::TimerWheel> const& reKeyTimer);
  void keyServerSmDel() { Vesk::childDel(keyServerSm_); }
  Vesk::Ptr<ControlledPortSm> const& cpSm() const { return cpSm_; }
  Vesk::Ptr<ControlledPortSm> cpSmIs(Vesk::String8 const& ckn, Lumo::IntfId intfId,
                                     Vesk::Ptr<Status> const& status,
                                     Vesk::Ptr<MacSecIntfStatusPtrDir const> const& hwStatus,
                                     Vesk::Ptr<Zorn::TimerWheel> const& timerWheel);
  void cpSmDel() { Vesk::childDel(cpSm_); }

  // Frame.
  void handleInitialized();
  void handlePrincipalActor();
  void handleCleanUp();
  void updateMsgId();
  void doUpdateActorSuccess();
  unsigned char getKeyServerPriority() const;
  // Transmit.
  void handleMkpduTimerExpiry();
  // Receive.
  void handleRxMessage();
  /// True when the rest of the MKPDU is to be looked at.
  bool parseBasicInfo();
  // Peers.
  void parseLivePeerInfo();
  void handlePeerReview();
  // Key server election.
  void doUpdateKeyServer();
  // Distributed keys.
  void parseCakDistInfo();
  void parseSakDistInfo();
  void parseSakUseInfo();

 protected:
  void end() override;

 private:
  struct ActorStatusReactor;
  struct PamManagerReactor;
  struct RxMessageInfoReactor;
  struct MkpduTimerReactor;

  MkaMessageInfo const& received() const { return *pamManager_->rxMessageInfo(); }
  void rxMessageInfoReactorIs(Vesk::Ptr<MkaMessageInfo> const& rxMessageInfo);
  void deriveKeys();
  void armFirstMkpdu();
  bool conflictsWithPeer(Vesk::String8 const& msgId) const;
  bool mayBeKeyServer() const;
  void transmit(MkaMessageInfo& tx);
  BasicInfo basicInfo();
  SakDistInfo sakDistInfo() const;
  SakUseInfo sakUseInfo() const;
  bool isListed(MkaMessageInfo::LivePeerMap const& peers, char const* where) const;
  bool isAcceptable(uint32_t listedNumber) const;
  void takeLivePath(MkaInfo const& info);
  void takePotentialPath(MkaInfo const& info);
  bool hasAgedOut(MkaPeer const& peer, double now) const;
  BasicInfo selfCandidate() const;
  void takeSak(Sak const& sak);
  bool canAllPeersReceive(KeysLPN& reported) const;
  void applyFollowerRule(BasicInfo const& basic, KeyInfo const& match);
  void applyKeyServerRule(KeysLPN& reported);
  void countLlpnExhaustion(SakUseInfo const& use);

  // What each MKPDU looks at lies together, in front.
  Vesk::String8 const ckn_;
  Lumo::IntfId const intfId_;
  bool initialized_ = false;
  Vesk::Ptr<MkaPamManager> const pamManager_;
  Vesk::Ptr<IntfStatus const> intfStatus_;
  Vesk::Ptr<MkaActorStatus> actorStatus_;
  Vesk::Ptr<CpStatus const> cpStatus_;
  Vesk::Ptr<MkaPortStatus> portStatus_;
  Vesk::Ptr<MkaKeyServerSm> keyServerSm_;
  Vesk::Ptr<MkpduTimerReactor> mkpduTimer_;
  Vesk::String8 const cak_;
  Vesk::Ptr<Status> const status_;
  Vesk::Ptr<MacSecIntfStatusPtrDir const> const hwStatus_;
  Vesk::Ptr<Zorn::TimerWheel> const timerWheel_;
  Vesk::Ptr<ActorStatusReactor> actorStatusReactor_;
  Vesk::Ptr<PamManagerReactor> pamManagerReactor_;
  Vesk::Ptr<RxMessageInfoReactor> rxMessageInfo_;
  Vesk::Ptr<ControlledPortSm> cpSm_;
};

/// Builds the state machine with its notification on.
Vesk::Ptr<MkaActorSm> mkaActorSmFactory(Vesk::String8 ckn, Vesk::String8 cak, Lumo::IntfId intfId,
                                        Vesk::Ptr<Status> status,
                                        Vesk::Ptr<MkaPamManager> pamManager,
                                        Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
                                        Vesk::Ptr<Zorn::TimerWheel> timerWheel);

/// The better of two candidates for key server: by priority, then by MAC address, the smaller first
/// (IEEE 802.1X-2010, 9.5). Null when neither wins: the port number never breaks a tie.
MkaPeer const* electKeyServer(MkaPeer const* a, MkaPeer const* b);

/// Whether a report of a key is about this SAK: `keyTx`, `keyRx` and `keyLLPN` play no part.
bool sakMatch(KeyInfo const& keyInfo, Sak const& sak);

}  // namespace Macsec
