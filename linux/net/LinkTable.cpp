#include "linux/net/LinkTable.h"

#include <utility>

#include "runtime/Assert.h"

namespace Linux {

using What = LinkChange::What;

Link const* LinkTable::linkNamed(std::string const& name) const {
  auto const index = indices_.find(name);
  if (index == indices_.end()) return nullptr;
  auto const link = links_.find(index->second);
  VESK_ASSERT(link != links_.end() && link->second.name == name);
  return &link->second;
}

void LinkTable::nameIs(Link& known, std::string const& name) {
  indices_.erase(known.name);
  known.name = name;
  indices_[name] = known.index;
}

void LinkTable::linkIs(Link const& link) {
  unheard_.erase(link.index);
  giveWay(link);
  auto const known = links_.find(link.index);
  if (known == links_.end()) return come(link);
  change(known->second, link);
}

// Another interface that had the name has lost it, though nothing was said of that: it will come
// again under its new one, if it is still there.
void LinkTable::giveWay(Link const& link) {
  Link const* const holder = linkNamed(link.name);
  if (holder && holder->index != link.index) linkDel(holder->index);
}

void LinkTable::come(Link const& link) {
  Link& known = links_[link.index];
  known = link;
  known.up = false;
  indices_[known.name] = known.index;
  told_({What::came, known, {}});
  upIs(known, link.up);
}

void LinkTable::change(Link& known, Link const& link) {
  bool const isSame = known.name == link.name && known.addr == link.addr;
  upIs(known, known.up && link.up && isSame);
  std::string const formerName = known.name;
  if (formerName != link.name) nameIs(known, link.name);
  if (formerName != known.name) told_({What::renamed, known, formerName});
  auto const formerAddr = std::exchange(known.addr, link.addr);
  if (formerAddr != known.addr) told_({What::address, known, {}});
  if (link.mtu != 0 && std::exchange(known.mtu, link.mtu) != link.mtu) {
    told_({What::mtu, known, {}});
  }
  upIs(known, link.up);
  stateIs(known, link);
}

void LinkTable::stateIs(Link& known, Link const& link) {
  bool const wasSetUp = std::exchange(known.isSetUp, link.isSetUp);
  bool const wasDormant = std::exchange(known.isDormant, link.isDormant);
  int const former = std::exchange(known.master, link.master);
  bool const isSame =
      wasSetUp == known.isSetUp && wasDormant == known.isDormant && former == known.master;
  if (!isSame) told_({What::state, known, {}});
}

void LinkTable::upIs(Link& known, bool up) {
  if (std::exchange(known.up, up) != up) told_({up ? What::up : What::down, known, {}});
}

void LinkTable::linkDel(int index) {
  unheard_.erase(index);
  auto const known = links_.find(index);
  if (known == links_.end()) return;
  upIs(known->second, false);
  Link const last = known->second;
  indices_.erase(last.name);
  links_.erase(known);
  told_({What::gone, last, {}});
}

void LinkTable::resyncBegins() {
  unheard_.clear();
  for (auto const& [index, link] : links_) unheard_.insert(index);
}

void LinkTable::resyncEnds() {
  for (int const index : std::exchange(unheard_, {})) linkDel(index);
}

}  // namespace Linux
