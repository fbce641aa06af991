#pragma once

#include <cstdint>

#include "runtime/Text.h"

namespace Macsecd {

/// What can come about at a switch, in the one vocabulary of all JSON: what `macsecctl watch` and
/// `capture` tell, and the events of a simulation.
enum class EventKind : uint8_t {
  link,
  hardwareFault,
  peerCame,
  peerWent,
  key,
  keyServer,
  sak,
  state,
  frame,
  // Told by simulations alone.
  peers,
  saAsked,
  saInstalled,
  forwarding,
  syslog,
  reload,
  exit,
};

}  // namespace Macsecd

template <>
struct Vesk::EnumNames<Macsecd::EventKind> {
  using Kind = Macsecd::EventKind;
  static constexpr std::pair<Kind, char const*> names[] = {
      {Kind::link, "link"},
      {Kind::hardwareFault, "hardware-fault"},
      {Kind::peerCame, "peer-came"},
      {Kind::peerWent, "peer-went"},
      {Kind::key, "key"},
      {Kind::keyServer, "key-server"},
      {Kind::sak, "sak"},
      {Kind::state, "state"},
      {Kind::frame, "frame"},
      {Kind::peers, "peers"},
      {Kind::saAsked, "sa-asked"},
      {Kind::saInstalled, "sa-installed"},
      {Kind::forwarding, "forwarding"},
      {Kind::syslog, "syslog"},
      {Kind::reload, "reload"},
      {Kind::exit, "exit"},
  };
};
