#include "codec/FrameWriter.h"

#include <algorithm>

#include "codec/BasicSet.h"
#include "codec/DistCak.h"
#include "codec/DistSak.h"
#include "codec/FieldWalk.h"
#include "codec/Icv.h"
#include "codec/PeerList.h"
#include "codec/SakUse.h"
#include "codec/SetWalk.h"
#include "model/Eapol.h"
#include "model/EapolType.h"
#include "model/Overlay.h"
#include "platform/SecretOctets.h"
#include "platform/WardcodeLib.h"
#include "runtime/Assert.h"

namespace Codec {

namespace {

using Constants = Macsec::MacsecConstants;
using Types = Macsec::ParameterSetTypes;
using Clear = Macsec::SecretOctets<32>;
constexpr size_t kMaxWrapped = 40;
using Wrapped = Macsec::SecretOctets<kMaxWrapped>;

/// What the sets behind the peer lists and the ICV take at most. The lists leave it free.
constexpr size_t kBehindPeers = sizeof(SakUse::Set) + sizeof(DistSak::Set) + kMaxWrapped +
                                sizeof(DistCak::Set) + kMaxWrapped + Macsec::CknOctets::kMaxSize +
                                sizeof(Icv::Set) + Icv::kSize;

/// The stored key under the key encrypting key. False if it doesn't decode, or is of no length that
/// can be wrapped.
bool wrapStored(Macsec::KeyWrap const& kek, Vesk::String8 const& stored, Wrapped& wrapped) {
  Clear clear;
  if (!clear.hexIs(WardcodeLib::doDecodeKey(stored).view())) return false;
  wrapped.sizeIs(clear.size() + Macsec::KeyWrap::kOverhead);
  return kek.wrap(clear.octets(), wrapped.octets());
}

}  // namespace

Refusal FrameWriter::refusal(SubType subType, char const* what) const {
  return {subType, buffer_.size(), what};
}

Refusal FrameWriter::write(Macsec::MkaMessageInfo const& message) {
  if (!message.mkaInfo()) return refusal(SubType::invalid, "has no message");
  actor_ = port_.actor(message.mkaInfo()->baseInfo().ckn());
  if (!actor_) return refusal(SubType::unrecognizedCkn, "has no actor of this name");
  if (Refusal r = writeEapol()) return r;
  if (Refusal r = writeSets(message)) return r;
  return writeIcv();
}

Refusal FrameWriter::writeSets(Macsec::MkaMessageInfo const& message) {
  Macsec::MkaInfo const& info = *message.mkaInfo();
  if (Refusal r = writeBasic(info.baseInfo())) return r;
  if (Refusal r = writePeers(Types::livePeerParameterSetType, message.livePeer())) return r;
  if (Refusal r = writePeers(Types::potentialPeerParameterSetType, message.potentialPeer())) {
    return r;
  }
  if (Refusal r = writeSakUse(info.sakUseInfo())) return r;
  if (isSakOf(info.baseInfo().msgId())) {
    if (Refusal r = writeDistSak(info.sakDistInfo())) return r;
  }
  return writeDistCak(info.cakDistInfo());
}

Refusal FrameWriter::writeEapol() {
  if (!port_.address) return refusal(SubType::eapolErr, "has no address of the interface");
  auto* const eapol = Macsec::overlayOn<Macsec::Eapol>(buffer_.append(18).data());
  *eapol = Macsec::Eapol();
  eapol->srcIs(*port_.address);
  eapol->eapolTypeIs(Macsec::EapolType::eapMka);
  return {};
}

std::span<uint8_t const> FrameWriter::name() const {
  return port_.dialect.nameOnWire == NameOnWire::octets ? actor_->octets() : actor_->characters();
}

// A set of a head and a body, with the zeros that end it on a multiple of 4. There is room for
// each: the peer lists alone have no bound, and `roomForPeers` gives them one.
uint8_t* FrameWriter::appendSet(size_t head, size_t bodyLength) {
  auto const octets = buffer_.append(head + aligned(bodyLength));
  VESK_ASSERT(!octets.empty());
  return octets.data();
}

Refusal FrameWriter::writeBasic(Macsec::BasicInfo const& info) {
  auto const ckn = name();
  if (ckn.empty()) return refusal(SubType::basicParamSetErr, "has no name to send");
  uint8_t* const octets = appendSet(sizeof(BasicSet::Set), ckn.size());
  auto& set = *Macsec::overlayOn<BasicSet::Set>(octets);
  FieldValues values(port_.members);
  BasicSet::fields(ToFrame<BasicSet::Set, BasicSet::Info>{set, info, values});
  if (!values.fits()) return refusal(SubType::basicParamSetErr, "has no member identifier");
  set.parameterSetBodyLengthIs(
      static_cast<uint16_t>(Constants::basicParameterSetBodyLen + ckn.size()));
  std::ranges::copy(ckn, octets + sizeof(BasicSet::Set));
  return {};
}

// Records that a list may have here.
size_t FrameWriter::roomForPeers() const {
  size_t const taken = buffer_.size() + sizeof(Macsec::PeerListSet) + kBehindPeers;
  if (taken > FrameBuffer::kMaxFrame) return 0;
  return (FrameBuffer::kMaxFrame - taken) / sizeof(PeerList::Set);
}

Refusal FrameWriter::writePeers(uint8_t type, PeerMap const& peers) {
  size_t const sent = std::min(peers.members(), roomForPeers());
  size_t const leftOut = peers.members() - sent;
  (type == Types::livePeerParameterSetType ? livePeersLeftOut_ : potentialPeersLeftOut_) = leftOut;
  if (sent == 0) return {};
  size_t const bodyLength = sent * sizeof(PeerList::Set);
  uint8_t* const octets = appendSet(sizeof(Macsec::PeerListSet), bodyLength);
  auto& head = *Macsec::overlayOn<Macsec::PeerListSet>(octets);
  head.parameterSetTypeIs(type);
  head.parameterSetBodyLengthIs(static_cast<uint16_t>(bodyLength));
  if (putPeers({octets + sizeof head, bodyLength}, peers, leftOut > 0)) return {};
  return refusal(failureOf(type), "has a peer without a member identifier");
}

// As many as there is room for. Of a list that is cut those go first that were heard.
bool FrameWriter::putPeers(std::span<uint8_t> records, PeerMap const& peers, bool areCut) {
  FieldValues values(port_.members);
  auto put = [&](bool heard) {
    for (auto const& entry : peers) {
      if (records.empty()) return;
      if (areCut && actor_->isHeard(entry.fwkKey()) != heard) continue;
      ListedPeer const peer(entry.fwkKey(), entry.value());
      auto& record = *Macsec::overlayOn<PeerList::Set>(records.data());
      PeerList::fields(ToFrame<PeerList::Set, PeerList::Info>{record, peer, values});
      records = records.subspan(sizeof record);
    }
  };
  put(true);
  if (areCut) put(false);
  return values.fits();
}

Refusal FrameWriter::writeSakUse(Macsec::SakUseInfo const& info) {
  if (info.isDefault()) return {};
  constexpr auto kFailure = SubType::sakUseSetErr;
  uint8_t* const octets = appendSet(sizeof(SakUse::Set), 0);
  auto& set = *Macsec::overlayOn<SakUse::Set>(octets);
  set.parameterSetTypeIs(Types::sakUseParameterSetType);
  set.parameterSetBodyLengthIs(Constants::sakUseParameterSetBodyLen);
  FieldValues values(port_.members);
  SakUse::latestKey(ToFrame<SakUse::Set, SakUse::Key>{set, info.latestKeyInfo(), values});
  SakUse::oldKey(ToFrame<SakUse::Set, SakUse::Key>{set, info.oldKeyInfo(), values});
  SakUse::plainText(ToFrame<SakUse::Set, SakUse::Plain>{set, info.plainTextInfo(), values});
  if (!values.fits()) return refusal(kFailure, "has a key server without a member identifier");
  return {};
}

// Who has just become key server may still have the SAK of the former one. It would go out under
// the identifier of this end, and the first one that this end makes, which has the same number,
// would then be taken for the same.
bool FrameWriter::isSakOf(Vesk::String8 const& member) const {
  auto const* const actor = actor_->status();
  return !actor || actor->distSak().isDefault() || actor->distSak().keyMsgId() == member;
}

Refusal FrameWriter::writeDistSak(Macsec::SakDistInfo const& info) {
  if (info.isDefault()) return {};
  constexpr auto kFailure = SubType::distSakSetErr;
  Wrapped key;
  bool const hasKey = !info.sak().empty() || info.cipherSuite() != Macsec::CipherSuite::None;
  if (hasKey) {
    if (!wrapStored(actor_->kek().wrap(), info.sak(), key)) {
      return refusal(kFailure, "has a SAK that can't be wrapped");
    }
    if (!DistSak::keyFits(info.cipherSuite(), key.size() - Macsec::KeyWrap::kOverhead)) {
      return refusal(kFailure, "has a SAK of a length that isn't that of its cipher suite");
    }
  }
  size_t const bodyLength = hasKey ? sizeof(DistSak::Set) - 4 + key.size() : 0;
  uint8_t* const octets = appendSet(4, bodyLength);
  auto& set = *Macsec::overlayOn<DistSak::Set>(octets);
  set.parameterSetTypeIs(Types::distSakParameterSetType);
  set.parameterSetBodyLengthIs(static_cast<uint16_t>(bodyLength));
  FieldValues values(port_.members);
  DistSak::anAndOffset(ToFrame<DistSak::Set, DistSak::AnOffset>{set, info.anAndOffset(), values});
  DistSak::fields(ToFrame<DistSak::Set, DistSak::Info>{set, info, values}, bodyLength);
  if (hasKey) std::ranges::copy(key.octets(), octets + DistSak::keyAt(bodyLength));
  return {};
}

Refusal FrameWriter::writeDistCak(Macsec::CakDistInfo const& info) {
  if (info.isDefault()) return {};
  Wrapped key;
  if (!wrapStored(actor_->kek().wrap(), info.cak(), key)) {
    return refusal(SubType::distCakSetErr, "has a CAK that can't be wrapped");
  }
  Macsec::CknOctets const name(info.ckn().view());
  auto const ckn = name.octets();
  size_t const bodyLength = key.size() + ckn.size();
  uint8_t* const octets = appendSet(sizeof(DistCak::Set), bodyLength);
  auto& set = *Macsec::overlayOn<DistCak::Set>(octets);
  set.parameterSetTypeIs(Types::distCakParameterSetType);
  set.parameterSetBodyLengthIs(static_cast<uint16_t>(bodyLength));
  std::ranges::copy(key.octets(), octets + sizeof(DistCak::Set));
  std::ranges::copy(ckn, octets + sizeof(DistCak::Set) + key.size());
  return {};
}

// IEEE 802.1X-2010, 9.4.1: under the ICK, over all that stands in front of it.
Refusal FrameWriter::writeIcv() {
  auto const form = port_.dialect.icvIndicator;
  size_t const head = form == IcvIndicator::leftOut ? 0 : sizeof(Icv::Set);
  uint8_t* const octets = appendSet(head, Icv::kSize);
  if (head > 0) {
    auto& set = *Macsec::overlayOn<Icv::Set>(octets);
    set.parameterSetTypeIs(Types::icvIndicatorParameterSetType);
    set.parameterSetBodyLengthIs(Icv::bodyLength(form));
  }
  auto& eapol = *Macsec::overlayOn<Macsec::Eapol>(buffer_.octets().data());
  eapol.bodyLenIs(static_cast<uint16_t>(buffer_.size() - sizeof eapol));
  auto const frame = buffer_.octets();
  VESK_ASSERT(eapol.bodyLen() % Constants::mkaWordAlignment == 0);
  auto const covered = frame.first(frame.size() - Icv::kSize);
  if (actor_->ick().compute(covered, frame.last<Icv::kSize>())) return {};
  return refusal(SubType::icvValidationErr, "has no key to sign with");
}

}  // namespace Codec
