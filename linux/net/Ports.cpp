#include "linux/net/Ports.h"

#include <utility>

namespace Linux {

using What = LinkChange::What;

namespace {

Lumo::IntfId intfIdOf(std::string const& name) { return Lumo::IntfId(Vesk::String8(name)); }

}  // namespace

void Ports::namesIs(std::set<std::string> names) {
  std::set<std::string> const former = std::exchange(names_, std::move(names));
  for (auto const& [index, link] : table_.links()) {
    bool const wasPort = former.contains(link.name);
    if (wasPort && !isPort(link.name)) leave(link.name);
    if (!wasPort && isPort(link.name)) enter(link);
  }
}

void Ports::enter(Link const& link) {
  observer_.portIs(intfIdOf(link.name), link.index, link.addr);
  observer_.portSetUpIs(intfIdOf(link.name), link.isSetUp);
  if (link.mtu != 0) observer_.portMtuIs(intfIdOf(link.name), link.mtu);
  if (link.up) observer_.portLinkIs(intfIdOf(link.name), true);
}

void Ports::leave(std::string const& name) { observer_.portDel(intfIdOf(name)); }

void Ports::changed(LinkChange const& change) {
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
      return observer_.portLinkIs(intfIdOf(link.name), change.what == What::up);
    case What::state:
      return observer_.portSetUpIs(intfIdOf(link.name), link.isSetUp);
    case What::mtu:
      return observer_.portMtuIs(intfIdOf(link.name), link.mtu);
  }
}

}  // namespace Linux
