#include "codec/ReplayGuard.h"

#include "model/MemberIdentifier.h"

namespace Codec {

namespace {

std::optional<Macsec::MemberIdentifier> ownIdentifier(FrameReader const& reader) {
  auto const* const actor = reader.actor().status();
  return actor ? reader.members().identifier(actor->msgId()) : std::nullopt;
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

// The number is one that this end has sent, and one of the last.
bool ReplayGuard::isRecent(Macsec::MkaActorStatus const& actor, uint32_t listed) const {
  return listed <= actor.msgNum() &&
         int64_t{listed} >= int64_t{actor.msgNum()} - status_->mkpduThreshold();
}

bool ReplayGuard::areKeysForUs(FrameReader const& reader) const {
  auto const own = ownIdentifier(reader);
  bool isListed = false;
  reader.eachLive([&](Macsec::MemberIdentifier const& member, uint32_t number) {
    isListed |= own && member == *own && isRecent(*reader.actor().status(), number);
  });
  return isListed;
}

bool ReplayGuard::hasHeardUsLately(FrameReader const& reader) const {
  if (areKeysForUs(reader)) return true;
  auto const own = ownIdentifier(reader);
  bool isListed = false;
  reader.eachPotential([&](Macsec::MemberIdentifier const& member, uint32_t number) {
    isListed |= own && member == *own && isRecent(*reader.actor().status(), number);
  });
  return isListed;
}

}  // namespace Codec
