#include "codec/ActorKeys.h"

#include <algorithm>

#include "platform/SecretOctets.h"
#include "platform/WardcodeLib.h"

namespace Codec {

namespace {

constexpr size_t kMaxKey = 32;

/// Calls `use` with the octets of a clear key for as long as it is needed; with none for a text
/// that isn't one.
template <class Use>
void withClearKey(Vesk::String8 const& text, Use use) {
  Macsec::SecretOctets<kMaxKey> key;
  if (!key.hexIs(text.view())) key.sizeIs(0);
  use(std::span<uint8_t const>(key.octets()));
}

}  // namespace

std::span<uint8_t const> ActorKeys::characters() const {
  if (ckn_.size() > Macsec::CknOctets::kMaxSize) return octets();
  return {reinterpret_cast<uint8_t const*>(ckn_.charPtr()), ckn_.size()};
}

bool ActorKeys::isNamed(std::span<uint8_t const> onWire) const {
  return std::ranges::equal(onWire, octets()) || std::ranges::equal(onWire, characters());
}

bool ActorKeys::isHeard(Vesk::String8 const& peer) const {
  if (!status_) return false;
  if (status_->livePeer(peer)) return true;
  auto const potential = status_->potentialPeer(peer);
  return potential && potential->baseInfo().sci() != Macsec::Sci();
}

void ActorKeys::ickIs(Vesk::String8 const& encoded) {
  withClearKey(WardcodeLib::doDecodeKey(encoded), [this](auto key) { setIck(key); });
}

void ActorKeys::kekIs(Vesk::String8 const& encoded) {
  withClearKey(WardcodeLib::doDecodeKey(encoded), [this](auto key) { kek_->keyIs(key); });
}

void ActorKeys::clearKeysIs(Vesk::String8 const& ick, Vesk::String8 const& kek) {
  withClearKey(ick, [this](auto key) { setIck(key); });
  withClearKey(kek, [this](auto key) { kek_->keyIs(key); });
}

}  // namespace Codec
