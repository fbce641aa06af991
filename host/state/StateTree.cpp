#include "host/state/StateTree.h"

#include <algorithm>
#include <span>
#include <stdexcept>
#include <utility>

#include "host/state/StatePath.h"
#include "model/Factories.h"
#include "runtime/Trace.h"

namespace Macsecd {

namespace {

Vesk::TraceHandle traceHandle("Macsecd::Host");

using Macsec::CpStatus;
using Macsec::MacsecParams;
using Macsec::MkaActorStatus;
using Macsec::Status;
using Names = std::span<std::string const>;
using Vesk::String8;

[[noreturn]] void unknown() { throw std::invalid_argument("the tree has no such place"); }

// Puts the values of a store into a tree, one at a time. Each function has the names of the path
// that lie below its entity.
class Builder {
 public:
  Builder(RebuiltState& rebuilt, StateValues const& values)
      : rebuilt_(rebuilt), status_(*rebuilt.status), values_(values) {}

  void put(std::string const& path, std::string const& value);

 private:
  void putRoot(Names names);
  void putControlledPort(CpStatus& cpStatus, Names names);
  void putPort(Macsec::MkaPortStatus& port, Names names);
  void putActor(MkaActorStatus& actor, Names names);
  template <class E>
  void putAttribute(E& entity, Names names);
  MacsecParams params(std::string const& collection, std::string const& interface);
  std::optional<MacsecParams> storedParams(std::string const& path) const;
  void entryIs(std::string const& path, std::string const& text);
  void memberIsThere(size_t names);
  void told(std::string reason);

  RebuiltState& rebuilt_;
  Status& status_;
  StateValues const& values_;
  std::string const* path_ = nullptr;
  std::string const* value_ = nullptr;
};

void Builder::told(std::string reason) {
  VESK_TRACE(1, ": ", *path_, ": ", reason);
  rebuilt_.dropped.push_back({*path_, std::move(reason)});
}

void Builder::put(std::string const& path, std::string const& value) {
  path_ = &path;
  value_ = &value;
  try {
    putRoot(statePathNames(path));
  } catch (std::exception const& e) {
    rebuilt_.repair.values[path] = std::nullopt;
    told(e.what());
  }
}

// What is below an entity tells as well as its own entry that it is there.
void Builder::entryIs(std::string const& path, std::string const& text) {
  auto const entry = values_.find(path);
  if (entry != values_.end() && entry->second == text) return;
  rebuilt_.repair.values[path] = text;
  told("the entry of its entity is missing or damaged, and was made again");
}

// The same for the entity at the first names of the present path.
void Builder::memberIsThere(size_t names) {
  size_t end = 0;
  for (; names > 0; --names) end = std::min(path_->find('/', end + 1), path_->size());
  entryIs(path_->substr(0, end), kMemberIsThere);
}

std::optional<MacsecParams> Builder::storedParams(std::string const& path) const {
  auto const entry = values_.find(path);
  if (entry == values_.end()) return std::nullopt;
  try {
    return Vesk::valueFromStrep<MacsecParams>(entry->second);
  } catch (std::exception const&) {
    return std::nullopt;
  }
}

// An interface and its controlled port have the same parameters: either tells those of the other.
MacsecParams Builder::params(std::string const& collection, std::string const& interface) {
  std::string const path = statePath(collection, interface);
  auto found = storedParams(path);
  if (!found) {
    found =
        storedParams(statePath(collection == "cpStatus" ? "intfStatus" : "cpStatus", interface));
  }
  if (!found) throw std::invalid_argument("the parameters of its entity are missing or damaged");
  entryIs(path, Vesk::valueToStrep(*found));
  return *found;
}

void Builder::putRoot(Names names) {
  if (names.size() == 1) return putAttribute(status_, names);
  if (names[1].empty()) unknown();
  Lumo::IntfId const intfId{String8(names[1])};
  Names const below = names.subspan(2);
  if (names[0] == "intfStatus") {
    auto intfStatus = status_.intfStatus(intfId);
    if (!intfStatus) intfStatus = status_.intfStatusIs(intfId, params(names[0], names[1]));
    if (!below.empty()) putAttribute(*intfStatus, below);
  } else if (names[0] == "cpStatus") {
    auto cpStatus = status_.cpStatus(intfId);
    if (!cpStatus) cpStatus = status_.cpStatusIs(intfId, params(names[0], names[1]));
    if (!below.empty()) putControlledPort(*cpStatus, below);
  } else if (names[0] == "portStatus") {
    if (!status_.portStatus(intfId)) memberIsThere(2);
    putPort(*status_.portStatusIs(intfId), below);
  } else {
    unknown();
  }
}

template <class E>
void Builder::putAttribute(E& entity, Names names) {
  if (names.size() != 1 || names[0] == "fipsStatus") unknown();
  if (!Vesk::attributeFromText(entity, names[0], *value_)) unknown();
}

// A value of a collection says itself which key it has.
void Builder::putControlledPort(CpStatus& cpStatus, Names names) {
  if (names.size() == 1) return putAttribute(cpStatus, names);
  if (names.size() != 2) unknown();
  auto const checked = [&](auto const& value) {
    if (Vesk::valueToStrep(value.an()) == names[1]) return value;
    throw std::invalid_argument("the value belongs to another key");
  };
  if (names[0] == "rxSak") {
    cpStatus.rxSakIs(checked(Vesk::valueFromStrep<Macsec::Sak>(*value_)));
  } else if (names[0] == "rxLPN") {
    cpStatus.rxLPNIs(checked(Vesk::valueFromStrep<Macsec::RxLPN>(*value_)));
  } else {
    unknown();
  }
}

void Builder::putPort(Macsec::MkaPortStatus& port, Names names) {
  if (names.empty()) return;
  if (names.size() == 1) return putAttribute(port, names);
  if (names[0] != "actorStatus" || names[1].empty()) unknown();
  if (!port.actorStatus(String8(names[1]))) memberIsThere(4);
  putActor(*port.actorStatusIs(String8(names[1])), names.subspan(2));
}

void Builder::putActor(MkaActorStatus& actor, Names names) {
  if (names.empty()) return;
  if (names.size() == 1) return putAttribute(actor, names);
  bool const live = names[0] == "livePeer";
  if ((!live && names[0] != "potentialPeer") || names[1].empty()) unknown();
  String8 const msgId(names[1]);
  if (!(live ? actor.livePeer(msgId) : actor.potentialPeer(msgId))) memberIsThere(6);
  auto const peer = live ? actor.livePeerIs(msgId) : actor.potentialPeerIs(msgId);
  if (names.size() > 2) putAttribute(*peer, names.subspan(2));
}

}  // namespace

RebuiltState rebuiltStatus(Vesk::Name const& name, StateValues const& values) {
  RebuiltState rebuilt{Macsec::statusFactory(name), {}, {}};
  Builder builder(rebuilt, values);
  // Nothing of this is news.
  bool const logs = std::exchange(Vesk::attributeLogEnabled, false);
  for (auto const& [path, value] : values) builder.put(path, value);
  Vesk::attributeLogEnabled = logs;
  return rebuilt;
}

}  // namespace Macsecd
