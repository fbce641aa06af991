#include "host/state/SsciNumber.h"
#include "lab/world/Hardware.h"
#include "platform/Hex.h"
#include "platform/SecretOctets.h"
#include "platform/WardcodeLib.h"

// The data path of the hardware: what has been installed, as a SecY has it.

namespace Lab {

using Macsec::AssociationNumber;
using Macsec::Sak;

namespace {

// Calls `use(key, terms)` with the key in clear, or with none where the SAK hasn't all that an SA
// needs.
template <class Use>
void withKey(Sak const& sak, Macsec::Ssci const& sender, Use use) {
  Macsec::SecretOctets<32> key;
  SaTerms terms;
  terms.ssci = Macsecd::ssciNumber(sender).value_or(0);
  bool const isWhole = key.hexIs(WardcodeLib::doDecodeKey(sak.key()).view()) &&
                       Macsec::hexDecode(sak.salt().view(), terms.salt);
  if (!isWhole) key.sizeIs(0);
  use(std::span<uint8_t const>(key.octets()), terms);
}

}  // namespace

// Keys that have stayed long enough are found to have gone when the next frame is there.
SecY* Hardware::secY(Lumo::IntfId intfId) {
  keepWhatIsAskedFor(intfId);
  auto const found = dataPaths_.find(intfId);
  return found == dataPaths_.end() || isDeviceDown(intfId) ? nullptr : &found->second.secY;
}

uint32_t Hardware::ssciOf(Lumo::IntfId intfId) const {
  return Macsecd::ssciNumber(status_->cpStatus(intfId)->mySsci()).value_or(0);
}

void Hardware::sendWith(Lumo::IntfId intfId, Sak const& sak, uint64_t first) {
  Macsec::Ssci const& self = status_->cpStatus(intfId)->mySsci();
  withKey(sak, self, [&](std::span<uint8_t const> key, SaTerms const& terms) {
    dataPaths_[intfId].secY.txSaIs(self.sci(), sak.an().value(), key, terms, first);
  });
}

void Hardware::receiveWith(Lumo::IntfId intfId, Sak const& sak) {
  Macsec::Ssci const& peer = status_->cpStatus(intfId)->peerSsci();
  withKey(sak, peer, [&](std::span<uint8_t const> key, SaTerms const& terms) {
    DataPath& path = dataPaths_[intfId];
    path.secY.rxSaIs(peer.sci(), sak.an().value(), key, terms, 1);
    path.formerKeys.isAsked(sak.an());
  });
}

void Hardware::keepWhatIsAskedFor(Lumo::IntfId intfId) {
  auto const path = dataPaths_.find(intfId);
  if (path == dataPaths_.end()) return;
  auto const cpStatus = status_->cpStatus(intfId);
  if (!cpStatus) {
    dataPaths_.erase(path);
    return;
  }
  for (uint8_t an = 0; an < SecY::kAssociationNumbers; ++an) {
    AssociationNumber const number(an);
    if (cpStatus->rxSak(number) || path->second.formerKeys.stays(number, *cpStatus)) continue;
    path->second.secY.rxSaDel(an);
    path->second.formerKeys.forget(number);
  }
  if (cpStatus->txSak() == Sak()) path->second.secY.txSaDel();
}

// What is installed goes on, as that of the other peer; what isn't asked for any more was the
// former one's.
void Hardware::handlePeerSsci(Lumo::IntfId intfId) {
  auto const path = dataPaths_.find(intfId);
  if (path == dataPaths_.end()) return;
  auto const cpStatus = status_->cpStatus(intfId);
  for (uint8_t an = 0; an < SecY::kAssociationNumbers; ++an) {
    Sak const* const asked = cpStatus->rxSak(AssociationNumber(an));
    if (asked && path->second.secY.receives(an)) receiveWith(intfId, *asked);
    if (!asked) path->second.secY.rxSaDel(an);
  }
}

}  // namespace Lab
