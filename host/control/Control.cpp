#include "host/control/Control.h"

#include <fmt/format.h>

#include <array>
#include <cmath>
#include <type_traits>

#include "host/control/ControlJson.h"
#include "host/control/ControlRequest.h"
#include "host/control/Rekey.h"
#include "host/text/ControlProtocol.h"
#include "host/text/JsonText.h"
#include "host/text/KeyText.h"
#include "host/text/Limits.h"
#include "platform/Corruption.h"

namespace Macsecd {

namespace {

struct Client {
  bool mayChange;
  uint64_t connection;
};

/// One request on its way to its answer. A `Fault` is thrown for one that can't be answered, from
/// here to where the answer is made, and no further.
class RequestHandler {
 public:
  RequestHandler(Host& host, Control::Ways const& ways, Subscriptions& subscriptions, Client client,
                 std::string_view request)
      : host_(host),
        ways_(ways),
        subscriptions_(subscriptions),
        client_(client),
        request_(request) {}

  Json result() {
    std::string const command = request_.command();
    std::vector<std::string> names;
    for (Command const& known : kCommands) {
      if (command == known.name) return run(known);
      names.push_back(known.name);
    }
    throw Fault{fmt::format("there is no command {}", quotedWord(command)),
                remedyForUnknown(command, names)};
  }

 private:
  struct Command {
    char const* name;
    bool changes;
    Json (RequestHandler::*run)();
  };
  static std::array<Command, 12> const kCommands;

  /// What came of something, where it went well.
  template <class T>
  static T had(Result<T> result) {
    if (!result) throw Fault(result.fault());
    if constexpr (!std::is_void_v<T>) return *std::move(result);
  }

  Json run(Command const& command) {
    if (!command.changes || client_.mayChange) return (this->*command.run)();
    throw Fault{fmt::format("you have no permission to {}", command.name), "run it as root"};
  }

  /// The one that is asked for, or all that are configured.
  std::vector<Lumo::IntfId> interfaces() const {
    auto all = interfacesOf(host_);
    if (!request_.text("interface")) return all;
    return {interface(all)};
  }
  Lumo::IntfId interface() const { return interface(interfacesOf(host_)); }
  Lumo::IntfId interface(std::vector<Lumo::IntfId> const& all) const {
    auto const name = request_.text("interface");
    if (!name) throw Fault{"no interface is named", "add \"interface\" with its name"};
    std::vector<std::string> names;
    for (Lumo::IntfId const intfId : all) {
      if (intfId.stringValue().view() == *name) return intfId;
      names.push_back(intfId.stringValue().charPtr());
    }
    throw Fault{fmt::format("there is no interface {} in the configuration", quotedWord(*name)),
                remedyForUnknown(*name, names)};
  }

  Json status() {
    Json ports = Json::array();
    for (Lumo::IntfId const intfId : interfaces()) {
      ports.push_back(jsonOf(summaryOf(host_, intfId)));
    }
    return ports;
  }
  Json explanations() {
    Json ports = Json::array();
    for (Lumo::IntfId const intfId : interfaces()) {
      ports.push_back(jsonOf(explain(host_, intfId)));
    }
    return ports;
  }
  Json counters() {
    Json ports = Json::array();
    for (Lumo::IntfId const intfId : interfaces()) {
      auto const read = host_.counters()->counters(intfId);
      if (read) ports.push_back(jsonOf(*read, request_.flag("since-clear")));
    }
    return ports;
  }
  Json clearCounters() {
    host_.config()->clearMkaCountersInc(1);
    return nullptr;
  }
  Json reload() { return takenOver(ways_.reload()); }
  static Json takenOver(std::vector<Diagnostic> const& told) {
    Json diagnostics = Json::array();
    for (Diagnostic const& diagnostic : told) diagnostics.push_back(jsonOf(diagnostic));
    return {{"taken", diagnostics.empty()}, {"mistakes", diagnostics}};
  }
  Trial& theTrial() const {
    if (ways_.trial) return *ways_.trial;
    throw Fault{"nothing can be tried here", "ask macsecd"};
  }
  Json tryFile() {
    auto const file = request_.text("file");
    unsigned const seconds =
        request_.number("timeout", Limits::kMostTrial).value_or(Limits::kUsualTrial);
    if (!file) throw Fault{"no file is named", "say \"file\": its whole path"};
    if (seconds == 0) throw Fault{"no time is left to keep it", "give it some seconds"};
    return takenOver(had(theTrial().begin(*file, seconds)));
  }
  Json keep() {
    had(theTrial().keep());
    return trial();
  }
  Json trial() {
    Trial const& trial = theTrial();
    bool const isNone = trial.state() == Trial::State::none;
    return {{"state", Vesk::stringValue(trial.state())},
            {"file", isNone ? Json() : Json(trial.path())},
            {"other-than-configured", !isNone && trial.isOfAnotherFile()},
            {"seconds", static_cast<unsigned>(std::ceil(trial.secondsLeft()))}};
  }
  Json rekey() {
    Lumo::IntfId const intfId = interface();
    Rekeyed const done = had(Macsecd::rekey(host_, intfId));
    return {{"interface", intfId.stringValue().charPtr()},
            {"sak", done.sak.empty() ? Json() : Json(done.sak)},
            {"seconds", done.seconds}};
  }
  Json watch() {
    requireTelling();
    auto const name = request_.text("interface");
    subscriptions_.watch(client_.connection,
                         name ? std::optional(interface()) : std::optional<Lumo::IntfId>());
    return nullptr;
  }
  Json capture() {
    requireTelling();
    subscriptions_.capture(client_.connection, interface());
    return nullptr;
  }
  void requireTelling() const {
    if (subscriptions_.canTell()) return;
    throw Fault{"no events can be sent here", "ask at the control socket"};
  }
  Json trace() {
    constexpr unsigned kMost = Glimmer::TraceFile::kLevels - 1;
    unsigned const level = request_.number("level", kMost).value_or(kMost);
    TraceWish const wish{request_.flag("on") ? traceLevelsTo(level) : uint16_t{0},
                         request_.texts("handles")};
    if (!ways_.trace) throw Fault{"this process doesn't trace", "ask macsecd"};
    had(ways_.trace(wish));
    return nullptr;
  }

  Host& host_;
  Control::Ways const& ways_;
  Subscriptions& subscriptions_;
  Client const client_;
  ControlRequest const request_;
};

std::array<RequestHandler::Command, 12> const RequestHandler::kCommands = {{
    {"status", false, &RequestHandler::status},
    {"explain", false, &RequestHandler::explanations},
    {"counters", false, &RequestHandler::counters},
    {"clear-counters", true, &RequestHandler::clearCounters},
    {"rekey", true, &RequestHandler::rekey},
    {"reload", true, &RequestHandler::reload},
    {"try", true, &RequestHandler::tryFile},
    {"keep", true, &RequestHandler::keep},
    {"trial", false, &RequestHandler::trial},
    {"watch", false, &RequestHandler::watch},
    {"capture", false, &RequestHandler::capture},
    {"trace", true, &RequestHandler::trace},
}};

/// The answer with this result, or with what hinders it.
template <class Ask>
Json answerOf(Ask result) {
  try {
    return {{"version", kControlVersion}, {"ok", true}, {"result", result()}};
  } catch (Fault const& fault) {
    return {{"version", kControlVersion},
            {"ok", false},
            {"error", fault.what},
            {"remedy", fault.remedy}};
  } catch (Pollux::CorruptionDetectedException const& damage) {
    return {{"version", kControlVersion},
            {"ok", false},
            {"error", damage.what()},
            {"remedy", "clear the counters: what is damaged starts anew"}};
  }
}

}  // namespace

Control::Control(Host& host, Ways ways)
    : host_(host), ways_(std::move(ways)), subscriptions_(host, ways_.tell) {}

std::string Control::answer(std::string_view request, bool mayChange, uint64_t connection) {
  Vesk::WorldScope const scope(host_.world());
  auto const result = [&] {
    Client const client{mayChange, connection};
    return RequestHandler(host_, ways_, subscriptions_, client, request).result();
  };
  return jsonText(answerOf(result));
}

}  // namespace Macsecd
