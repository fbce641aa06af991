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

StateValues extracted(StateValues& values, std::string_view begin) {
  StateValues out;
  std::erase_if(values, [&](auto const& entry) {
    bool const isIt = entry.first.starts_with(begin);
    if (isIt) out.insert(entry);
    return isIt;
  });
  return out;
}

}  // namespace Macsecd
