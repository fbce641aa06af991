#include "lab/world/MadeFrame.h"

#include <algorithm>

#include "codec/ActorKeys.h"
#include "codec/FrameLayout.h"
#include "codec/Icv.h"
#include "codec/SetWalk.h"

namespace Lab {

namespace {

using Types = Macsec::ParameterSetTypes;

constexpr size_t kVersion = 14;
constexpr size_t kEapolLength = 16;
constexpr size_t kAgility = sizeof(Macsec::Eapol) + 28;
constexpr size_t kName = sizeof(Macsec::Eapol) + sizeof(Macsec::BasicParameterSet);

constexpr uint8_t kVersionWithoutMka = 2;
/// A type that no parameter set has.
constexpr uint8_t kUnknownType = 200;
constexpr uint16_t kMostLength = 0xfff;

/// The defective set, whole with its body: zeros, of a length that the type never has or that are
/// no wrapped key. Of the last two the head alone, which says more than follows.
Frame defectiveSet(uint8_t type, uint16_t says, size_t body) {
  Frame set(4 + body, 0);
  set[0] = type;
  set[2] = static_cast<uint8_t>(says >> 8);
  set[3] = static_cast<uint8_t>(says);
  return set;
}

std::optional<Frame> defectiveSetOf(Defect defect) {
  switch (defect) {
    case Defect::livePeerListErr:
      return defectiveSet(Types::livePeerParameterSetType, 4, 4);
    case Defect::potentialPeerListErr:
      return defectiveSet(Types::potentialPeerParameterSetType, 4, 4);
    case Defect::sakUseSetErr:
      return defectiveSet(Types::sakUseParameterSetType, 4, 4);
    case Defect::distSakSetErr:
      return defectiveSet(Types::distSakParameterSetType, 28, 28);
    case Defect::distCakSetErr:
      return defectiveSet(Types::distCakParameterSetType, 28, 28);
    case Defect::icvIndicatorErr:
      return defectiveSet(Types::icvIndicatorParameterSetType, 8, 0);
    case Defect::unrecognizedSetErr:
      return defectiveSet(kUnknownType, kMostLength, 0);
    default:
      return std::nullopt;
  }
}

/// An MKPDU in parts that can be changed.
struct Parts {
  Frame front;  ///< headers and basic set
  std::vector<Frame> sets;
  Codec::Octets name;  ///< of the good frame

  bool take(Frame const& good) {
    Codec::FrameLayout layout;
    if (checkEapol(good, layout) || checkBasicSet(layout)) return false;
    name = layout.name;
    front.assign(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(layout.setsAt));
    Codec::SetWalk walk(layout);
    while (walk.next()) {
      auto const octets = walk.set().octets;
      sets.emplace_back(octets.begin(), octets.end());
      sets.back().resize(Codec::aligned(octets.size()), 0);
    }
    return !walk.refusal();
  }
  /// In the place of the set of its type, which comes once at most; the ICV indicator stays last.
  void replace(Frame const& set) {
    std::erase_if(sets, [&](Frame const& old) { return old[0] == set[0]; });
    bool const goesLast = set[0] == Types::icvIndicatorParameterSetType || sets.empty() ||
                          sets.back()[0] != Types::icvIndicatorParameterSetType;
    sets.insert(goesLast ? sets.end() : sets.end() - 1, set);
  }
  /// All that the ICV covers.
  Frame covered() const {
    Frame frame = front;
    for (Frame const& set : sets) frame.insert(frame.end(), set.begin(), set.end());
    size_t const body = frame.size() - sizeof(Macsec::Eapol) + Codec::Icv::kSize;
    frame[kEapolLength] = static_cast<uint8_t>(body >> 8);
    frame[kEapolLength + 1] = static_cast<uint8_t>(body);
    return frame;
  }
};

void putDefect(Defect defect, Parts& parts) {
  if (defect == Defect::eapolErr) parts.front[kVersion] = kVersionWithoutMka;
  if (defect == Defect::basicParamSetErr) parts.front[kAgility] ^= 0xff;
  if (defect == Defect::unrecognizedCkn) parts.front[kName] ^= 0xff;
  if (auto const set = defectiveSetOf(defect)) parts.replace(*set);
}

bool sign(Frame& frame, Codec::Octets name, Macsec::MkaPortStatus const& receiver) {
  for (Macsec::MkaActorStatus const& actor : receiver.actorStatus()) {
    Codec::ActorKeys keys(actor.ckn());
    if (!keys.isNamed(name)) continue;
    keys.ickIs(actor.ick());
    size_t const covered = frame.size();
    frame.resize(covered + Codec::Icv::kSize);
    auto const [text, icv] =
        std::pair(std::span(frame).first(covered), std::span(frame).last<Codec::Icv::kSize>());
    return keys.ick().compute(text, icv);
  }
  return false;
}

}  // namespace

std::optional<Frame> madeFrame(Frame const& good, Defect defect,
                               Macsec::MkaPortStatus const& receiver) {
  Parts parts;
  if (!parts.take(good)) return std::nullopt;
  putDefect(defect, parts);
  Frame frame = parts.covered();
  if (!sign(frame, parts.name, receiver)) return std::nullopt;
  if (defect == Defect::icvValidationErr) frame.back() ^= 0xff;
  return frame;
}

}  // namespace Lab
