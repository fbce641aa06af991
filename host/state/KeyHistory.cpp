#include "host/state/KeyHistory.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <sstream>

#include "host/state/StatePath.h"
#include "runtime/Assert.h"

namespace Macsecd {

namespace {

constexpr uint64_t kAll = std::numeric_limits<uint64_t>::max();

}  // namespace

std::optional<SakId> SakId::of(Macsec::Sak const& sak) {
  auto const server = Macsec::MemberIdentifier::parsed(sak.keyMsgId().view());
  if (!server || sak.keyMsgId().empty()) return {};
  return SakId{*server, sak.keyNum()};
}

KeyHistory::Server const* KeyHistory::server(Lumo::IntfId intfId,
                                             Macsec::MemberIdentifier const& id) const {
  auto const servers = servers_.find(intfId);
  if (servers == servers_.end()) return nullptr;
  auto const found = std::ranges::find(servers->second, id, &Server::id);
  return found == servers->second.end() ? nullptr : &*found;
}

KeyHistory::Key const* KeyHistory::find(Lumo::IntfId intfId, SakId const& sak) const {
  Server const* const known = server(intfId, sak.server);
  if (!known) return nullptr;
  auto const key = std::ranges::find(known->keys, sak.number, &Key::number);
  return key == known->keys.end() ? nullptr : &*key;
}

KeyHistory::Server& KeyHistory::serverIs(Lumo::IntfId intfId, Macsec::MemberIdentifier const& id) {
  Servers& servers = servers_[intfId];
  auto const known = std::ranges::find(servers, id, &Server::id);
  if (known != servers.end()) return *known;
  if (servers.size() >= kMostServers) {
    pending_.values[pathOf(intfId, servers.front().id)] = std::nullopt;
    servers.erase(servers.begin());
  }
  return servers.emplace_back(Server{id, ++arrivals_, {}});
}

// Null for one that is older than those that are known.
KeyHistory::Key* KeyHistory::keyIs(Lumo::IntfId intfId, SakId const& sak) {
  auto& keys = serverIs(intfId, sak.server).keys;
  auto const known = std::ranges::find(keys, sak.number, &Key::number);
  if (known != keys.end()) return &*known;
  if (!keys.empty() && sak.number < keys.back().number) return nullptr;
  auto const oldest = std::ranges::find_if(keys, [&](Key const& key) {
    return !isAsked(intfId, {sak.server, key.number});
  });
  if (keys.size() >= kMostKeys && oldest != keys.end()) keys.erase(oldest);
  VESK_ASSERT(keys.empty() || keys.back().number < sak.number);
  return &keys.emplace_back(Key{sak.number, 0, 0, {}});
}

void KeyHistory::askedIs(Lumo::IntfId intfId, std::vector<SakId> const& keys) {
  if (keys.empty()) {
    asked_.erase(intfId);
  } else {
    asked_[intfId] = keys;
  }
}

bool KeyHistory::isAsked(Lumo::IntfId intfId, SakId const& sak) const {
  auto const asked = asked_.find(intfId);
  return asked != asked_.end() && std::ranges::find(asked->second, sak) != asked->second.end();
}

void KeyHistory::bindSsci(Lumo::IntfId intfId, SakId const& sak, uint32_t ssci) {
  Key* const key = keyIs(intfId, sak);
  if (!key || key->ssci != 0) return;
  key->ssci = ssci;
  keep(intfId, sak.server);
  commit();
}

std::optional<uint64_t> KeyHistory::firstToSend(Lumo::IntfId intfId, SakId const& sak,
                                                uint32_t ssci) const {
  if (isSpent(intfId, sak)) return {};
  Key const* const key = find(intfId, sak);
  if (!key) return 1;
  if (key->ssci != 0 && key->ssci != ssci) return {};
  return std::max<uint64_t>(key->reserved, 1);
}

void KeyHistory::noteSent(Lumo::IntfId intfId, SakId const& sak, uint32_t ssci, uint64_t next) {
  if (next == 0) return spend(intfId, sak);
  Key* const key = keyIs(intfId, sak);
  if (!key) return;
  if (key->ssci == 0) key->ssci = ssci;
  if (key->reserved > next && key->reserved - next > kReserved / 2) return;
  key->reserved = next > kAll - kReserved ? kAll : next + kReserved;
  keep(intfId, sak.server);
  commit();
}

void KeyHistory::spend(Lumo::IntfId intfId, SakId const& sak) {
  if (isSpent(intfId, sak)) return;
  Key* const key = keyIs(intfId, sak);
  if (!key) return;
  key->reserved = kAll;
  keep(intfId, sak.server);
  commit();
}

// The last packet numbers of all are left unused: they are too few to reserve.
bool KeyHistory::isSpent(Lumo::IntfId intfId, SakId const& sak) const {
  if (Key const* const key = find(intfId, sak)) return key->reserved > kAll - kReserved;
  Server const* const known = server(intfId, sak.server);
  return known && !known->keys.empty() && sak.number < known->keys.back().number;
}

uint32_t KeyHistory::newest(Lumo::IntfId intfId, Macsec::MemberIdentifier const& id) const {
  Server const* const known = server(intfId, id);
  return known && !known->keys.empty() ? known->keys.back().number : 0;
}

uint64_t KeyHistory::firstToReceive(Lumo::IntfId intfId, SakId const& sak, uint64_t sci) const {
  Key const* const key = find(intfId, sak);
  if (!key) return 1;
  auto const received = key->received.find(sci);
  return received == key->received.end() ? 1 : received->second;
}

void KeyHistory::noteReceived(Lumo::IntfId intfId, SakId const& sak, uint64_t sci, uint64_t next) {
  Key* const key = keyIs(intfId, sak);
  if (!key || next <= firstToReceive(intfId, sak, sci)) return;
  key->received[sci] = next;
  keep(intfId, sak.server);
}

void KeyHistory::keep(Lumo::IntfId intfId, Macsec::MemberIdentifier const& id) {
  VESK_ASSERT(server(intfId, id));
  if (store_) pending_.values[pathOf(intfId, id)] = textOf(*server(intfId, id));
}

bool KeyHistory::commit() {
  if (!store_ || pending_.empty() || !store_->commit(pending_)) return false;
  pending_ = {};
  return true;
}

std::string KeyHistory::pathOf(Lumo::IntfId intfId, Macsec::MemberIdentifier const& server) {
  return kPathBegin +
         statePath(statePath("", intfId.stringValue().view()), server.stringValue().view());
}

// "7 3:1:268435457 4:2:0:020000000002000a=77": the order of the key server, then each of its keys:
// number, SSCI, what is reserved, and for each channel the next packet number to be received.
std::string KeyHistory::textOf(Server const& server) {
  std::string text = fmt::format("{}", server.order);
  for (Key const& key : server.keys) {
    text += fmt::format(" {}:{}:{}", key.number, key.ssci, key.reserved);
    for (auto const& [sci, next] : key.received) text += fmt::format(":{:016x}={}", sci, next);
  }
  return text;
}

bool KeyHistory::read(std::string const& text, Server& out) {
  std::istringstream words(text);
  if (!(words >> out.order)) return false;
  for (std::string word; words >> word;) {
    std::istringstream in(word);
    Key key;
    char colon = 0, second = 0;
    if (!(in >> key.number >> colon >> key.ssci >> second >> key.reserved)) return false;
    if (colon != ':' || second != ':') return false;
    for (char next = 0; in >> next;) {
      uint64_t sci = 0, number = 0;
      char equals = 0;
      if (next != ':' || !(in >> std::hex >> sci >> equals >> std::dec >> number)) return false;
      if (equals != '=') return false;
      key.received[sci] = number;
    }
    if (!out.keys.empty() && key.number <= out.keys.back().number) return false;
    out.keys.push_back(std::move(key));
  }
  return true;
}

std::vector<std::string> KeyHistory::takeUp(StateValues const& values) {
  std::vector<std::string> damaged;
  servers_.clear();
  pending_ = {};
  for (auto const& [path, value] : values) {
    try {
      auto const names = statePathNames(path.substr(std::string_view(kPathBegin).size()));
      Server known;
      auto const id = names.size() == 2 ? Macsec::MemberIdentifier::parsed(names[1]) : std::nullopt;
      if (!id || !read(value, known)) throw std::invalid_argument("no history of a key server");
      known.id = *id;
      arrivals_ = std::max(arrivals_, known.order);
      servers_[Lumo::IntfId(Vesk::String8(names[0]))].push_back(std::move(known));
    } catch (std::exception const&) {
      damaged.push_back(path);
      pending_.values[path] = std::nullopt;
    }
  }
  for (auto& [intfId, servers] : servers_) std::ranges::sort(servers, {}, &Server::order);
  return damaged;
}

}  // namespace Macsecd
