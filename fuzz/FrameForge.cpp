#include "fuzz/FrameForge.h"

#include <string>

#include "codec/Icv.h"
#include "model/Eapol.h"
#include "model/MacsecConstants.h"
#include "platform/Hex.h"
#include "platform/KeyDerivation.h"
#include "runtime/String8.h"

namespace Fuzz {

namespace {

using Constants = Macsec::MacsecConstants;
using Types = Macsec::ParameterSetTypes;

constexpr size_t kEapol = sizeof(Macsec::Eapol);
constexpr uint8_t kEapolTypeMka = 5;
constexpr unsigned kMostSets = 6;
constexpr size_t kLongestFrame = 1600;

using Derivation = void(unsigned char const*, unsigned char const*, int, Vesk::String8&);

std::vector<uint8_t> octetsOf(std::string_view hex) {
  std::vector<uint8_t> octets(hex.size() / 2);
  if (!Macsec::hexDecode(hex, octets)) octets.clear();
  return octets;
}

std::vector<uint8_t> derived(Derivation* derive, std::string_view cak, std::string_view ckn) {
  Vesk::String8 const key{cak}, name{ckn};
  Vesk::String8 out;
  derive(Macsec::bytesOf(key), Macsec::bytesOf(name), static_cast<int>(cak.size()) * 4, out);
  return octetsOf(out.view());
}

// What it is as a rule; one octet in sixteen brings another.
uint8_t mostly(Input& in, uint8_t usual) {
  constexpr uint8_t kAsARule = 240;
  return in.octet() < kAsARule ? usual : in.octet();
}

// Small as a rule.
uint32_t number(Input& in) {
  constexpr uint8_t kLarge = 255;
  uint8_t const small = in.octet();
  return small == kLarge ? in.longWord() : small;
}

void put(Frame& frame, Octets octets) { frame.insert(frame.end(), octets.begin(), octets.end()); }
void putWord(Frame& frame, size_t word) {
  frame.push_back(static_cast<uint8_t>(word >> 8));
  frame.push_back(static_cast<uint8_t>(word));
}
void putLong(Frame& frame, uint32_t word) {
  putWord(frame, word >> 16);
  putWord(frame, word & 0xffff);
}
template <class Overlay>
void putOverlay(Frame& frame, Overlay const& overlay) {
  put(frame, {reinterpret_cast<uint8_t const*>(&overlay), sizeof overlay});
}
void putHead(Frame& frame, uint8_t type, uint8_t second, size_t length) {
  frame.insert(frame.end(), {type, second});
  putWord(frame, length);
}
void align(Frame& frame) {
  while ((frame.size() - kEapol) % Constants::mkaWordAlignment != 0) frame.push_back(0);
}

Member stranger(uint8_t which) {
  Member member;
  member.identifier = Macsec::MemberIdentifier({0xee, which, which, which, 1, 2, 3, 4, 5, 6, 7, 8});
  member.sci.addrIs(Lumo::EthAddr({2, 0, 0, 0, 0xee, which}));
  member.sci.portIdIs(Lumo::NetU16(1));
  return member;
}

// One of the cast, or a stranger; its message number is near the true one as a rule.
Member memberOf(Input& in, std::span<Member const> cast) {
  uint8_t const which = in.octet();
  Member member = which % 4 != 3 && !cast.empty() ? cast[which % cast.size()] : stranger(which);
  uint8_t const step = in.octet();
  bool const isFar = step == 0xff;
  member.messageNumber = isFar ? in.longWord() : member.messageNumber + step - 8;
  return member;
}

}  // namespace

FrameForge::FrameForge(std::string_view cak, std::string_view ckn)
    : name_(octetsOf(ckn)),
      ick_(derived(Macsec::deriveIck, cak, ckn)),
      kek_(derived(Macsec::deriveKek, cak, ckn)) {}

Frame FrameForge::made(Input& in, std::span<Member const> cast) {
  Frame frame;
  Macsec::Eapol eapol;
  Member const sender = memberOf(in, cast);
  eapol.srcIs(sender.sci.addr());
  eapol.versionIs(mostly(in, Constants::eapolVersion));
  eapol.eapolTypeIs(mostly(in, kEapolTypeMka));
  putOverlay(frame, eapol);
  putBasicSet(in, sender, frame);
  unsigned const sets = in.below(kMostSets);
  for (unsigned i = 0; i < sets && frame.size() < kLongestFrame; ++i) putSet(in, cast, frame);
  uint8_t const indicator = mostly(in, Constants::icvIndicatorParamSetBodyLen);
  if (indicator != 0) putHead(frame, Types::icvIndicatorParameterSetType, 0, indicator);
  seal(frame);
  return frame;
}

void FrameForge::putBasicSet(Input& in, Member const& sender, Frame& frame) {
  Macsec::BasicParameterSet basic;
  basic.versionIs(mostly(in, Constants::mkaVersion));
  basic.keyServerPriorityIs(in.octet());
  uint8_t const flags = in.octet();
  basic.keyServerIs(flags & 1);
  basic.macsecDesiredIs(flags >> 1 & 1);
  basic.macsecCapabilityIs(flags >> 2 & 3);
  bool const isNameCut = mostly(in, 1) == 0;
  Octets const name = Octets(name_).first(isNameCut ? name_.size() / 2 : name_.size());
  basic.parameterSetBodyLengthIs(
      static_cast<uint16_t>(Constants::basicParameterSetBodyLen + name.size()));
  basic.sciIs(sender.sci);
  basic.memberIdentifierIs(sender.identifier);
  basic.messageNumberIs(Lumo::NetU32(sender.messageNumber));
  basic.algorithmAgilityIs(Lumo::NetU32(Constants::mkaAlgorithmAgility));
  putOverlay(frame, basic);
  put(frame, name);
  align(frame);
}

void FrameForge::putSet(Input& in, std::span<Member const> cast, Frame& frame) {
  switch (in.below(8)) {
    case 0:
      return putPeers(in, Types::livePeerParameterSetType, cast, frame);
    case 1:
      return putPeers(in, Types::potentialPeerParameterSetType, cast, frame);
    case 2:
    case 3:
      return putSakUse(in, cast, frame);
    case 4:
    case 5:
      return putDistSak(in, frame);
    case 6:
      return putDistCak(in, frame);
    default: {
      uint8_t const type = in.octet();
      Octets const body = in.take(in.octet());
      putHead(frame, type, in.octet(), body.size());
      put(frame, body);
      align(frame);
    }
  }
}

void FrameForge::putPeers(Input& in, uint8_t type, std::span<Member const> cast, Frame& frame) {
  constexpr unsigned kMany = 80;
  uint8_t const wish = in.octet();
  unsigned const listed = 1 + wish % 3, made = wish >= 0xf0 ? kMany : 0;
  putHead(frame, type, 0, (listed + made) * Constants::sizeOfPeerInfo);
  auto const putOne = [&](Member const& peer) {
    putOverlay(frame, peer.identifier);
    putLong(frame, peer.messageNumber);
  };
  for (unsigned i = 0; i < listed; ++i) putOne(memberOf(in, cast));
  for (unsigned i = 0; i < made; ++i) putOne(stranger(static_cast<uint8_t>(wish + i)));
}

void FrameForge::putKeyUse(Input& in, std::span<Member const> cast, Frame& frame) {
  putOverlay(frame, memberOf(in, cast).identifier);
  putLong(frame, number(in));
  putLong(frame, number(in));
}

void FrameForge::putSakUse(Input& in, std::span<Member const> cast, Frame& frame) {
  uint8_t const associations = in.octet(), flags = in.octet();
  bool const isEmpty = (flags & 1) != 0;
  putHead(frame, Types::sakUseParameterSetType, associations,
          (flags & 0xf0u) << 8 | (isEmpty ? 0 : Constants::sakUseParameterSetBodyLen));
  if (isEmpty) return;
  putKeyUse(in, cast, frame);
  putKeyUse(in, cast, frame);
}

// A key that unwraps as a rule.
void FrameForge::putWrapped(Input& in, size_t octets, Frame& frame) {
  Frame clear(octets, 0x5a);
  std::ranges::copy(in.take(octets), clear.begin());
  Frame wrapped(octets + Macsec::KeyWrap::kOverhead);
  if (!kek_.wrap(clear, wrapped)) wrapped.assign(wrapped.size(), 0);
  if (mostly(in, 0) != 0) wrapped.back() ^= 1;
  put(frame, wrapped);
}

void FrameForge::putDistSak(Input& in, Frame& frame) {
  uint8_t const form = in.octet(), association = in.octet();
  if (form % 8 == 0) return putHead(frame, Types::distSakParameterSetType, association, 0);
  bool const isLong = form % 8 == 2, hasSuite = form % 8 != 1;
  size_t const key = isLong ? 32 : 16;
  size_t const length = 4 + (hasSuite ? 8 : 0) + key + Macsec::KeyWrap::kOverhead;
  putHead(frame, Types::distSakParameterSetType, association, length);
  putLong(frame, number(in));
  if (hasSuite) {
    putLong(frame, Constants::xpn128CipherSuiteRefNo >> 32);
    putLong(frame,
            (Constants::xpn128CipherSuiteRefNo & 0xffff'ffff) + (isLong ? 1 : 0) + mostly(in, 0));
  }
  putWrapped(in, key, frame);
}

void FrameForge::putDistCak(Input& in, Frame& frame) {
  uint8_t const form = in.octet();
  size_t const key = (form & 1) != 0 ? 32 : 16;
  Frame name(form >> 2, 0xc0);
  std::ranges::copy(in.take(name.size()), name.begin());
  putHead(frame, Types::distCakParameterSetType, 0, key + Macsec::KeyWrap::kOverhead + name.size());
  putWrapped(in, key, frame);
  put(frame, name);
  align(frame);
}

void FrameForge::seal(Frame& frame) {
  frame.resize(std::max(frame.size(), kEapol));
  frame.resize(frame.size() + Codec::Icv::kSize);
  size_t const body = frame.size() - kEapol;
  frame[kEapol - 2] = static_cast<uint8_t>(body >> 8);
  frame[kEapol - 1] = static_cast<uint8_t>(body);
  sign(frame);
}

void FrameForge::sign(Frame& frame) {
  if (frame.size() < Codec::Icv::kSize) return;
  std::span<uint8_t> const all(frame);
  auto const icv = all.last<Codec::Icv::kSize>();
  if (!ick_.compute(all.first(all.size() - icv.size()), icv)) std::ranges::fill(icv, 0);
}

}  // namespace Fuzz
