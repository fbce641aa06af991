#include <fmt/format.h>

#include "engine/MkaActorSm.h"
#include "host/Explainer.h"
#include "host/PortText.h"
#include "runtime/World.h"

// From the agreement to the key in use.

namespace Macsecd {

using Macsec::Sak;
using Macsec::SakContext;

// What came in as a key for another suite wasn't taken.
void Explainer::noteSuite() {
  auto const suite = evidence_.distributedSuite(lifeTime());
  if (!suite || *suite == intfStatus_->cipher()) return;
  note(CauseKind::cipherMismatch,
       fmt::format("the key server gives keys for {}, and this end is set to {}",
                   Vesk::stringValue(*suite), Vesk::stringValue(intfStatus_->cipher())),
       "give both ends the same 'cipher-suite'");
}

// What is held back isn't installed, and that is told already.
void Explainer::keys() {
  noteSuite();
  if (host_.transmitHold(intfId_) == TransmitHold::Reason::tooManyMembers) return;
  if (!out_.secured && principal_->distSak() == Sak(Macsec::AssociationNumber(0))) {
    note(CauseKind::noSak,
         principal_->electedSelf() ? "this switch is key server and makes the first key"
                                   : "the key server hasn't given a key yet",
         fmt::format("wait {:g} seconds; if it stays so, see the other end", lifeTime()));
    return;
  }
  noteSpentKey();
  noteInstallation();
  noteDeafPeers();
  noteNotValidFrames();
  if (!out_.secured && out_.causes.empty()) noteWaiting();
}

void Explainer::noteSpentKey() {
  if (host_.transmitHold(intfId_) == TransmitHold::Reason::otherPeer) {
    note(CauseKind::otherPeer,
         fmt::format("the peer has another SCI than {}, with which this port began",
                     sciText(cp_->peerSsci().sci())),
         fmt::format("wait: the port begins anew within {:g} seconds", 3 * lifeTime()));
  }
  if (host_.transmitHold(intfId_) != TransmitHold::Reason::spentKey) return;
  note(CauseKind::spentKey,
       fmt::format("nothing may be sent with key {} any more: a packet number could be used twice",
                   sakText(cp_->txSak())),
       fmt::format("wait for a new key; if none comes within {:g} seconds, see the key server",
                   4 * lifeTime()));
}

void Explainer::noteInstallation() {
  SakContext const& latest = cp_->latestSakContext();
  bool const waitsForRx = latest.rxEnabled() && !latest.rxInstalled();
  bool const waitsForTx = latest.txEnabled() && !latest.txInstalled();
  bool const receivesNot = waitsForRx || passage_ == Passage::noReceiveSa;
  if (!receivesNot && !waitsForTx && passage_ != Passage::noTransmitSa) return;
  Sak const& sak = latest == SakContext() ? cp_->txSak() : latest.sak();
  note(CauseKind::sakNotInstalled,
       fmt::format("the hardware hasn't installed key {} for {}", sakText(sak),
                   receivesNot ? "receive" : "transmit"),
       "see the driver's messages in the log");
}

// The key server sends with a key when all peers receive with it.
void Explainer::noteDeafPeers() {
  if (!principal_->electedSelf()) return;
  for (Macsec::MkaPeer const& peer : principal_->livePeer()) {
    Macsec::SakUseInfo const& use = peer.sakUseInfo();
    bool receives = false;
    for (auto const* info : {&use.latestKeyInfo(), &use.oldKeyInfo()}) {
      receives |= sakMatch(*info, principal_->distSak()) && info->keyRx();
    }
    if (receives) continue;
    note(CauseKind::peerNotReceiving,
         fmt::format("{} doesn't receive with key {} yet",
                     peer.baseInfo().sci().addr().stringValue().view(),
                     sakText(principal_->distSak())),
         "see there: the same 'cipher-suite', and its hardware");
  }
}

// All is right so far: the key server sends first.
void Explainer::noteWaiting() {
  note(CauseKind::waitingToSend,
       fmt::format("key {} is there, and the key server doesn't send with it yet",
                   sakText(principal_->distSak())),
       fmt::format("wait {:g} seconds; if it stays so, see the key server and its hardware",
                   lifeTime()));
}

void Explainer::noteNotValidFrames() {
  HardwareReport const report = host_.hardwareReport(intfId_);
  if (Vesk::now() - report.notValidTime > lifeTime()) return;
  note(CauseKind::framesNotValid,
       fmt::format("frames come in that aren't valid under key {} ({} so far, InPktsNotValid)",
                   sakText(cp_->txSak()), report.framesNotValid),
       "the other end encrypts with another key, salt or SSCI: see whether its equipment gives "
       "SSCI 1 "
       "to the greatest SCI, and bind the port to its profile anew there");
}

}  // namespace Macsecd
