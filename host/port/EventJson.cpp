#include "host/port/EventJson.h"

namespace Macsecd {

namespace {

using Kind = EventKind;

void addPeer(PortEvent const& event, Json& json) {
  json["ckn"] = event.key;
  json["sci"] = event.sci;
  json["member-id"] = event.memberId;
}

void addKeyServer(PortEvent const& event, Json& json) {
  if (!event.key.empty()) json["ckn"] = event.key;
  json["sci"] = orNull(event.sci);
  json["is-key-server"] = event.isKeyServer;
}

void addMembers(PortEvent const& event, Json& json) {
  switch (event.kind) {
    case Kind::link:
    case Kind::state:
      json[Vesk::stringValue(event.kind)] = event.value;
      break;
    case Kind::hardwareFault:
      json["fault"] = orNull(event.value);
      break;
    case Kind::peerCame:
    case Kind::peerWent:
      addPeer(event, json);
      break;
    case Kind::key:
      json["ckn"] = orNull(event.key);
      json["role"] = orNull(event.role);
      break;
    case Kind::keyServer:
      addKeyServer(event, json);
      break;
    case Kind::sak:
      json["sak"] = orNull(event.sak);
      json["an"] = orNull(event.an);
      break;
    default:
      break;
  }
}

}  // namespace

Json eventJson(Json head, std::string const& interface, EventKind kind) {
  if (!interface.empty()) head["interface"] = interface;
  head["event"] = Vesk::stringValue(kind);
  return head;
}

Json eventJson(Json head, PortEvent const& event) {
  Json json = eventJson(std::move(head), event.interface, event.kind);
  addMembers(event, json);
  return json;
}

Json frameJson(Json head, std::string const& interface, FrameWay way) {
  Json json = eventJson(std::move(head), interface, Kind::frame);
  json["way"] = Vesk::stringValue(way);
  return json;
}

}  // namespace Macsecd
