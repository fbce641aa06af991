#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "fuzz/FuzzedSwitch.h"
#include "fuzz/Input.h"
#include "fuzz/Require.h"
#include "host/client/ControlText.h"
#include "host/client/EventText.h"
#include "host/control/Control.h"

// Any octets as lines of requests to a switch that has a peer, and as answers to an operator's
// tool. Each line is answered with one JSON object on one line, and no answer holds a key.

namespace {

using Fuzz::FuzzedSwitch;
using Fuzz::require;

// What is common to all runs: the requests change little of it, and time stands still.
class Bench {
 public:
  Bench() {
    a_.start();
    b_.start();
    goOn(a_, b_, 12);
  }

  void ask(std::string_view request, bool mayChange) {
    Vesk::WorldScope const scope(a_.world);
    std::string const answer = control_.answer(request, mayChange, kConnection);
    control_.connectionEnded(kConnection);
    auto const json = nlohmann::json::parse(answer, nullptr, false);
    require(json.is_object() && json.contains("ok"), "an answer isn't a JSON object");
    require(answer.find('\n') == std::string::npos, "an answer has a second line");
    require(answer.find(Fuzz::kCak) == std::string::npos, "an answer holds a key");
    bool const isGood = json["ok"].get<bool>();
    require(isGood || !json["error"].get<std::string>().empty(), "a refusal says nothing");
    read(answer);
  }
  static void read(std::string_view answer) {
    for (int view = 0; view <= static_cast<int>(Macsecd::ControlView::done); ++view) {
      static_cast<void>(Macsecd::readingOf(static_cast<Macsecd::ControlView>(view), answer));
    }
    static_cast<void>(Macsecd::eventLineOf(answer));
    static_cast<void>(Macsecd::capturedFrameOf(answer));
  }

 private:
  static constexpr uint64_t kConnection = 7;

  FuzzedSwitch a_{1}, b_{2};
  Macsecd::Trial trial_{a_.host, "", [](Macsecd::SwitchConfig const&) {}};
  Macsecd::Control control_{
      a_.host, Macsecd::Control::Ways{[] { return std::vector<Macsecd::Diagnostic>(); },
                                      [](uint64_t, std::string const&) {},
                                      [](Macsecd::TraceWish const&) { return Macsecd::Result<>(); },
                                      &trial_}};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* octets, size_t size) {
  static Bench& bench = *std::make_unique<Bench>().release();
  Fuzz::Input in({octets, size});
  uint8_t const how = in.octet();
  auto const rest = in.rest();
  std::string_view text(reinterpret_cast<char const*>(rest.data()), rest.size());
  if ((how & 2) != 0) {
    Bench::read(text);
    return 0;
  }
  while (!text.empty()) {
    std::string_view const line = text.substr(0, text.find('\n'));
    bench.ask(line, (how & 1) != 0);
    text.remove_prefix(std::min(line.size() + 1, text.size()));
  }
  return 0;
}
