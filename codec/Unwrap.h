#pragma once

#include "codec/ActorKeys.h"
#include "codec/SetWalk.h"
#include "platform/SecretOctets.h"

namespace Codec {

/// A key in clear, for as long as it is needed.
using ClearKey = Macsec::SecretOctets<32>;

/// The wrapped key of a distributed SAK set; none for the form without a key.
Octets wrappedSak(SetView const& set);
/// Refused if the length of the key in the set isn't that of its cipher suite.
Refusal checkSuite(SetView const& set);
/// The SAK that a distributed SAK set carries; none for the form without a key. Refused if its
/// length isn't that of the cipher suite, or its integrity is lost.
Refusal unwrapSak(SetView const& set, ActorKeys const& actor, ClearKey& sak);
/// The CAK that a distributed CAK set carries, and how many octets it takes wrapped: the name
/// follows them. Refused if its integrity is lost.
Refusal unwrapCak(SetView const& set, ActorKeys const& actor, ClearKey& cak, size_t& wrappedSize);

}  // namespace Codec
