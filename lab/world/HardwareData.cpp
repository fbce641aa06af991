#include <string>

#include "lab/world/Hardware.h"
#include "platform/Hex.h"
#include "platform/SecretOctets.h"
#include "platform/WardcodeLib.h"

// The data path of the hardware: what has been installed, as a SecY has it.

namespace Lab {

using Macsec::AssociationNumber;
using Macsec::Sak;

namespace {

// 0 as long as there is none.
uint32_t numberOf(Macsec::Ssci const& ssci) {
  std::string const text(ssci.ssci().view());
  return text.empty() ? 0 : static_cast<uint32_t>(std::stoul(text, nullptr, 16));
}

// Calls `use(key, terms)` with the key in clear, or with none where the SAK hasn't all that an SA
// needs.
template <class Use>
void withKey(Sak const& sak, Macsec::Ssci const& sender, Use use) {
  Macsec::SecretOctets<32> key;
  SaTerms terms;
  terms.ssci = numberOf(sender);
  bool const isWhole = key.hexIs(WardcodeLib::doDecodeKey(sak.key()).view()) &&
                       Macsec::hexDecode(sak.salt().view(), terms.salt);
  if (!isWhole) key.sizeIs(0);
  use(std::span<uint8_t const>(key.octets()), terms);
}

}  // namespace

SecY* Hardware::secY(Lumo::IntfId intfId) {
  auto const found = secYs_.find(intfId);
  return found == secYs_.end() || isDeviceDown(intfId) ? nullptr : &found->second;
}

uint32_t Hardware::ssciOf(Lumo::IntfId intfId) const {
  return numberOf(status_->cpStatus(intfId)->mySsci());
}

void Hardware::sendWith(Lumo::IntfId intfId, Sak const& sak, uint64_t first) {
  Macsec::Ssci const& self = status_->cpStatus(intfId)->mySsci();
  withKey(sak, self, [&](std::span<uint8_t const> key, SaTerms const& terms) {
    secYs_[intfId].txSaIs(self.sci(), sak.an().value(), key, terms, first);
  });
}

void Hardware::receiveWith(Lumo::IntfId intfId, Sak const& sak) {
  Macsec::Ssci const& peer = status_->cpStatus(intfId)->peerSsci();
  withKey(sak, peer, [&](std::span<uint8_t const> key, SaTerms const& terms) {
    secYs_[intfId].rxSaIs(peer.sci(), sak.an().value(), key, terms, 1);
  });
}

void Hardware::keepWhatIsAskedFor(Lumo::IntfId intfId) {
  auto const own = secYs_.find(intfId);
  if (own == secYs_.end()) return;
  auto const cpStatus = status_->cpStatus(intfId);
  if (!cpStatus) {
    secYs_.erase(own);
    return;
  }
  for (uint8_t an = 0; an < SecY::kAssociationNumbers; ++an) {
    if (!cpStatus->rxSak(AssociationNumber(an))) own->second.rxSaDel(an);
  }
  if (cpStatus->txSak() == Sak()) own->second.txSaDel();
}

// What is installed goes on, as that of the other peer.
void Hardware::handlePeerSsci(Lumo::IntfId intfId) {
  auto const own = secYs_.find(intfId);
  if (own == secYs_.end()) return;
  for (auto& asked : status_->cpStatus(intfId)->rxSak()) {
    if (own->second.receives(asked.value().an().value())) receiveWith(intfId, asked.value());
  }
}

}  // namespace Lab
