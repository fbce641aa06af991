#include <string>
#include <string_view>

#include "fuzz/FuzzedSwitch.h"
#include "fuzz/Input.h"
#include "fuzz/Require.h"
#include "host/state/StateTree.h"

// Any octets as what a store holds, beside what a switch has left there or alone: the tree is
// rebuilt, the store repaired, and a switch goes on with it.

namespace {

using Fuzz::FuzzedSwitch;
using Fuzz::require;
using Macsecd::StateValues;

class Store final : public Macsecd::StateStore {
 public:
  explicit Store(StateValues begun = {}) : values(std::move(begun)) {}
  StateValues readAll() override { return values; }
  Macsecd::Result<> commit(Macsecd::StateChange const& change) override {
    apply(change, values);
    return {};
  }
  StateValues values;
};

// What a switch has left that was secured when it died.
StateValues leftValues() {
  Store store;
  FuzzedSwitch a{1, {.store = &store}}, b{2};
  a.start();
  b.start();
  goOn(a, b, 12);
  a.host.die();
  return store.values;
}

// Each line is a path and, behind a space, its value; without one, nothing is there.
void change(std::string_view text, StateValues& values) {
  while (!text.empty()) {
    std::string_view const line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    size_t const space = line.find(' ');
    std::string const path(line.substr(0, space));
    if (space == std::string_view::npos) {
      values.erase(path);
    } else {
      values[path] = line.substr(space + 1);
    }
  }
}

std::string textOf(Macsec::Status const& status) { return Vesk::entityToText(status); }

// A store that is repaired holds what was rebuilt.
void rebuild(StateValues values) {
  Fuzz::FuzzWorld world;
  Vesk::WorldScope const scope(world);
  std::erase_if(values, [](auto const& entry) { return entry.first.starts_with('%'); });
  auto const rebuilt = Macsecd::rebuiltStatus("status", values);
  apply(rebuilt.repair, values);
  auto const again = Macsecd::rebuiltStatus("status", values);
  require(again.dropped.empty(), "a store that was repaired holds what can't be taken");
  require(again.repair.empty(), "a store that was repaired is to be repaired");
  require(textOf(*again.status) == textOf(*rebuilt.status), "a repaired store holds another tree");
}

void goOnWith(StateValues const& values) {
  Store store(values);
  FuzzedSwitch a{1, {.store = &store}}, b{2};
  try {
    a.start();
    b.start();
    goOn(a, b, 6);
    a.host.restart();
    goOn(a, b, 1);
  } catch (Fuzz::ProcessEnded const&) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* octets, size_t size) {
  static StateValues const left = leftValues();
  Fuzz::Input in({octets, size});
  uint8_t const how = in.octet();
  auto const rest = in.rest();
  StateValues values;
  if ((how & 1) == 0) values = left;
  change({reinterpret_cast<char const*>(rest.data()), rest.size()}, values);
  rebuild(values);
  if ((how & 2) == 0) goOnWith(values);
  return 0;
}
