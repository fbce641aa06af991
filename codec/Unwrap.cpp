#include "codec/Unwrap.h"

#include "codec/DistCak.h"
#include "codec/DistSak.h"
#include "codec/FieldWalk.h"

namespace Codec {

namespace {

constexpr size_t kSuiteAt = 8;

bool unwrapped(Octets wrapped, ActorKeys& actor, ClearKey& clear) {
  clear.sizeIs(wrapped.size() - Macsec::KeyWrap::kOverhead);
  return actor.kek().unwrap(wrapped, clear.octets());
}

}  // namespace

Refusal unwrapSak(SetView const& set, ActorKeys& actor, ClearKey& sak) {
  if (!DistSak::hasKey(set.bodyLength)) return {};
  size_t const keyAt = DistSak::keyAt(set.bodyLength);
  Octets const wrapped = set.octets.subspan(keyAt);
  if (DistSak::hasSuite(set.bodyLength)) {
    auto const suite = FieldValues::fromFrame(set.as<DistSak::Set>().cipherSuite());
    if (!DistSak::keyFits(suite, wrapped.size() - Macsec::KeyWrap::kOverhead)) {
      return {SubType::distSakSetErr, set.octet + kSuiteAt,
              "begins a cipher suite that needs a key of another length"};
    }
  }
  if (unwrapped(wrapped, actor, sak)) return {};
  return {SubType::distSakSetErr, set.octet + keyAt,
          "begins a wrapped SAK whose integrity is lost"};
}

Refusal unwrapCak(SetView const& set, ActorKeys& actor, ClearKey& cak, size_t& wrappedSize) {
  for (size_t size : {DistCak::kShortKey, DistCak::kLongKey}) {
    if (!DistCak::keyFits(size, set.bodyLength)) continue;
    wrappedSize = size;
    if (unwrapped(set.body().first(size), actor, cak)) return {};
  }
  return {SubType::distCakSetErr, set.octet + sizeof(DistCak::Set),
          "begins a wrapped CAK whose integrity is lost"};
}

}  // namespace Codec
