#pragma once

#include <optional>
#include <span>
#include <variant>

#include "host/text/KeyText.h"
#include "platform/EapKey.h"
#include "runtime/IntfId.h"

namespace Macsecd {

/// What an 802.1X authenticator or supplicant says of one interface.
struct EapKeyNews {
  Lumo::IntfId intfId;
  std::optional<Dot1x::EapKey> key;  ///< published; none when the former one is withdrawn
};

/// Longest master session key that is taken, in octets. EAP makes them of 64.
inline constexpr size_t kMaxMskOctets = 128;

/// Reads one line, a JSON object in either of two forms:
///
///     {"interface": "Ethernet1", "type": 0, "msk": "4041..7f", "session-id": "0d80..bf",
///      "first-addr": "02:00:00:00:00:01", "second-addr": "02:00:00:00:00:02"}
///     {"interface": "Ethernet1", "withdrawn": true}
///
/// A line that isn't one of these to the letter changes nothing and gives what is wrong with it,
/// without any key. The master session key is encoded at once, and the line is zero on return
/// whatever it held.
Result<EapKeyNews> readEapKeyLine(std::span<uint8_t> line);

}  // namespace Macsecd
