#include "codec/ReplayGuard.h"

#include "model/MemberIdentifier.h"

namespace Codec {

namespace {

// The number is one that this end has sent, and one of the last.
bool isRecent(uint32_t listed, uint32_t lastSent, uint8_t threshold) {
  return listed <= lastSent && int64_t{listed} >= int64_t{lastSent} - threshold;
}

}  // namespace

Refusal ReplayGuard::check(Port const& port, FrameReader const& reader) const {
  if (port.heard.has(reader.actor().name(), reader.sender(), reader.messageNumber())) {
    return {Reason::replayErr, kMemberIdentifierAt,
            "begins a member identifier that was heard with this message number or a later one"};
  }
  if (reader.distributesKey() && !hasHeardUsLately(reader)) {
    return {Reason::livenessErr, reader.distributionAt(),
            "begins a key from a sender that doesn't show that it has heard this end lately"};
  }
  return {};
}

bool ReplayGuard::hasHeardUsLately(FrameReader const& reader) const {
  auto const* const actor = reader.actor().status();
  auto const own = actor ? Macsec::MemberIdentifier::parsed(actor->msgId().view()) : std::nullopt;
  if (!own) return false;
  bool isListed = false;
  reader.eachListed([&](Macsec::MemberIdentifier const& member, uint32_t number) {
    isListed |= member == *own && isRecent(number, actor->msgNum(), status_->mkpduThreshold());
  });
  return isListed;
}

}  // namespace Codec
