#include "codec/FrameReader.h"

#include "codec/AnsweredReports.h"
#include "codec/BasicSet.h"
#include "codec/DistSak.h"
#include "codec/FieldWalk.h"
#include "codec/Icv.h"
#include "codec/PeerLimit.h"
#include "codec/PeerList.h"
#include "codec/SakUse.h"
#include "model/Overlay.h"
#include "platform/Hex.h"
#include "platform/WardcodeLib.h"
#include "runtime/Assert.h"

namespace Codec {

namespace {

using Constants = Macsec::MacsecConstants;
using Types = Macsec::ParameterSetTypes;

constexpr size_t kNameAt = sizeof(Macsec::Eapol) + sizeof(Macsec::BasicParameterSet);

}  // namespace

// IEEE 802.1X-2010, 9.4.1, and 11.11 for the form.
Refusal FrameReader::check(Octets frame) {
  if (Refusal refusal = checkEapol(frame, layout_)) return refusal;
  if (Refusal refusal = checkBasicSet(layout_)) return refusal;
  if (Refusal refusal = checkActor()) return refusal;
  if (Refusal refusal = checkAlgorithm(layout_)) return refusal;
  if (Refusal refusal = checkIcv()) return refusal;
  return checkSets();
}

Refusal FrameReader::checkActor() {
  for (; named_ < port_.actors.size(); ++named_) {
    if (port_.actors[named_]->isNamed(layout_.name)) return {};
  }
  return {SubType::unrecognizedCkn, kNameAt, "begins a CKN that no actor of the interface holds"};
}

// Two actors of one interface may spell one name differently; the key tells whose frame it is.
Refusal FrameReader::checkIcv() {
  for (size_t i = named_; i < port_.actors.size(); ++i) {
    ActorKeys* const actor = port_.actors[i];
    if (i > named_ && !actor->isNamed(layout_.name)) continue;
    if (!actor->ick().matches(layout_.covered(), layout_.icv())) continue;
    actor_ = actor;
    return {};
  }
  return {SubType::icvValidationErr, layout_.covered().size(), "begins an ICV that is wrong"};
}

Refusal FrameReader::checkSets() {
  SetWalk walk(layout_);
  while (walk.next()) {
    if (Refusal refusal = takeSet(walk.set())) return refusal;
  }
  return walk.refusal();
}

Refusal FrameReader::takeSet(SetView const& set) {
  switch (set.type) {
    case Types::livePeerParameterSetType:
      livePeers_ = set.body();
      return {};
    case Types::potentialPeerParameterSetType:
      potentialPeers_ = set.body();
      return {};
    case Types::sakUseParameterSetType:
      if (set.bodyLength > 0) sakUse_ = set.octets;
      return {};
    case Types::distSakParameterSetType:
      distSak_ = set;
      if (actor_->kek().hasStored(wrappedSak(set))) return checkSuite(set);
      return unwrapSak(set, *actor_, sak_);
    case Types::distCakParameterSetType:
      distCak_ = set;
      return unwrapCak(set, *actor_, cak_, wrappedCakSize_);
    case Types::icvIndicatorParameterSetType:
      hasIcvIndicator_ = true;
      return {};
    default:
      ++unknownSets_;
      return {};
  }
}

void FrameReader::fill(Macsec::MkaMessageInfo& message, PeerLimit& limit, bool keysAreForUs) {
  VESK_ASSERT(actor_);
  message.intfIdIs(port_.intfId);
  auto const info = message.mkaInfoIs();
  info->baseInfoIs(basicInfo());
  message.livePeerDelAll();
  message.potentialPeerDelAll();
  eachPeer(livePeers_, [&](ListedPeer const& p) {
    if (limit.admits(p.msgId())) message.livePeerIs(p.msgId(), p.msgNum());
  });
  eachPeer(potentialPeers_,
           [&](ListedPeer const& p) { message.potentialPeerIs(p.msgId(), p.msgNum()); });
  info->sakUseInfoIs(sakUseInfo());
  info->sakDistInfoIs(keysAreForUs ? sakDistInfo() : Macsec::SakDistInfo());
  info->cakDistInfoIs(keysAreForUs ? cakDistInfo() : Macsec::CakDistInfo());
  info->icvIndicatorInfoIs(Macsec::IcvIndicatorInfo(hasIcvIndicator_ ? Icv::kSize : 0));
}

Macsec::BasicInfo FrameReader::basicInfo() const {
  Macsec::BasicInfo info;
  FieldValues values(port_.members);
  BasicSet::fields(FromFrame<BasicSet::Set, BasicSet::Info>{layout_.basic(), info, values});
  info.cknIs(actor_->ckn());
  return info;
}

template <class Put>
void FrameReader::eachPeer(Octets list, Put put) const {
  VESK_ASSERT(list.size() % sizeof(PeerList::Set) == 0);
  FieldValues values(port_.members);
  for (; !list.empty(); list = list.subspan(sizeof(PeerList::Set))) {
    ListedPeer peer;
    auto const& record = *Macsec::overlayOn<PeerList::Set>(list.data());
    PeerList::fields(FromFrame<PeerList::Set, PeerList::Info>{record, peer, values});
    put(peer);
  }
}

Macsec::SakUseInfo FrameReader::sakUseInfo() const {
  if (sakUse_.empty()) return Macsec::SakUseInfo();
  auto const& set = *Macsec::overlayOn<SakUse::Set>(sakUse_.data());
  FieldValues values(port_.members);
  Macsec::KeyInfo latest;
  Macsec::KeyInfo old;
  Macsec::PlainTextInfo plain;
  SakUse::latestKey(FromFrame<SakUse::Set, SakUse::Key>{set, latest, values});
  SakUse::oldKey(FromFrame<SakUse::Set, SakUse::Key>{set, old, values});
  SakUse::plainText(FromFrame<SakUse::Set, SakUse::Plain>{set, plain, values});
  Macsec::SakUseInfo report(std::move(old), std::move(latest), plain);
  if (auto const* const actor = actor_->status()) lowerAnswered(report, *actor);
  return report;
}

// Of the forms without a cipher suite the suite is `None`, so that a set that is there never is the
// default, which says that there is none.
Macsec::SakDistInfo FrameReader::sakDistInfo() {
  if (distSak_.octets.empty()) return Macsec::SakDistInfo();
  auto const& set = distSak_.as<DistSak::Set>();
  size_t const bodyLength = distSak_.bodyLength;
  FieldValues values(port_.members);
  Macsec::ANOffset anAndOffset;
  Macsec::SakDistInfo info;
  info.cipherSuiteIs(Macsec::CipherSuite::None);
  DistSak::anAndOffset(FromFrame<DistSak::Set, DistSak::AnOffset>{set, anAndOffset, values});
  DistSak::fields(FromFrame<DistSak::Set, DistSak::Info>{set, info, values}, bodyLength);
  info.anAndOffsetIs(anAndOffset);
  if (DistSak::hasKey(bodyLength)) {
    info.sakIs(actor_->kek().storedKey(wrappedSak(distSak_), sak_.octets()));
  }
  return info;
}

Macsec::CakDistInfo FrameReader::cakDistInfo() const {
  if (distCak_.octets.empty()) return Macsec::CakDistInfo();
  return Macsec::CakDistInfo(WardcodeLib::doEncodeKey(Macsec::secretHexString(cak_.octets())),
                             nameText(distCak_.body().subspan(wrappedCakSize_)));
}

Vesk::String8 FrameReader::nameText(Octets name) const {
  for (ActorKeys const* actor : port_.actors) {
    if (actor->isNamed(name)) return actor->ckn();
  }
  return Macsec::hexString(name);
}

}  // namespace Codec
