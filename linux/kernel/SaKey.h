#pragma once

#include "host/state/KeyHistory.h"
#include "host/text/Result.h"
#include "linux/kernel/MacsecKernel.h"
#include "model/CipherSuite.h"
#include "model/Keys.h"
#include "model/Sci.h"
#include "platform/SecretOctets.h"

namespace Linux {

/// The key of an SA in clear, for the time of one request.
struct SaKey {
  Macsec::SecretOctets<32> key;
  Salt salt = {};
};

/// What to do about a key that can't be installed.
inline constexpr char kNextKey[] =
    "wait for the next key; if none comes within a minute, run 'macsecctl explain' at both ends";

/// Fills `out`, which alone holds the key, from a SAK whose key has this many bits. A fault says
/// what is wrong with the SAK.
Macsecd::Result<> openSak(Macsec::Sak const& sak, Macsec::CipherSuite suite, SaKey& out);

/// Member identifier and key number, as the kernel labels an SA; nothing if the member identifier
/// isn't one.
std::optional<KeyId> keyIdOf(Macsec::Sak const& sak);
/// The SAK that is labelled so.
Macsecd::SakId sakIdOf(KeyId const& keyId);

SciNumber sciNumber(Macsec::Sci const& sci);

}  // namespace Linux
