#include "host/Control.h"

#include <fmt/format.h>

#include <array>

#include "host/ControlJson.h"
#include "host/KeyText.h"
#include "host/Rekey.h"
#include "platform/Corruption.h"

namespace Macsecd {

namespace {

struct Asker {
  bool mayChange;
  uint64_t connection;
};

/// One request on its way to its answer. Throws `Fault` for one that can't be answered.
class Answering {
 public:
  Answering(Host& host, Control::Ways const& ways, Subscriptions& subscriptions, Asker asker)
      : host_(host), ways_(ways), subscriptions_(subscriptions), asker_(asker) {}

  Json result(std::string_view text) {
    request_ = Json::parse(text, nullptr, false);
    if (!request_.is_object()) throw Fault{"this is no JSON object", "send one on one line"};
    if (request_.value("version", Json()) != Control::kVersion) {
      throw Fault{"the request is of another version",
                  fmt::format("say \"version\": {}", Control::kVersion)};
    }
    std::string const command = text_("command").value_or("");
    for (Command const& known : kCommands) {
      if (command == known.name) return run(known);
    }
    std::vector<std::string> names;
    for (Command const& known : kCommands) names.push_back(known.name);
    throw Fault{fmt::format("there is no command {}", quotedWord(command)),
                remedyForUnknown(command, names)};
  }

 private:
  struct Command {
    char const* name;
    bool changes;
    Json (Answering::*run)();
  };
  static std::array<Command, 9> const kCommands;

  Json run(Command const& command) {
    if (!command.changes || asker_.mayChange) return (this->*command.run)();
    throw Fault{fmt::format("you may not {}", command.name), "do it as root"};
  }

  std::optional<std::string> text_(char const* name) const {
    auto const found = request_.find(name);
    if (found == request_.end()) return std::nullopt;
    if (found->is_string()) return found->get<std::string>();
    throw Fault{fmt::format("'{}' is no text", name), "put it into double quotes"};
  }

  bool flag(char const* name) const {
    auto const found = request_.find(name);
    if (found == request_.end()) return false;
    if (found->is_boolean()) return found->get<bool>();
    throw Fault{fmt::format("'{}' is neither true nor false", name), "write one of them"};
  }

  /// The one that is asked for, or all that are configured.
  std::vector<Lumo::IntfId> interfaces() const {
    auto const all = interfacesOf(host_);
    if (!text_("interface")) return all;
    return {interface(all)};
  }
  Lumo::IntfId interface() const { return interface(interfacesOf(host_)); }
  Lumo::IntfId interface(std::vector<Lumo::IntfId> const& all) const {
    auto const name = text_("interface");
    if (!name) throw Fault{"no interface is named", "say \"interface\": its name"};
    Lumo::IntfId const wanted{Vesk::String8(*name)};
    for (Lumo::IntfId const intfId : all) {
      if (intfId == wanted) return wanted;
    }
    std::vector<std::string> names;
    for (Lumo::IntfId const intfId : all) names.push_back(intfId.stringValue().charPtr());
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
    auto const reader = host_.counters()->reader();
    for (Lumo::IntfId const intfId : interfaces()) {
      auto const read = reader.interface(intfId.stringValue().view());
      if (read) ports.push_back(jsonOf(*read, flag("since-clear")));
    }
    return ports;
  }
  Json clearCounters() {
    host_.config()->clearMkaCountersInc(1);
    return nullptr;
  }
  Json reload() {
    Json mistakes = Json::array();
    for (Mistake const& mistake : ways_.reload()) mistakes.push_back(jsonOf(mistake));
    return {{"taken", mistakes.empty()}, {"mistakes", mistakes}};
  }
  Json rekey() {
    Lumo::IntfId const intfId = interface();
    Rekeyed const done = Macsecd::rekey(host_, intfId);
    return {{"interface", intfId.stringValue().charPtr()},
            {"sak", done.sak.empty() ? Json() : Json(done.sak)},
            {"seconds", done.seconds}};
  }
  Json watch() {
    requireTelling();
    auto const name = text_("interface");
    subscriptions_.watch(asker_.connection,
                         name ? std::optional(interface()) : std::optional<Lumo::IntfId>());
    return nullptr;
  }
  Json capture() {
    requireTelling();
    subscriptions_.capture(asker_.connection, interface());
    return nullptr;
  }
  void requireTelling() const {
    if (subscriptions_.canTell()) return;
    throw Fault{"nothing can be told later on here", "ask at the control socket"};
  }
  Json trace() {
    TraceWish const wish{flag("on") ? traceLevelsTo(level()) : uint16_t{0}, handles()};
    if (!ways_.trace) throw Fault{"this process doesn't trace", "ask macsecd"};
    ways_.trace(wish);
    return nullptr;
  }
  unsigned level() const {
    auto const found = request_.find("level");
    if (found == request_.end()) return Glimmer::TraceFile::kLevels - 1;
    if (found->is_number_unsigned() && *found < Glimmer::TraceFile::kLevels) {
      return found->get<unsigned>();
    }
    throw Fault{"'level' is no level", "write a number from 0 to 9"};
  }
  std::vector<std::string> handles() const {
    std::vector<std::string> names;
    for (Json const& name : request_.value("handles", Json::array())) {
      if (!name.is_string()) throw Fault{"'handles' holds what is no text", "write names"};
      names.push_back(name.get<std::string>());
    }
    return names;
  }

  Host& host_;
  Control::Ways const& ways_;
  Subscriptions& subscriptions_;
  Asker const asker_;
  Json request_;
};

std::array<Answering::Command, 9> const Answering::kCommands = {{
    {"status", false, &Answering::status},
    {"explain", false, &Answering::explanations},
    {"counters", false, &Answering::counters},
    {"clear-counters", true, &Answering::clearCounters},
    {"rekey", true, &Answering::rekey},
    {"reload", true, &Answering::reload},
    {"watch", false, &Answering::watch},
    {"capture", false, &Answering::capture},
    {"trace", true, &Answering::trace},
}};

Json answerOf(Answering answering, std::string_view text) {
  try {
    Json const result = answering.result(text);
    return {{"version", Control::kVersion}, {"ok", true}, {"result", result}};
  } catch (Fault const& fault) {
    return {{"version", Control::kVersion},
            {"ok", false},
            {"error", fault.what},
            {"remedy", fault.remedy}};
  } catch (Pollux::CorruptionDetectedException const& damage) {
    return {{"version", Control::kVersion},
            {"ok", false},
            {"error", damage.what()},
            {"remedy", "clear the counters: what is damaged starts anew"}};
  }
}

}  // namespace

Control::Control(Host& host, Ways ways)
    : host_(host), ways_(std::move(ways)), subscriptions_(host, ways_.tell) {}

std::string Control::answer(std::string_view request, bool mayChange, uint64_t connection) {
  return answerOf(Answering(host_, ways_, subscriptions_, {mayChange, connection}), request)
      .dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace Macsecd
