#include <fmt/format.h>

#include "host/explain/Explainer.h"
#include "host/text/PortText.h"
#include "host/watch/PortActors.h"
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
                   Macsec::suiteName(*suite), Macsec::suiteName(intfStatus_->cipher())),
       "give both ends the same 'cipher-suite'");
}

// What is held back isn't installed, and that is told already.
void Explainer::keys() {
  noteSuite();
  if (host_.transmitHold(intfId_) == TransmitHold::Reason::tooManyMembers) return;
  if (!out_.secured && isNone(principal_->distSak())) {
    note(CauseKind::noSak,
         principal_->electedSelf() ? "this switch is key server and makes the first key"
                                   : "the key server hasn't given a key yet",
         fmt::format("wait {:g} seconds; if it stays so, run 'macsecctl explain' at the other end",
                     lifeTime()));
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
       fmt::format("nothing may be sent with {} any more: a packet number could be used twice",
                   keyText(cp_->txSak())),
       fmt::format(
           "wait for a new key; if none comes within {:g} seconds, run 'macsecctl explain' at the "
           "key server",
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
       fmt::format("the hardware hasn't installed {} for {}", keyText(sak),
                   receivesNot ? "receive" : "transmit"),
       "see the driver's messages in the log");
}

// The key server sends with a key when all peers receive with it.
void Explainer::noteDeafPeers() {
  if (!principal_->electedSelf() || isNone(principal_->distSak())) return;
  for (Macsec::MkaPeer const& peer : principal_->livePeer()) {
    if (receivesWith(peer, principal_->distSak())) continue;
    note(CauseKind::peerNotReceiving,
         fmt::format("{} doesn't receive with {} yet", sciText(peer.baseInfo().sci()),
                     keyText(principal_->distSak())),
         "check that the other end has the same 'cipher-suite', and what its own log says of its "
         "hardware");
  }
}

// All is right so far: the key server sends first.
void Explainer::noteWaiting() {
  note(CauseKind::waitingToSend,
       fmt::format("{} is there, and the key server doesn't send with it yet",
                   keyText(principal_->distSak())),
       fmt::format("wait {:g} seconds; if it stays so, run 'macsecctl explain' at the key server",
                   lifeTime()));
}

void Explainer::noteNotValidFrames() {
  HardwareReport const report = host_.hardwareReport(intfId_);
  if (Vesk::now() - report.notValidTime > lifeTime()) return;
  note(CauseKind::framesNotValid,
       fmt::format("frames come in that aren't valid under {} ({} so far, InPktsNotValid)",
                   keyText(cp_->txSak()), report.framesNotValid),
       "the other end encrypts with another key, salt or SSCI: check that it gives SSCI 1 to the "
       "greatest SCI, and start its port anew");
}

}  // namespace Macsecd
