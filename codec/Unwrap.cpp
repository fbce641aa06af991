#include "codec/Unwrap.h"

#include "codec/DistCak.h"
#include "codec/DistSak.h"
#include "codec/FieldWalk.h"

namespace Codec {

namespace {

constexpr size_t kSuiteAt = 8;

bool unwrapped(Octets wrapped, ActorKeys const& actor, ClearKey& clear) {
  clear.sizeIs(wrapped.size() - Macsec::KeyWrap::kOverhead);
  return actor.kek().wrap().unwrap(wrapped, clear.octets());
}

}  // namespace

Octets wrappedSak(SetView const& set) {
  if (!DistSak::hasKey(set.bodyLength)) return {};
  return set.octets.subspan(DistSak::keyAt(set.bodyLength));
}

Refusal checkSuite(SetView const& set) {
  if (!DistSak::hasSuite(set.bodyLength)) return {};
  auto const suite = FieldValues::fromFrame(set.as<DistSak::Set>().cipherSuite());
  if (DistSak::keyFits(suite, wrappedSak(set).size() - Macsec::KeyWrap::kOverhead)) return {};
  return {SubType::distSakSetErr, set.octet + kSuiteAt,
          "begins a cipher suite that needs a key of another length"};
}

Refusal unwrapSak(SetView const& set, ActorKeys const& actor, ClearKey& sak) {
  Octets const wrapped = wrappedSak(set);
  if (wrapped.empty()) return {};
  if (Refusal refusal = checkSuite(set)) return refusal;
  if (unwrapped(wrapped, actor, sak)) return {};
  return {SubType::distSakSetErr, set.octet + DistSak::keyAt(set.bodyLength),
          "begins a wrapped SAK whose integrity is lost"};
}

Refusal unwrapCak(SetView const& set, ActorKeys const& actor, ClearKey& cak, size_t& wrappedSize) {
  for (size_t size : {DistCak::kShortKey, DistCak::kLongKey}) {
    if (!DistCak::keyFits(size, set.bodyLength)) continue;
    wrappedSize = size;
    if (unwrapped(set.body().first(size), actor, cak)) return {};
  }
  return {SubType::distCakSetErr, set.octet + sizeof(DistCak::Set),
          "begins a wrapped CAK whose integrity is lost"};
}

}  // namespace Codec
