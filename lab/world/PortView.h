#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/Host.h"
#include "host/text/PortText.h"

namespace Lab {

/// What a status tree says of one port, in the words of the lab.
class PortView {
 public:
  PortView(Macsec::Status const& status, Lumo::IntfId intfId) : status_(status), intfId_(intfId) {}

  /// The actor of that key, or null.
  Vesk::Ptr<Macsec::MkaActorStatus> actor(std::string const& ckn) const;
  /// The principal actor, or null.
  Vesk::Ptr<Macsec::MkaActorStatus> principal() const;
  /// The actor of that key, or without one the principal.
  Vesk::Ptr<Macsec::MkaActorStatus> actor(std::optional<std::string> const& ckn) const {
    return ckn ? actor(*ckn) : principal();
  }
  /// The SAK for transmit; the default one when there is none.
  Macsec::Sak txSak() const;

 private:
  Macsec::Status const& status_;
  Lumo::IntfId intfId_;
};

/// Whether traffic may pass: "open", "closed", or "absent" when there is no port.
char const* stateOf(Macsecd::Host const& host, Lumo::IntfId intfId);

using Macsecd::isNone;
using Macsecd::sakText;
using Macsecd::sciText;

/// A SAK in the tree of a switch, which is stored under the key of that switch.
struct StoredSak {
  Macsec::Sak sak;
  Vesk::World& world;
};

/// Both are one key: identifier, number and clear text. Two empty ones aren't.
bool sameSak(StoredSak const& a, StoredSak const& b);

}  // namespace Lab
