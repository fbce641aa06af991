#include "codec/SetPrint.h"

#include <ostream>

#include "codec/BasicSet.h"
#include "codec/DistCak.h"
#include "codec/DistSak.h"
#include "codec/FieldPrint.h"
#include "codec/Icv.h"
#include "codec/PeerList.h"
#include "codec/SakUse.h"
#include "codec/Unwrap.h"
#include "model/Overlay.h"

namespace Codec {

namespace {

using Types = Macsec::ParameterSetTypes;

void heading(std::ostream& out, char const* name, size_t octet) {
  out << "  " << name << ", octet " << octet << "\n";
}

void printKey(std::ostream& out, char const* label, ClearKey const& key, bool showKeys) {
  if (showKeys) {
    printOctets(out, label, key.octets());
  } else {
    printField(out, label, "unwrapped, not shown");
  }
}

void printPeers(std::ostream& out, SetView const& set) {
  heading(out,
          set.type == Types::livePeerParameterSetType ? "live peer list" : "potential peer list",
          set.octet);
  for (Octets list = set.body(); !list.empty(); list = list.subspan(sizeof(PeerList::Set))) {
    PeerList::fields(Print<PeerList::Set>{*Macsec::overlayOn<PeerList::Set>(list.data()), out});
  }
}

void printSakUse(std::ostream& out, SetView const& set) {
  heading(out, "SAK use", set.octet);
  if (set.bodyLength == 0) {
    printField(out, "keys", "none in use");
    return;
  }
  Print<SakUse::Set> print{set.as<SakUse::Set>(), out};
  SakUse::latestKey(print);
  SakUse::oldKey(print);
  SakUse::plainText(print);
}

Refusal printDistSak(std::ostream& out, SetView const& set, ActorKeys* key, bool showKeys) {
  heading(out, "distributed SAK", set.octet);
  Print<DistSak::Set> print{set.as<DistSak::Set>(), out};
  DistSak::anAndOffset(print);
  DistSak::fields(print, set.bodyLength);
  Octets const wrapped = wrappedSak(set);
  if (wrapped.empty()) {
    printField(out, "key", "none: MACsec is not to be used");
    return {};
  }
  printOctets(out, "wrapped SAK", wrapped);
  if (!key) return {};
  ClearKey sak;
  if (Refusal refusal = unwrapSak(set, *key, sak)) return refusal;
  printKey(out, "SAK", sak, showKeys);
  return {};
}

Refusal printDistCak(std::ostream& out, SetView const& set, ActorKeys* key, bool showKeys) {
  heading(out, "distributed CAK", set.octet);
  if (!key) {
    printOctets(out, "wrapped CAK and name", set.body());
    return {};
  }
  ClearKey cak;
  size_t wrappedSize = 0;
  if (Refusal refusal = unwrapCak(set, *key, cak, wrappedSize)) return refusal;
  printOctets(out, "wrapped CAK", set.body().first(wrappedSize));
  printKey(out, "CAK", cak, showKeys);
  printName(out, "name", set.body().subspan(wrappedSize));
  return {};
}

void printUnknown(std::ostream& out, SetView const& set) {
  heading(out, "set of an unknown type", set.octet);
  printField(out, "type", set.type);
  printOctets(out, "body", set.body());
}

}  // namespace

void printEapol(std::ostream& out, FrameLayout const& layout) {
  out << "  " << layout.eapol().src() << " -> " << layout.eapol().dst() << ", EAPOL version "
      << unsigned{layout.eapol().version()} << ", " << layout.frame.size() << " octets\n";
}

void printBasicSet(std::ostream& out, FrameLayout const& layout) {
  heading(out, "basic parameter set", sizeof(Macsec::Eapol));
  BasicSet::fields(Print<BasicSet::Set>{layout.basic(), out});
  printName(out, "CKN", layout.name);
}

Refusal printSet(std::ostream& out, SetView const& set, ActorKeys* key, bool showKeys) {
  switch (set.type) {
    case Types::livePeerParameterSetType:
    case Types::potentialPeerParameterSetType:
      printPeers(out, set);
      return {};
    case Types::sakUseParameterSetType:
      printSakUse(out, set);
      return {};
    case Types::distSakParameterSetType:
      return printDistSak(out, set, key, showKeys);
    case Types::distCakParameterSetType:
      return printDistCak(out, set, key, showKeys);
    case Types::icvIndicatorParameterSetType:
      return {};
    default:
      printUnknown(out, set);
      return {};
  }
}

void printIcv(std::ostream& out, FrameLayout const& layout, char const* verdict) {
  heading(out, "ICV", layout.covered().size());
  printOctets(out, "ICV", layout.icv());
  printField(out, "verdict", verdict);
}

}  // namespace Codec
