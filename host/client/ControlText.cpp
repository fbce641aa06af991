#include "host/client/ControlText.h"

#include <fmt/format.h>

#include "host/text/JsonText.h"
#include "host/text/TextTable.h"

namespace Macsecd {

namespace {

using Rows = std::vector<std::vector<std::string>>;

std::string text(Json const& value) {
  if (value.is_null()) return "";
  if (value.is_string()) return value.get<std::string>();
  return value.is_number_float() ? fmt::format("{:.1f}", value.get<double>()) : jsonText(value);
}

Json const* principalOf(Json const& port) {
  for (Json const& key : port.at("keys")) {
    if (key.at("principal").get<bool>()) return &key;
  }
  return nullptr;
}

std::string keyServerOf(Json const& key) {
  return key.at("is-key-server").get<bool>() ? "this switch" : text(key.at("key-server"));
}

size_t livePeers(Json const& key) {
  size_t count = 0;
  for (Json const& peer : key.at("peers")) count += peer.at("live").get<bool>();
  return count;
}

// A port without a key in use has none either: it may still be open, and its peers lost.
std::string livePeersOf(Json const& port, Json const* principal) {
  if (text(port.at("state")) == "absent") return "";
  return std::to_string(principal ? livePeers(*principal) : 0);
}

// "3 m 20 s", with a mark if it may be more.
std::string ageOf(Json const& port) {
  Json const& age = port.at("key-age");
  if (age.is_null()) return "";
  auto const seconds = static_cast<uint64_t>(age.at("seconds").get<double>());
  std::string const text = seconds < 60 ? fmt::format("{} s", seconds)
                           : seconds < 3600
                               ? fmt::format("{} m {} s", seconds / 60, seconds % 60)
                               : fmt::format("{} h {} m", seconds / 3600, seconds / 60 % 60);
  return (age.at("at-least").get<bool>() ? "> " : "") + text;
}

/// How many packets went before the next number, the first of which is 1.
std::string packetsBefore(Json const& number) {
  return number.is_null() ? "" : std::to_string(number.get<uint64_t>() - 1);
}

std::string status(Json const& ports) {
  Rows rows = {{"Interface", "State", "Key", "Role", "Key server", "SAK", "AN", "Age", "Peers",
                "Sent", "Received"}};
  for (Json const& port : ports) {
    std::vector<std::string> row = {text(port.at("interface")), text(port.at("state"))};
    Json const* const key = principalOf(port);
    row.push_back(key ? text(key->at("ckn")) : "");
    row.push_back(key ? text(key->at("role")) : "");
    row.push_back(key ? keyServerOf(*key) : "");
    row.push_back(text(port.at("sak")));
    row.push_back(text(port.at("an")));
    row.push_back(ageOf(port));
    row.push_back(livePeersOf(port, key));
    row.push_back(packetsBefore(port.at("tx-packet-number")));
    row.push_back(packetsBefore(port.at("rx-packet-number")));
    rows.push_back(row);
  }
  return textTable(rows);
}

std::string keys(Json const& ports) {
  Rows rows = {{"Interface", "Key", "Role", "In use", "Agrees", "Key server", "Peers"}};
  for (Json const& port : ports) {
    for (Json const& key : port.at("keys")) {
      rows.push_back({text(port.at("interface")), text(key.at("ckn")), text(key.at("role")),
                      key.at("principal").get<bool>() ? "yes" : "no",
                      key.at("agrees").get<bool>() ? "yes" : "no", keyServerOf(key),
                      std::to_string(livePeers(key))});
    }
  }
  return textTable(rows);
}

std::string peers(Json const& ports) {
  Rows rows = {{"Interface", "Key", "Peer", "State", "Priority", "Message", "Heard", "Member"}};
  for (Json const& port : ports) {
    for (Json const& key : port.at("keys")) {
      for (Json const& peer : key.at("peers")) {
        rows.push_back({text(port.at("interface")), text(key.at("ckn")), text(peer.at("sci")),
                        peer.at("live").get<bool>() ? "live" : "potential",
                        text(peer.at("priority")), text(peer.at("message-number")),
                        text(peer.at("seconds-since-heard")) + " s ago",
                        text(peer.at("member-id"))});
      }
    }
  }
  return textTable(rows);
}

std::string portText(Json const& port) {
  std::string out = text(port.at("interface")) + "\n";
  for (char const* const member : {"state", "link", "profile", "cipher-suite", "sci", "ssci", "sak",
                                   "an", "device", "tx-packet-number", "rx-packet-number"}) {
    std::string const value = text(port.at(member));
    out += fmt::format("  {:<18}{}\n", member, value.empty() ? "-" : value);
  }
  std::string const age = ageOf(port);
  out += fmt::format("  {:<18}{}\n", "key-age", age.empty() ? "-" : age);
  return out;
}

std::string ports(Json const& ports) {
  std::string out;
  for (Json const& port : ports) {
    Json const one = Json::array({port});
    out += (out.empty() ? "" : "\n") + portText(port) + "\n" + keys(one) + "\n" + peers(one);
  }
  return out;
}

std::string counters(Json const& ports) {
  Rows rows = {{"Interface", "Frames", "Since clear", "Total"}};
  for (Json const& port : ports) {
    for (Json const& counter : port.at("counters")) {
      rows.push_back({text(port.at("interface")), text(counter.at("frames")),
                      text(counter.at("since-clear"))});
      if (counter.contains("total")) {
        rows.back().push_back(text(counter.at("total")));
      } else {
        rows.front().resize(3);
      }
    }
  }
  return textTable(rows);
}

std::string rekeyed(Json const& result) {
  std::string const interface = text(result.at("interface"));
  if (!result.at("sak").is_null()) {
    return fmt::format("{}: new SAK {}\n", interface, text(result.at("sak")));
  }
  return fmt::format("{}: a new SAK comes in {} s\n", interface, text(result.at("seconds")));
}

// Nothing of a port whose state machines haven't begun.
std::string stages(Json const& port) {
  if (port.at("key").is_null()) return "";
  std::string out = fmt::format("  stages: key {}", text(port.at("key")));
  if (!port.at("guard").is_null()) out += fmt::format(", guard {}", text(port.at("guard")));
  for (Json const& member : port.at("members")) {
    out += fmt::format(", member {} {}", text(member.at("member")), text(member.at("stage")));
  }
  return out + "\n";
}

std::string explanations(Json const& ports) {
  std::string out;
  for (Json const& port : ports) {
    out += fmt::format("{} is {}secured\n", text(port.at("interface")),
                       port.at("secured").get<bool>() ? "" : "not ");
    for (Json const& cause : port.at("causes")) {
      out += fmt::format("  {}: {}\n    {}\n", text(cause.at("cause")), text(cause.at("what")),
                         text(cause.at("remedy")));
    }
    if (port.contains("stages")) out += stages(port.at("stages"));
  }
  return out;
}

ControlReading reloaded(Json const& result) {
  std::string out;
  for (Json const& diagnostic : result.at("mistakes")) {
    out += fmt::format("{}:{}:{}: {}; {}\n", text(diagnostic.at("file")),
                       text(diagnostic.at("line")), text(diagnostic.at("column")),
                       text(diagnostic.at("what")), text(diagnostic.at("remedy")));
  }
  return {out, result.at("taken").get<bool>()};
}

ControlReading resultText(ControlView view, Json const& result) {
  if (result.is_array() && result.empty()) return {"no interface is configured\n"};
  switch (view) {
    case ControlView::status:
      return {status(result)};
    case ControlView::ports:
      return {ports(result)};
    case ControlView::peers:
      return {peers(result)};
    case ControlView::keys:
      return {keys(result)};
    case ControlView::counters:
      return {counters(result)};
    case ControlView::explain:
      return {explanations(result)};
    case ControlView::rekey:
      return {rekeyed(result)};
    case ControlView::reload:
      return reloaded(result);
    case ControlView::done:
      break;
  }
  return {};
}

}  // namespace

ControlReading readingOf(ControlView view, std::string_view answer) {
  try {
    Json const json = Json::parse(answer);
    if (json.at("ok").get<bool>()) return resultText(view, json.at("result"));
    return {fmt::format("{}; {}\n", text(json.at("error")), text(json.at("remedy"))), false};
  } catch (Json::exception const&) {
    return {"the answer can't be read; use macsecctl and macsecd of the same version\n", false};
  }
}

}  // namespace Macsecd
