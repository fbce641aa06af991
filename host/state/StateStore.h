#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "host/text/Result.h"

namespace Macsecd {

/// Attributes of the status tree by path, as text: "cpStatus/Ethernet1/rxSak/0" and the printed
/// form of the value. An entity has an entry of its own, with its constructor parameters. Keys lie
/// in it as they lie in the tree, encoded.
using StateValues = std::map<std::string, std::string>;

/// What one turn of the loop has changed. The order is: first everything in `erasedBelow` goes, a
/// key and all below it ("a" takes "a" and "a/b" along, not "ab"); then each value is written, or
/// erased if there is none.
struct StateChange {
  std::set<std::string> erasedBelow = {};
  std::map<std::string, std::optional<std::string>> values = {};
  bool empty() const { return erasedBelow.empty() && values.empty(); }
};

void apply(StateChange const& change, StateValues& values);

/// Takes the values whose paths begin so out of `values`.
StateValues extracted(StateValues& values, std::string_view begin);

/// Where the status tree outlives the process.
class StateStore {
 public:
  StateStore() = default;
  virtual ~StateStore() = default;
  StateStore(StateStore const&) = delete;
  StateStore& operator=(StateStore const&) = delete;

  /// All that was committed. What can't be read is left out; never throws.
  virtual StateValues readAll() = 0;
  /// Takes the whole change or nothing of it; never throws because of the store. What it took
  /// outlives the process from then on, however that ends.
  virtual Result<> commit(StateChange const& change) = 0;
};

}  // namespace Macsecd
