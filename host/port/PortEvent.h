#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/port/PortSummary.h"
#include "host/text/EventKind.h"

namespace Macsecd {

/// Something that has come about on a port.
///
/// | `kind` | |
/// |---|---|
/// | `link` | `value`: "up", "down", or "absent" when the interface went |
/// | `hardwareFault` | `value`: why the hardware doesn't do as asked; empty when it does again |
/// | `peerCame`, `peerWent` | a live peer of `key`: `sci`, `memberId` |
/// | `key` | the key in use: `key`, `role`; empty when there is none any more |
/// | `keyServer` | of the key in use, or of `key`: `sci`, `isKeyServer`; empty for none |
/// | `sak` | the key for transmit: `sak`, `an`; empty when there is none any more |
/// | `state` | `value`: "open", "closed", "absent" |
struct PortEvent {
  EventKind kind{};
  std::string interface;
  double time = 0;  ///< of the world's clock, in seconds
  std::string value = {};
  std::string key = {};   ///< the name of a CAK
  std::string role = {};  ///< "primary", "fallback" or "former"
  std::string sci = {};
  std::string memberId = {};
  bool isKeyServer = false;  ///< this switch is
  std::string sak = {};      ///< as "5e6f7081:2"
  std::optional<uint8_t> an = std::nullopt;
};

/// What came about between two looks at one port, at this moment. A peer whose SCI isn't known yet
/// isn't there yet.
std::vector<PortEvent> eventsBetween(PortSummary const& before, PortSummary const& after);

}  // namespace Macsecd
