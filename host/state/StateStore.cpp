#include "host/state/StateStore.h"

namespace Macsecd {

void apply(StateChange const& change, StateValues& values) {
  for (std::string const& path : change.erasedBelow) {
    values.erase(path);
    values.erase(values.lower_bound(path + '/'), values.lower_bound(path + char('/' + 1)));
  }
  for (auto const& [path, value] : change.values) {
    if (value) {
      values[path] = *value;
    } else {
      values.erase(path);
    }
  }
}

}  // namespace Macsecd
