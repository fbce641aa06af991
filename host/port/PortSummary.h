#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/Host.h"

namespace Macsecd {

/// A member of the association as the other end of a port.
struct PeerSummary {
  std::string memberId;
  std::string sci;
  bool isLive = false;  ///< lists this switch, else only heard
  uint8_t priority = 0;
  uint32_t messageNumber = 0;
  double age = 0;  ///< seconds since its last MKPDU
};

/// A connectivity association key of a port, and how far its actor has come. Never the key itself.
struct KeySummary {
  std::string name;
  std::string role;  ///< "primary", "fallback" or "former"
  bool isPrincipal = false;
  bool agrees = false;  ///< there are live peers and a key server
  std::string keyServer;
  bool isKeyServer = false;  ///< this switch is
  std::vector<PeerSummary> peers;
};

/// A port at one moment, as an operator wants to see it.
struct PortSummary {
  std::string interface;
  std::string profile;
  std::string link;   ///< "up", "down", or "absent" when there is no such interface
  std::string state;  ///< "open", "closed", or "absent" when there is no port
  std::string cipherSuite;
  std::string sci;
  std::string sak;  ///< for transmit, as "5e6f7081:2"
  std::optional<uint8_t> an;
  std::optional<KeyAge> keyAge;
  HardwareReport hardware;
  std::string ssci;
  std::vector<KeySummary> keys;

  /// The key in use; null for none.
  KeySummary const* principal() const;
};

/// What the key of an actor is to the interface: `KeySummary::role`. `intfStatus` may be null.
std::string roleOf(Macsec::MkaActorStatus const& actor, Macsec::IntfStatus const* intfStatus);
/// The interfaces that the configuration names, in the order of their names.
std::vector<Lumo::IntfId> interfacesOf(Host const& host);
/// `PortSummary::link`.
char const* linkOf(Host const& host, Lumo::IntfId intfId);
PortSummary summaryOf(Host const& host, Lumo::IntfId intfId);

}  // namespace Macsecd
