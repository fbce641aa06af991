#include "lab/report/Events.h"

#include <ostream>

#include "host/control/ControlJson.h"
#include "host/port/EventJson.h"
#include "host/text/TimeText.h"
#include "lab/world/Clock.h"

namespace Lab {

namespace {

using Macsecd::eventJson;
using Macsecd::frameJson;
using Macsecd::Json;
using Macsecd::orNull;

// The wall clock is virtual too, and begins with 1970. `what` is empty for the time of the event.
void putTime(Json& json, std::string const& what, double time) {
  json[what.empty() ? "time" : what] = Macsecd::timeText(time);
  json[what.empty() ? "monotonic" : what + "-monotonic"] = roundedTime(time);
}

void putSa(Json& json, bool transmit, uint8_t an, std::optional<KeyName> const& key) {
  json["direction"] = transmit ? "tx" : "rx";
  json["an"] = an;
  json["key-id"] = key ? Json(key->id) : Json();
  json["key-number"] = key ? Json(key->number) : Json();
}

Json jsonOf(Json head, SyslogLine const& line) {
  Json json = eventJson(std::move(head), "", EventKind::syslog);
  json["name"] = line.name;
  json["severity"] = line.severity;
  json["arguments"] = line.arguments;
  json["text"] = line.text;
  return json;
}

Json jsonOf(Json head, ForwardingChanged const& changed) {
  Json json = eventJson(std::move(head), changed.interface, EventKind::forwarding);
  json["entry"] = changed.unauthorized ? Json("unauthorized") : Json();
  return json;
}

Json jsonOf(Json head, PortEvent const& event) { return eventJson(std::move(head), event); }

Json jsonOf(Json head, SaAsked const& asked) {
  Json json = eventJson(std::move(head), asked.interface, EventKind::saAsked);
  putSa(json, asked.transmit, asked.an, asked.key);
  return json;
}

Json jsonOf(Json head, SaInstalled const& installed) {
  Json json = eventJson(std::move(head), installed.interface, EventKind::saInstalled);
  putSa(json, installed.transmit, installed.an, installed.key);
  json["packet-number"] = installed.packetNumber;
  return json;
}

Json jsonOf(Json head, PeersChanged const& changed) {
  Json json = eventJson(std::move(head), changed.interface, EventKind::peers);
  json["ckn"] = changed.ckn;
  json["live"] = changed.live;
  json["potential"] = changed.potential;
  return json;
}

Json jsonOf(Json head, FramePassed const& frame) {
  Json json = frameJson(std::move(head), frame.interface, frame.way);
  json["ckn"] = orNull(frame.ckn);
  json["member-id"] = orNull(frame.memberId);
  json["message-number"] = orNull(frame.messageNumber);
  json["length"] = frame.length;
  json["sets"] = frame.sets;
  if (frame.way == FrameWay::in) json["verdict"] = orNull(frame.verdict);
  return json;
}

Json jsonOf(Json head, ProcessEnded const& ended) {
  Json json = eventJson(std::move(head), "", EventKind::exit);
  json["status"] = ended.status;
  putTime(json, "starts-again", ended.startsAgain);
  return json;
}

Json jsonOf(Json head, Reloaded const& reloaded) {
  Json json = eventJson(std::move(head), "", EventKind::reload);
  json["file"] = reloaded.file;
  json["taken"] = reloaded.taken;
  json["mistakes"] = Json::array();
  for (auto const& diagnostic : reloaded.diagnostics) {
    json["mistakes"].push_back(Macsecd::jsonOf(diagnostic));
  }
  return json;
}

}  // namespace

void Events::happened(Event const& event) {
  Json head;
  putTime(head, "", event.time);
  head["switch"] = event.switchName;
  std::visit([&](auto const& what) { out_ << Macsecd::jsonText(jsonOf(head, what)) << '\n'; },
             event.what);
}

}  // namespace Lab
