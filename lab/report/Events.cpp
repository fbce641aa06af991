#include "lab/report/Events.h"

#include <nlohmann/json.hpp>
#include <ostream>

#include "host/text/JsonText.h"
#include "host/text/TimeText.h"
#include "lab/world/Clock.h"

namespace Lab {

namespace {

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

void put(Json& json, SyslogLine const& line) {
  json["event"] = "syslog";
  json["name"] = line.name;
  json["severity"] = line.severity;
  json["arguments"] = line.arguments;
  json["text"] = line.text;
}

void put(Json& json, ForwardingChanged const& changed) {
  json["event"] = "forwarding";
  json["interface"] = changed.interface;
  json["entry"] = changed.unauthorized ? Json("unauthorized") : Json();
}

void put(Json& json, PortChanged const& changed) {
  json["event"] = "state";
  json["interface"] = changed.interface;
  json["state"] = changed.state;
}

void put(Json& json, SaAsked const& asked) {
  json["event"] = "sa-asked";
  json["interface"] = asked.interface;
  putSa(json, asked.transmit, asked.an, asked.key);
}

void put(Json& json, SaInstalled const& installed) {
  json["event"] = "sa-installed";
  json["interface"] = installed.interface;
  putSa(json, installed.transmit, installed.an, installed.key);
  json["packet-number"] = installed.packetNumber;
}

void put(Json& json, PrincipalChanged const& changed) {
  json["event"] = "key";
  json["interface"] = changed.interface;
  json["ckn"] = orNull(changed.ckn);
}

void put(Json& json, KeyServerChanged const& changed) {
  json["event"] = "key-server";
  json["interface"] = changed.interface;
  json["ckn"] = changed.ckn;
  json["sci"] = orNull(changed.sci);
  json["is-key-server"] = changed.self;
}

void put(Json& json, PeersChanged const& changed) {
  json["event"] = "peers";
  json["interface"] = changed.interface;
  json["ckn"] = changed.ckn;
  json["live"] = changed.live;
  json["potential"] = changed.potential;
}

void put(Json& json, FramePassed const& frame) {
  json["event"] = frame.received ? "frame-received" : "frame-sent";
  json["interface"] = frame.interface;
  json["ckn"] = orNull(frame.ckn);
  json["member-id"] = orNull(frame.memberId);
  json["message-number"] = orNull(frame.messageNumber);
  json["length"] = frame.length;
  json["sets"] = frame.sets;
  if (frame.received) json["verdict"] = orNull(frame.verdict);
}

void put(Json& json, ProcessEnded const& ended) {
  json["event"] = "exit";
  json["status"] = ended.status;
  putTime(json, "starts-again", ended.startsAgain);
}

void put(Json& json, Reloaded const& reloaded) {
  json["event"] = "reload";
  json["file"] = reloaded.file;
  json["taken"] = reloaded.taken;
  json["mistakes"] = reloaded.diagnostics;
}

}  // namespace

void Events::happened(Event const& event) {
  Json json;
  putTime(json, "", event.time);
  json["switch"] = event.switchName;
  std::visit([&](auto const& what) { put(json, what); }, event.what);
  // Names that are no UTF-8 are shown as far as they are.
  out_ << Macsecd::jsonText(json) << '\n';
}

}  // namespace Lab
