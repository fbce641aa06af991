#include "linux/net/Ports.h"

#include <utility>

namespace Linux {

namespace {

Lumo::IntfId intfIdOf(std::string const& name) { return Lumo::IntfId(Vesk::String8(name)); }

}  // namespace

void Ports::namesAre(std::set<std::string> names) {
  std::set<std::string> const former = std::exchange(names_, std::move(names));
  for (auto const& [index, link] : table_.links()) {
    bool const wasPort = former.contains(link.name);
    if (wasPort && !isPort(link.name)) leave(link.name);
    if (!wasPort && isPort(link.name)) enter(link);
  }
}

void Ports::enter(Link const& link) {
  follower_.portIs(intfIdOf(link.name), link.index, link.addr);
  follower_.portSetUpIs(intfIdOf(link.name), link.isSetUp);
  if (link.mtu != 0) follower_.portMtuIs(intfIdOf(link.name), link.mtu);
  if (link.up) follower_.portLinkIs(intfIdOf(link.name), true);
}

void Ports::leave(std::string const& name) { follower_.portDel(intfIdOf(name)); }

void Ports::changed(LinkChange const& change) {
  using What = LinkChange::What;
  Link const& link = change.link;
  if (change.what == What::renamed && isPort(change.formerName)) leave(change.formerName);
  if (!isPort(link.name)) return;
  switch (change.what) {
    case What::came:
    case What::renamed:
      return enter(link);
    case What::gone:
      return leave(link.name);
    case What::address:
      leave(link.name);
      return enter(link);
    case What::up:
    case What::down:
      return follower_.portLinkIs(intfIdOf(link.name), change.what == What::up);
    case What::state:
      return follower_.portSetUpIs(intfIdOf(link.name), link.isSetUp);
    case What::mtu:
      return follower_.portMtuIs(intfIdOf(link.name), link.mtu);
  }
}

}  // namespace Linux
