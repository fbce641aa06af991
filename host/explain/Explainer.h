#pragma once

#include "host/explain/Explain.h"

namespace Macsecd {

/// Goes along the road of a port to its key and notes what stands in the way. A stage that finds
/// its way blocked ends the walk.
class Explainer {
 public:
  Explainer(Host const& host, Lumo::IntfId intfId);
  Explanation explanation();

 private:
  // The stages. False if what comes behind can't be.
  bool configuration();
  bool key();
  bool link();
  bool hardware();
  bool frames();
  bool members();
  bool principal();
  void keys();

  void noteDevice();
  void noteDerivedKey(Macsec::Profile const& profile);
  void notePeersLost();
  void noteRefusedFrames();
  void noteReplayedFrames();
  void noteTooManyMembers();
  void noteSuite();
  void noteSpentKey();
  void noteInstallation();
  void noteDeafPeers();
  void noteNotValidFrames();
  void noteWaiting();
  void noteWaitingForPeer();
  void noteConfiguration();

  void note(CauseKind kind, std::string what, std::string remedy);
  double lifeTime() const { return host_.status()->mkaLifeTime(); }

  Host const& host_;
  Lumo::IntfId const intfId_;
  Passage const passage_;
  FrameEvidence const& evidence_;
  Vesk::Ptr<Interface::EthIntfStatus> ethIntf_;
  Vesk::Ptr<Macsec::IntfStatus> intfStatus_;
  Vesk::Ptr<Macsec::MkaPortStatus> port_;
  Vesk::Ptr<Macsec::CpStatus> cp_;
  Vesk::Ptr<Macsec::MkaActorStatus> principal_;
  Explanation out_;
};

}  // namespace Macsecd
