#pragma once

#include "codec/ActorKeys.h"
#include "codec/SetWalk.h"
#include "platform/SecretOctets.h"

namespace Codec {

/// A key in clear, for as long as it is needed.
using ClearKey = Macsec::SecretOctets<32>;

/// The SAK that a distributed SAK set carries; none for the form without a key. Refused if its
/// length isn't that of the cipher suite, or its integrity is lost.
Refusal unwrapSak(SetView const& set, ActorKeys& actor, ClearKey& sak);
/// The CAK that a distributed CAK set carries, and how many octets it takes wrapped: the name
/// follows them. Refused if its integrity is lost.
Refusal unwrapCak(SetView const& set, ActorKeys& actor, ClearKey& cak, size_t& wrappedSize);

}  // namespace Codec
