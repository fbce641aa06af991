#include <fmt/format.h>

#include <algorithm>

#include "host/explain/Explainer.h"
#include "host/text/PortText.h"
#include "host/watch/PortActors.h"
#include "platform/CknOctets.h"
#include "platform/Hex.h"

// Who is at the other end, and whether it agrees.

namespace Macsecd {

using Macsec::MkaActorStatus;
using SubType = FrameEvidence::SubType;
namespace Reason = Macsec::MessageCounterReason;

namespace {

template <class Test>
bool anyActor(Macsec::MkaPortStatus const& port, Test test) {
  for (MkaActorStatus& actor : port.actorStatus()) {
    if (test(actor)) return true;
  }
  return false;
}

// As the configuration spells it and, if that is another form, as it goes on the wire.
std::string nameText(Macsec::Cak const& key) {
  std::string const octets(Macsec::hexString(Macsec::CknOctets(key.ckn().view()).octets()).view());
  std::string const name = key.ckn().charPtr();
  return Macsec::CknOctets::standsForOctets(name) ? name : fmt::format("{} ({})", name, octets);
}

std::string namesOf(Macsec::IntfStatus const& intfStatus) {
  std::string names;
  if (intfStatus.key() != Macsec::Cak()) names = nameText(intfStatus.key());
  if (intfStatus.defaultKey() == Macsec::Cak()) return names;
  return fmt::format("{}{}{} (fallback)", names, names.empty() ? "" : ", ",
                     nameText(intfStatus.defaultKey()));
}

}  // namespace

// Frames are looked at for what is wrong with them only while no peer is live: the fallback key's
// peer may be there, and the primary key's frames be refused.
bool Explainer::frames() {
  notePeersLost();
  noteRefusedFrames();
  if (hasLivePeer(*port_)) return true;
  noteReplayedFrames();
  if (!evidence_.anyFrame(lifeTime())) {
    note(CauseKind::noFrames,
         fmt::format("no MKPDU has come from the other end for {:g} seconds", lifeTime()),
         "check that MACsec runs there, and that nothing on the way drops EtherType 0x888E");
    return false;
  }
  bool const isHeard =
      anyActor(*port_, [](MkaActorStatus const& actor) { return !actor.potentialPeer().empty(); });
  if (isHeard) {
    note(CauseKind::oneWay, "the other end is heard, but doesn't list this switch as its peer",
         "check that this switch's frames arrive there, and that the other end has their key");
  }
  return false;
}

void Explainer::notePeersLost() {
  if (passage_ != Passage::peersLost) return;
  note(CauseKind::peersLost, "all peers are lost, and 'on-peer-loss: close' closes the port then",
       "check the other end; the port opens with the first peer that is heard again");
}

// Frames of another time came in, and none that makes a peer of their sender.
void Explainer::noteWaitingForPeer() {
  note(CauseKind::oneWay, "MKPDUs come in, but nobody lists this switch as its peer yet",
       fmt::format("wait {:g} seconds; if it stays so, run 'macsecctl explain' at the other end",
                   lifeTime()));
}

void Explainer::noteRefusedFrames() {
  auto const senders = evidence_.senders(lifeTime());
  if (std::ranges::find(senders, port_->mySci()) != senders.end()) {
    note(CauseKind::duplicateSci,
         fmt::format("frames come in with this switch's own SCI, {}", sciText(port_->mySci())),
         "give one end another MAC address or port number, or find the loop");
  } else if (evidence_.cameFrom(ethIntf_->ethAddr(), lifeTime())) {
    note(CauseKind::sameAddress, "both ends of the link have the same MAC address",
         "give one end another address");
  }
  if (auto const name = evidence_.unknownName(lifeTime())) {
    note(CauseKind::unknownName,
         fmt::format("frames come in under the key name {}; this end has {}", *name,
                     namesOf(*intfStatus_)),
         "give both ends the same key name (ckn)");
  }
  if (auto const name = evidence_.wrongName(lifeTime())) {
    note(CauseKind::wrongCak,
         fmt::format("frames come in under the key name {} with a wrong ICV", *name),
         "give both ends the same key (cak) and 'cipher-suite' under this name");
  }
  for (SubType const subType :
       {SubType::eapolErr, SubType::basicParamSetErr, SubType::livePeerListErr,
        SubType::potentialPeerListErr, SubType::sakUseSetErr, SubType::distSakSetErr,
        SubType::distCakSetErr, SubType::icvIndicatorErr}) {
    if (!evidence_.anyRefused(subType, lifeTime())) continue;
    note(CauseKind::malformedFrames,
         fmt::format("frames come in that fail with {}", Vesk::stringValue(subType)),
         "capture them ('macsecctl capture'); check the other end, and 'dialect' in the "
         "configuration");
  }
}

// They weren't taken in, so that who has sent them isn't a peer.
void Explainer::noteReplayedFrames() {
  for (SubType const subType : {Reason::replayErr, Reason::livenessErr, Reason::tooManyPeersErr}) {
    if (!evidence_.anyRefused(subType, lifeTime())) continue;
    note(CauseKind::replayedFrames,
         fmt::format(
             "MKPDUs come in that look as if somebody had recorded them and sent them again ({})",
             Macsec::reasonName(subType)),
         "find out who else is on the link, and check that frames of this end arrive at the other");
  }
}

// Extended packet numbers give the two members of a link the SSCIs 1 and 2.
void Explainer::noteTooManyMembers() {
  note(CauseKind::tooManyMembers, "more than two members are on the link",
       "extended packet numbers need exactly two: take the others off the segment");
}

bool Explainer::members() {
  bool const areMany =
      evidence_.senders(lifeTime()).size() > 1 ||
      anyActor(*port_, [](MkaActorStatus const& actor) { return actor.livePeer().members() > 1; });
  if (areMany && !out_.has(CauseKind::tooManyMembers)) noteTooManyMembers();
  bool const isElected = anyActor(*port_, [](MkaActorStatus const& actor) {
    return !actor.livePeer().empty() && actor.keyServer() != Macsec::Sci();
  });
  if (isElected) return true;
  note(CauseKind::noKeyServer, "the members of the link can't agree on a key server",
       "give the ends different key server priorities or MAC addresses; with 802.1X, one end has "
       "to be the authenticator");
  return false;
}

// A follower's actor becomes principal with the first key that it takes.
bool Explainer::principal() {
  if (principal_) {
    if (principal_->defaultActor() && intfStatus_->key() != Macsec::Cak()) {
      note(CauseKind::fallbackInUse, "the fallback key is in use",
           "correct the primary key at the end where it is wrong");
    }
    return true;
  }
  noteSuite();
  if (out_.secured && doesAnyReceive(*port_) && !doesAnyReceiveWith(*port_, cp_->txSak())) {
    note(CauseKind::peerNotReceiving,
         fmt::format("the peer has gone over to another key than {}, with which this end sends",
                     keyText(cp_->txSak())),
         fmt::format("wait: the port begins anew within {:g} seconds", 3 * lifeTime()));
  }
  note(CauseKind::notPrincipal,
       "peers agree on a key server, but no key has become the principal one yet",
       fmt::format("wait: a key server makes a key within {:g} seconds; under the fallback key it "
                   "first waits {} seconds for the primary one",
                   lifeTime(), host_.status()->defaultKeyActivationPeriod()));
  return false;
}

}  // namespace Macsecd
