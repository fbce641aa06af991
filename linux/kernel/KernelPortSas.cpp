#include <algorithm>
#include <cerrno>

#include "host/state/SsciNumber.h"
#include "linux/kernel/KernelPort.h"
#include "runtime/Assert.h"

namespace Linux {

using Macsecd::ssciNumber;

namespace {

HeldSa* find(std::vector<HeldSa>& sas, uint8_t an) {
  auto const found =
      std::find_if(sas.begin(), sas.end(), [an](HeldSa const& sa) { return sa.an == an; });
  return found != sas.end() ? &*found : nullptr;
}

// The number nearest to one that is known, of which only the lower half was told.
uint64_t extended(uint32_t lower, uint64_t near) {
  constexpr uint64_t kHalf = uint64_t{1} << 31;
  uint64_t const number = (near & ~uint64_t{0xffffffff}) | lower;
  if (number + kHalf < near) return number + 2 * kHalf;
  if (number > near + kHalf && number >= 2 * kHalf) return number - 2 * kHalf;
  return number;
}

}  // namespace

HeldRxSc* KernelPort::rxSc(SciNumber sci) {
  auto const found = std::find_if(held_->rxScs.begin(), held_->rxScs.end(),
                                  [sci](HeldRxSc const& sc) { return sc.sci == sci; });
  return found != held_->rxScs.end() ? &*found : nullptr;
}

HeldSa* KernelPort::txSa(KeyId const& keyId) {
  auto& sas = held_->txSas;
  auto const found =
      std::find_if(sas.begin(), sas.end(), [&](HeldSa const& sa) { return sa.keyId == keyId; });
  return found != sas.end() ? &*found : nullptr;
}

/// Whether a receive SA of the peer's channel is one that is asked for.
bool KernelPort::isHeldAsWanted(HeldSa const& sa) const {
  Sak const* const wanted = cpStatus_->rxSak(AssociationNumber(sa.an));
  return wanted && sa.on && sa.ssci == ssciNumber(cpStatus_->peerSsci()) &&
         keyIdOf(*wanted) == sa.keyId;
}

/// Whether a receive SA that was withdrawn stays for a while.
bool KernelPort::stays(HeldSa const& sa) {
  return sa.on && sa.ssci == ssciNumber(cpStatus_->peerSsci()) &&
         formerKeys_.stays(AssociationNumber(sa.an), *cpStatus_);
}

bool KernelPort::setUpReceive() {
  VESK_ASSERT(held_ && cpStatus_);
  auto const ssci = ssciNumber(cpStatus_->peerSsci());
  SciNumber const sci = ssci ? sciNumber(cpStatus_->peerSsci().sci()) : 0;
  bool isDone = dropOtherChannels(sci) && dropOtherReceiveSas(sci);
  if (ssci) {
    for (auto const& entry : cpStatus_->rxSak()) {
      isDone = installReceive(*cpStatus_->rxSak(entry.fwkKey()), sci) && isDone;
      formerKeys_.isAsked(entry.fwkKey());
    }
  }
  reportReceive();
  return isDone;
}

bool KernelPort::dropOtherChannels(SciNumber sci) {
  auto& scs = held_->rxScs;
  for (auto sc = scs.begin(); sc != scs.end();) {
    if (sc->sci == sci) {
      ++sc;
      continue;
    }
    if (!did(kernel_.rxScDel(held_->index, sc->sci), "remove a receive channel")) return false;
    counts_.sasRemoved += sc->sas.size();
    sc = scs.erase(sc);
  }
  return true;
}

bool KernelPort::dropOtherReceiveSas(SciNumber sci) {
  HeldRxSc* const sc = rxSc(sci);
  if (!sc) return true;
  for (size_t i = 0; i < sc->sas.size();) {
    uint8_t const an = sc->sas[i].an;
    if (isHeldAsWanted(sc->sas[i]) || stays(sc->sas[i])) {
      ++i;
    } else if (dropSa({held_->index, sci, an}, sc->sas)) {
      formerKeys_.forget(AssociationNumber(an));
    } else {
      return false;
    }
  }
  return true;
}

// An SA that was there before goes on where it stood: frames that were recorded are old ones.
bool KernelPort::installReceive(Sak const& sak, SciNumber sci) {
  HeldRxSc* sc = rxSc(sci);
  if (sc && find(sc->sas, sak.an().value())) return true;
  if (!sc) {
    if (!did(kernel_.rxScAdd(held_->index, sci), "add the receive channel")) return false;
    sc = &held_->rxScs.emplace_back(HeldRxSc{sci, true});
  }
  SaPlace const place{held_->index, sci, sak.an().value()};
  uint64_t first = 1;
  if (auto const id = Macsecd::SakId::of(sak)) {
    first = history_.firstToReceive(intfId_, *id, sci);
    if (auto const mine = ssciNumber(cpStatus_->mySsci())) history_.bindSsci(intfId_, *id, *mine);
  }
  return install(place, sak, first, *ssciNumber(cpStatus_->peerSsci()), "install the receive key",
                 sc->sas);
}

// Opens the key for this one request.
bool KernelPort::install(SaPlace const& place, Sak const& sak, uint64_t packetNumber, uint32_t ssci,
                         char const* what, std::vector<HeldSa>& sas) {
  SaKey clear;
  if (auto const opened = openSak(sak, cpStatus_->cipher(), clear); !opened) {
    refuse(what, opened.fault());
    return true;
  }
  NewSa sa{packetNumber, ssci, *keyIdOf(sak), clear.salt, clear.key.octets()};
  if (!did(kernel_.saAdd(place, sa), what)) return false;
  sas.push_back({place.an, true, packetNumber, ssci, sa.keyId});
  ++counts_.sasInstalled;
  return true;
}

bool KernelPort::dropSa(SaPlace const& place, std::vector<HeldSa>& sas) {
  HeldSa* const sa = find(sas, place.an);
  VESK_ASSERT(sa);
  if (sa->on) {
    if (!did(kernel_.saOnIs(place, false), "switch off a secure association")) return false;
    sa->on = false;
  }
  if (!did(kernel_.saDel(place), "remove a secure association")) return false;
  ++counts_.sasRemoved;
  sas.erase(sas.begin() + (sa - sas.data()));
  return true;
}

// The new SA, then the switch to it, then the end of the old one: nothing is lost on the way.
bool KernelPort::setUpTransmit() {
  VESK_ASSERT(held_ && cpStatus_);
  Sak const sak = transmitHeld_ ? Sak() : cpStatus_->txSak();
  if (sak == Sak()) {
    bool const isDone = dropOtherTransmitSas(nullptr);
    reportTransmit();
    return isDone;
  }
  auto const keyId = keyIdOf(sak);
  if (!keyId || sak.key().empty()) {
    refuse("install the transmit key",
           {sak.key().empty() ? "it is empty" : "it has no identifier", kNextKey});
    return true;
  }
  bool const isDone = installTransmit(sak, *keyId);
  if (HeldSa* const sa = txSa(*keyId); isDone && sa) {
    uint8_t const an = sa->an;
    if (held_->encodingSa != an) {
      if (!did(kernel_.encodingSaIs(held_->index, an), "transmit under the new key")) return false;
      held_->encodingSa = an;
    }
    if (!dropOtherTransmitSas(sa)) return false;
  }
  reportTransmit();
  return isDone;
}

// An SA that the kernel has under this key stays: its packet numbers go on.
bool KernelPort::installTransmit(Sak const& sak, KeyId const& keyId) {
  auto const ssci = ssciNumber(cpStatus_->mySsci());
  if (!ssci) return true;
  SaPlace const place{held_->index, {}, sak.an().value()};
  HeldSa* const there = txSa(keyId);
  if (there && there->an == place.an && there->ssci == *ssci) {
    if (there->on) return true;
    if (there->packetNumber == 0) {
      refuse("transmit", {"the packet numbers of the key are used up", kNextKey});
      return true;
    }
    if (!did(kernel_.saOnIs(place, true), "switch on the transmit key")) return false;
    return there->on = true;
  }
  if (there && !dropSa({held_->index, {}, there->an}, held_->txSas)) return false;
  if (find(held_->txSas, place.an) && !dropSa(place, held_->txSas)) return false;
  auto const first = firstPacketNumber(sak, keyId, *ssci);
  if (!first) return refuseSpent(keyId);
  history_.noteSent(intfId_, sakIdOf(keyId), *ssci, *first);
  reserved_ = {keyId, *first};
  if (!install(place, sak, *first, *ssci, "install the transmit key", held_->txSas)) return false;
  reserved_.reset();
  return true;
}

// A key that the tree says was sent with, and of which nothing else is known, may have sent
// anything.
std::optional<uint64_t> KernelPort::firstPacketNumber(Sak const& sak, KeyId const& keyId,
                                                      uint32_t ssci) const {
  auto const first = history_.firstToSend(intfId_, sakIdOf(keyId), ssci);
  if (first && reserved_ && reserved_->first == keyId) return reserved_->second;
  if (first != 1) return first;
  for (auto const* context : {&cpStatus_->latestSakContext(), &cpStatus_->oldSakContext()}) {
    if (context->txInstalled() && isSameSak(context->sak(), sak)) return {};
  }
  return first;
}

// There is nothing more to do for this key.
bool KernelPort::refuseSpent(KeyId const& keyId) {
  refuse("install the transmit key",
         {"it was sent with before, and a packet number could be used twice", kNextKey});
  history_.spend(intfId_, sakIdOf(keyId));
  if (options_.keyIsSpent) options_.keyIsSpent(intfId_, sakIdOf(keyId));
  return true;
}

bool KernelPort::dropOtherTransmitSas(HeldSa const* keep) {
  std::vector<uint8_t> others;
  for (HeldSa const& sa : held_->txSas) {
    if (&sa != keep) others.push_back(sa.an);
  }
  for (uint8_t const an : others) {
    if (!dropSa({held_->index, {}, an}, held_->txSas)) return false;
  }
  return true;
}

/// The receive SA that was told a packet number above the one that is known of it; null if none
/// was.
HeldSa* KernelPort::saBehind(AssociationNumber an) {
  Macsec::RxLPN const* const told = cpStatus_ ? cpStatus_->rxLPN(an) : nullptr;
  if (!told || told->lpn() == 0 || !held_ || !known_ || working_) return nullptr;
  HeldRxSc* const sc = rxSc(sciNumber(cpStatus_->peerSsci().sci()));
  HeldSa* const sa = sc ? find(sc->sas, an.value()) : nullptr;
  if (!sa || !isHeldAsWanted(*sa)) return nullptr;
  return extended(told->lpn(), sa->packetNumber) > sa->packetNumber ? sa : nullptr;
}

std::optional<KeyId> KernelPort::keyBehind(AssociationNumber an) {
  HeldSa const* const sa = saBehind(an);
  return sa ? std::optional(sa->keyId) : std::nullopt;
}

// A number is raised only above what the kernel says right now, since it counts on meanwhile.
void KernelPort::raiseLowest(AssociationNumber an) {
  if (!saBehind(an)) return;
  SecYTable all;
  if (!did(all.readFrom(kernel_), "list its secure associations")) return;
  takeListed(all);
  HeldSa* const now = saBehind(an);
  if (!now) return;
  uint64_t const lowest = extended(cpStatus_->rxLPN(an)->lpn(), now->packetNumber);
  SciNumber const sci = sciNumber(cpStatus_->peerSsci().sci());
  if (did(kernel_.packetNumberIs({held_->index, sci, an.value()}, lowest),
          "raise the lowest acceptable packet number")) {
    now->packetNumber = lowest;
  }
}

}  // namespace Linux
