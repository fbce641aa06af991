#include "host/state/StateKeeper.h"

#include <utility>

#include "host/state/StatePath.h"

namespace Macsecd {

StateKeeper::StateKeeper(Vesk::Ptr<Vesk::Entity const> root, StateStore& store, StateChange first)
    : world_(Vesk::world()), root_(std::move(root)), store_(store), pending_(std::move(first)) {
  world_.attributeFollowerIs(*this);
}

StateKeeper::~StateKeeper() { world_.attributeFollowerDel(*this); }

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
  if (!write.entity.outlivesProcess(write.attribute)) return;
  auto const entity = statePathOf(write.entity, *root_);
  if (!entity) return;
  std::string path = statePath(*entity, write.attribute);
  if (!write.key.empty()) path = statePath(path, Vesk::plainText(write.key));
  if (write.value.empty()) {
    memberWent(path);
  } else {
    pending_.values[path] = write.member ? write.member->parametersText() : write.value;
  }
}

void StateKeeper::memberWent(std::string const& path) {
  auto& values = pending_.values;
  values.erase(path);
  values.erase(values.lower_bound(path + '/'), values.lower_bound(path + char('/' + 1)));
  pending_.erasedBelow.insert(path);
}

}  // namespace Macsecd
