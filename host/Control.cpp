#include "host/Control.h"

#include <fmt/format.h>

#include "host/ControlJson.h"
#include "host/KeyText.h"
#include "platform/Corruption.h"

namespace Macsecd {

namespace {

/// One request on its way to its answer. Throws `Fault` for one that can't be answered.
class Answering {
 public:
  Answering(Host& host, Control::Reload const& reload, bool mayChange)
      : host_(host), reload_(reload), mayChange_(mayChange) {}

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
  static Command const kCommands[5];

  Json run(Command const& command) {
    if (!command.changes || mayChange_) return (this->*command.run)();
    throw Fault{fmt::format("you may not {}", command.name), "do it as root"};
  }

  std::optional<std::string> text_(char const* name) const {
    auto const found = request_.find(name);
    if (found == request_.end()) return std::nullopt;
    if (found->is_string()) return found->get<std::string>();
    throw Fault{fmt::format("'{}' is no text", name), "put it into double quotes"};
  }

  /// The one that is asked for, or all that are configured.
  std::vector<Lumo::IntfId> interfaces() const {
    auto const all = interfacesOf(host_);
    auto const name = text_("interface");
    if (!name) return all;
    Lumo::IntfId const wanted{Vesk::String8(*name)};
    for (Lumo::IntfId const intfId : all) {
      if (intfId == wanted) return {wanted};
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
      if (read) ports.push_back(jsonOf(*read));
    }
    return ports;
  }
  Json clearCounters() {
    host_.config()->clearMkaCountersInc(1);
    return nullptr;
  }
  Json reload() {
    Json mistakes = Json::array();
    for (Mistake const& mistake : reload_()) mistakes.push_back(jsonOf(mistake));
    return {{"taken", mistakes.empty()}, {"mistakes", mistakes}};
  }

  Host& host_;
  Control::Reload const& reload_;
  bool const mayChange_;
  Json request_;
};

Answering::Command const Answering::kCommands[5] = {
    {"status", false, &Answering::status},     {"explain", false, &Answering::explanations},
    {"counters", false, &Answering::counters}, {"clear-counters", true, &Answering::clearCounters},
    {"reload", true, &Answering::reload},
};

Json answerOf(Host& host, Control::Reload const& reload, std::string_view text, bool mayChange) {
  try {
    Json const result = Answering(host, reload, mayChange).result(text);
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

std::string Control::answer(std::string_view request, bool mayChange) {
  return answerOf(host_, reload_, request, mayChange)
      .dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace Macsecd
