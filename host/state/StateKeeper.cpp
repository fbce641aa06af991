#include "host/state/StateKeeper.h"

#include <utility>

#include "host/state/StatePath.h"
#include "host/state/StateTree.h"

namespace Macsecd {

namespace {

// The key of a member without the quotes that it is printed in.
std::string plainKey(std::string const& printed) {
  return printed[0] == '\'' ? Vesk::TextParser(printed).quoted() : printed;
}

}  // namespace

StateKeeper::StateKeeper(Vesk::Ptr<Macsec::Status const> status, StateStore& store,
                         StateChange first)
    : world_(Vesk::world()),
      formerLog_(std::exchange(Vesk::attributeLogEnabled, true)),
      status_(std::move(status)),
      store_(store),
      pending_(std::move(first)) {
  world_.attributeFollowerIs(*this);
}

StateKeeper::~StateKeeper() {
  world_.attributeFollowerDel(*this);
  Vesk::attributeLogEnabled = formerLog_;
}

bool StateKeeper::commit() {
  if (pending_.empty()) return false;
  auto const taken = store_.commit(pending_);
  error_ = taken ? std::string() : taken.fault().text();
  if (!taken) return false;
  pending_.erasedBelow.clear();
  pending_.values.clear();
  return true;
}

void StateKeeper::attributeWritten(Vesk::AttributeWrite const& write) {
  auto const entity = statePathOf(write.entity, *status_);
  if (!entity || write.attribute == std::string_view("fipsStatus")) return;
  std::string path = statePath(*entity, write.attribute);
  if (write.key.empty()) {
    pending_.values[path] = write.value;
    return;
  }
  std::string const key = plainKey(write.key);
  path = statePath(path, key);
  if (write.value.empty()) {
    memberWent(path);
  } else if (write.value == kMemberIsThere) {
    memberCame(path, write, key);
  } else {
    pending_.values[path] = write.value;
  }
}

void StateKeeper::memberCame(std::string const& path, Vesk::AttributeWrite const& write,
                             std::string_view key) {
  Lumo::IntfId const intfId{Vesk::String8(key)};
  std::string value = kMemberIsThere;
  if (&write.entity == status_.ptr() && write.attribute == std::string_view("intfStatus")) {
    value = Vesk::valueToStrep(status_->intfStatus(intfId)->macsecParams());
  } else if (&write.entity == status_.ptr() && write.attribute == std::string_view("cpStatus")) {
    value = Vesk::valueToStrep(status_->cpStatus(intfId)->macsecParams());
  }
  pending_.values[path] = value;
}

void StateKeeper::memberWent(std::string const& path) {
  auto& values = pending_.values;
  values.erase(path);
  values.erase(values.lower_bound(path + '/'), values.lower_bound(path + char('/' + 1)));
  pending_.erasedBelow.insert(path);
}

}  // namespace Macsecd
