#include "host/client/EventText.h"

#include <fmt/format.h>

#include "host/text/EventKind.h"
#include "host/text/JsonText.h"
#include "host/text/TimeText.h"
#include "platform/Hex.h"

namespace Macsecd {

namespace {

std::string text(Json const& json, char const* member) {
  Json const& value = json.at(member);
  return value.is_null() ? "" : value.get<std::string>();
}

std::string keyWords(Json const& json) {
  std::string const key = text(json, "ckn");
  if (key.empty()) return "no key is in use";
  return fmt::format("key {} ({}) is in use", key, text(json, "role"));
}

std::string keyServerWords(Json const& json) {
  if (json.at("is-key-server").get<bool>()) return "this switch is the key server";
  std::string const sci = text(json, "sci");
  return sci.empty() ? "there is no key server" : fmt::format("the key server is {}", sci);
}

std::string sakWords(Json const& json) {
  std::string const sak = text(json, "sak");
  if (sak.empty()) return "sends with no SAK";
  return fmt::format("sends with SAK {}, AN {}", sak, json.at("an").get<int>());
}

std::string peerWords(Json const& json, char const* what) {
  return fmt::format("peer {} {} (key {})", text(json, "sci"), what, text(json, "ckn"));
}

std::string faultWords(Json const& json) {
  std::string const fault = text(json, "fault");
  return fault.empty() ? "the hardware refuses nothing any more" : "the hardware refuses: " + fault;
}

std::string wordsOf(Json const& json) {
  using enum EventKind;
  std::string event = text(json, "event");
  auto const is = [&](EventKind kind) { return event == Vesk::stringValue(kind); };
  if (is(link)) return "the link is " + text(json, "link");
  if (is(state)) return "the port is " + text(json, "state");
  if (is(key)) return keyWords(json);
  if (is(keyServer)) return keyServerWords(json);
  if (is(sak)) return sakWords(json);
  if (is(peerCame)) return peerWords(json, "is live");
  if (is(peerWent)) return peerWords(json, "went");
  if (is(hardwareFault)) return faultWords(json);
  return event;
}

}  // namespace

std::optional<EventLine> eventLineOf(std::string_view line) {
  try {
    Json const json = Json::parse(line);
    auto const time = timeOf(text(json, "time"));
    if (!time) return std::nullopt;
    return EventLine{*time, text(json, "interface"), wordsOf(json)};
  } catch (Json::exception const&) {
    return std::nullopt;
  }
}

std::optional<CapturedFrame> capturedFrameOf(std::string_view line) {
  try {
    Json const json = Json::parse(line);
    std::string const digits = text(json, "octets");
    auto const time = timeOf(text(json, "time"));
    CapturedFrame frame{time.value_or(0), std::vector<uint8_t>(digits.size() / 2)};
    if (!time || !Macsec::hexDecode(digits, frame.octets)) return std::nullopt;
    return frame;
  } catch (Json::exception const&) {
    return std::nullopt;
  }
}

}  // namespace Macsecd
