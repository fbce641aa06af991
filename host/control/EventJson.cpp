#include "host/control/EventJson.h"

#include "host/text/ControlProtocol.h"
#include "host/text/TimeText.h"
#include "platform/Hex.h"
#include "runtime/World.h"

namespace Macsecd {

namespace {

using Kind = PortEventKind;

Json headOf(double time, std::string const& interface, char const* event) {
  double const wallTime = Vesk::world().wallTime() + time - Vesk::now();
  return {{"version", kControlVersion},
          {"time", timeText(wallTime)},
          {"monotonic", time},
          {"interface", interface},
          {"event", event}};
}

void addPeer(PortEvent const& event, Json& json) {
  json["ckn"] = event.key;
  json["sci"] = event.sci;
  json["member-id"] = event.memberId;
}

}  // namespace

Json jsonOf(PortEvent const& event) {
  Json json = headOf(event.time, event.interface, Vesk::stringValue(event.kind));
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
      json["sci"] = orNull(event.sci);
      json["is-key-server"] = event.isKeyServer;
      break;
    case Kind::sak:
      json["sak"] = orNull(event.sak);
      json["an"] = event.an ? Json(*event.an) : Json();
      break;
  }
  return json;
}

Json frameJson(Lumo::IntfId intfId, FrameWay way, std::span<uint8_t const> frame) {
  std::string octets(2 * frame.size(), '0');
  Macsec::hexEncode(frame, octets.data());
  Json json = headOf(Vesk::now(), intfId.stringValue().charPtr(), "frame");
  json["way"] = way == FrameWay::in ? "in" : "out";
  json["octets"] = std::move(octets);
  return json;
}

}  // namespace Macsecd
