#include "host/port/PortEvent.h"

#include <map>
#include <tuple>

#include "host/text/PortText.h"
#include "runtime/World.h"

namespace Macsecd {

namespace {

using Kind = EventKind;

/// Live peers: key name and member identifier, and the SCI.
using Peers = std::map<std::pair<std::string, std::string>, std::string>;

Peers peersOf(PortSummary const& port) {
  static std::string const unknown = sciText(Macsec::Sci());
  Peers peers;
  for (KeySummary const& key : port.keys) {
    for (PeerSummary const& peer : key.peers) {
      if (peer.isLive && peer.sci != unknown) peers[{key.name, peer.memberId}] = peer.sci;
    }
  }
  return peers;
}

class Comparing {
 public:
  Comparing(PortSummary const& before, PortSummary const& after) : before_(before), after_(after) {}

  std::vector<PortEvent> events() {
    Peers const before = peersOf(before_);
    Peers const after = peersOf(after_);
    peersIn(after, before, Kind::peerCame);
    keys();
    saks();
    if (before_.state != after_.state) add(Kind::state).value = after_.state;
    peersIn(before, after, Kind::peerWent);
    return std::move(events_);
  }

 private:
  PortEvent& add(Kind kind) {
    return events_.emplace_back(PortEvent{kind, after_.interface, Vesk::now()});
  }

  void peersIn(Peers const& these, Peers const& others, Kind kind) {
    for (auto const& [peer, sci] : these) {
      if (others.contains(peer)) continue;
      PortEvent& event = add(kind);
      std::tie(event.key, event.memberId) = peer;
      event.sci = sci;
    }
  }
  void keys() {
    KeySummary const none;
    KeySummary const& was = before_.principal() ? *before_.principal() : none;
    KeySummary const& is = after_.principal() ? *after_.principal() : none;
    if (std::tie(was.name, was.role) != std::tie(is.name, is.role)) {
      PortEvent& event = add(Kind::key);
      event.key = is.name;
      event.role = is.role;
    }
    if (is.name.empty()) return;
    if (std::tie(was.keyServer, was.isKeyServer) != std::tie(is.keyServer, is.isKeyServer)) {
      PortEvent& event = add(Kind::keyServer);
      event.sci = is.keyServer;
      event.isKeyServer = is.isKeyServer;
    }
  }
  void saks() {
    if (std::tie(before_.sak, before_.an) == std::tie(after_.sak, after_.an)) return;
    PortEvent& event = add(Kind::sak);
    event.sak = after_.sak;
    event.an = after_.an;
  }

  PortSummary const& before_;
  PortSummary const& after_;
  std::vector<PortEvent> events_;
};

}  // namespace

std::vector<PortEvent> eventsBetween(PortSummary const& before, PortSummary const& after) {
  return Comparing(before, after).events();
}

}  // namespace Macsecd
