#include "lab/Events.h"

#include <nlohmann/json.hpp>
#include <ostream>

#include "host/JsonText.h"
#include "lab/Clock.h"

namespace Lab {

namespace {

using Json = nlohmann::ordered_json;

template <class T>
Json orNull(std::optional<T> const& value) {
  return value ? Json(*value) : Json();
}

void putSa(Json& json, bool transmit, uint8_t an, std::optional<KeyName> const& key) {
  json["direction"] = transmit ? "tx" : "rx";
  json["an"] = an;
  json["keyId"] = key ? Json(key->id) : Json();
  json["keyNumber"] = key ? Json(key->number) : Json();
}

void put(Json& json, SyslogLine const& line) {
  json["kind"] = "syslog";
  json["name"] = line.name;
  json["severity"] = line.severity;
  json["arguments"] = line.arguments;
  json["text"] = line.text;
}

void put(Json& json, ForwardingChanged const& changed) {
  json["kind"] = "forwarding";
  json["interface"] = changed.interface;
  json["entry"] = changed.unauthorized ? Json("unauthorized") : Json();
}

void put(Json& json, PortChanged const& changed) {
  json["kind"] = "port";
  json["interface"] = changed.interface;
  json["state"] = changed.state;
}

void put(Json& json, SaAsked const& asked) {
  json["kind"] = "sa-asked";
  json["interface"] = asked.interface;
  putSa(json, asked.transmit, asked.an, asked.key);
}

void put(Json& json, SaInstalled const& installed) {
  json["kind"] = "sa-installed";
  json["interface"] = installed.interface;
  putSa(json, installed.transmit, installed.an, installed.key);
  json["packetNumber"] = installed.packetNumber;
}

void put(Json& json, PrincipalChanged const& changed) {
  json["kind"] = "principal";
  json["interface"] = changed.interface;
  json["ckn"] = orNull(changed.ckn);
}

void put(Json& json, KeyServerChanged const& changed) {
  json["kind"] = "key-server";
  json["interface"] = changed.interface;
  json["ckn"] = changed.ckn;
  json["sci"] = orNull(changed.sci);
  json["self"] = changed.self;
}

void put(Json& json, PeersChanged const& changed) {
  json["kind"] = "peers";
  json["interface"] = changed.interface;
  json["ckn"] = changed.ckn;
  json["live"] = changed.live;
  json["potential"] = changed.potential;
}

void put(Json& json, FramePassed const& frame) {
  json["kind"] = frame.received ? "frame-received" : "frame-sent";
  json["interface"] = frame.interface;
  json["ckn"] = orNull(frame.ckn);
  json["memberId"] = orNull(frame.memberId);
  json["messageNumber"] = orNull(frame.messageNumber);
  json["length"] = frame.length;
  json["sets"] = frame.sets;
  if (frame.received) json["verdict"] = orNull(frame.verdict);
}

void put(Json& json, ProcessEnded const& ended) {
  json["kind"] = "exit";
  json["status"] = ended.status;
  json["startsAgain"] = roundedTime(ended.startsAgain);
}

void put(Json& json, Reloaded const& reloaded) {
  json["kind"] = "reload";
  json["file"] = reloaded.file;
  json["taken"] = reloaded.taken;
  json["mistakes"] = reloaded.mistakes;
}

}  // namespace

void Events::happened(Happening const& happening) {
  Json json;
  json["time"] = roundedTime(happening.time);
  json["switch"] = happening.switchName;
  std::visit([&](auto const& what) { put(json, what); }, happening.what);
  // Names that are no UTF-8 are shown as far as they are.
  out_ << Macsecd::jsonText(json) << '\n';
}

}  // namespace Lab
