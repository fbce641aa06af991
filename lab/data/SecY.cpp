#include "lab/data/SecY.h"

#include <algorithm>
#include <utility>

#include "lab/data/SecTag.h"
#include "model/Overlay.h"
#include "runtime/Assert.h"

namespace Lab {

namespace {

constexpr size_t kAddresses = 12;
constexpr size_t kTag = sizeof(SecTag) - kAddresses;

SecTag& tagOf(SecY::Frame& frame) { return *Macsec::overlayOn<SecTag>(frame.data()); }

// A tag behind the addresses, and room for the ICV at the end.
SecY::Frame withRoom(std::span<uint8_t const> frame) {
  SecY::Frame out(frame.begin(), frame.begin() + kAddresses);
  out.resize(sizeof(SecTag));
  out.insert(out.end(), frame.begin() + kAddresses, frame.end());
  out.resize(out.size() + Macsec::AesGcm::kIcvSize);
  return out;
}

}  // namespace

void SecY::txSaIs(Macsec::Sci const& sci, uint8_t an, std::span<uint8_t const> key,
                  SaTerms const& terms, uint64_t first) {
  VESK_ASSERT(an < kAssociationNumbers);
  tx_.emplace(Transmit{sci, an, SecureAssociation(key, terms, first)});
}

void SecY::rxSaIs(Macsec::Sci const& peer, uint8_t an, std::span<uint8_t const> key,
                  SaTerms const& terms, uint64_t lowest) {
  if (std::exchange(peer_, peer) != peer) rx_ = {};
  rx_.at(an).emplace(key, terms, lowest);
}

std::optional<SecY::Frame> SecY::protect(std::span<uint8_t const> frame) {
  VESK_ASSERT(frame.size() > kAddresses);
  if (!tx_) return std::nullopt;
  uint64_t const number = tx_->sa.take();
  size_t const secure = frame.size() - kAddresses;
  Frame out = withRoom(frame);
  SecTag& tag = tagOf(out);
  tag.etherType = SecTag::kEtherType;
  tag.tciAndAn = static_cast<uint8_t>(SecTag::kTci | tx_->an);
  tag.shortLength = static_cast<uint8_t>(secure < SecTag::kShort ? secure : 0);
  tag.packetNumber = static_cast<uint32_t>(number);
  tag.sciAddress = tx_->sci.addr();
  tag.sciPort = tx_->sci.portNum();
  std::span const all(out);
  bool const sealed =
      tx_->sa.key().seal(tx_->sa.iv(number), all.first(sizeof(SecTag)),
                         all.subspan(sizeof(SecTag), secure), all.last<Macsec::AesGcm::kIcvSize>());
  return sealed ? std::optional(std::move(out)) : std::nullopt;
}

SecY::Verdict SecY::validate(std::span<uint8_t const> frame, Frame& out) {
  out.assign(frame.begin(), frame.end());
  if (out.size() < sizeof(SecTag) + Macsec::AesGcm::kIcvSize) return Verdict::untagged;
  SecTag const& tag = tagOf(out);
  if (tag.etherType != Lumo::NetU16(SecTag::kEtherType)) return Verdict::untagged;
  auto& sa = rx_[tag.an()];
  if (!sa || tag.sci() != peer_) return Verdict::noSa;
  uint64_t const number = sa->recovered(tag.packetNumber.value());
  if (number < sa->next()) return Verdict::late;
  std::span const all(out);
  size_t const secure = out.size() - sizeof(SecTag) - Macsec::AesGcm::kIcvSize;
  if (!sa->key().open(sa->iv(number), all.first(sizeof(SecTag)),
                      all.subspan(sizeof(SecTag), secure), all.last<Macsec::AesGcm::kIcvSize>())) {
    out.assign(frame.begin(), frame.end());
    return Verdict::invalid;
  }
  sa->reached(number);
  out.resize(out.size() - Macsec::AesGcm::kIcvSize);
  out.erase(out.begin() + kAddresses, out.begin() + kAddresses + kTag);
  return Verdict::valid;
}

}  // namespace Lab
