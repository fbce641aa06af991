#include "host/control/Subscriptions.h"

#include "host/port/EventJson.h"
#include "host/text/ControlProtocol.h"
#include "host/text/TimeText.h"
#include "platform/Hex.h"
#include "runtime/World.h"

namespace Macsecd {

namespace {

Json headOf(double time) {
  double const wallTime = Vesk::world().wallTime() + time - Vesk::now();
  return {{"version", kControlVersion}, {"time", timeText(wallTime)}, {"monotonic", time}};
}

std::string frameLine(Lumo::IntfId intfId, FrameWay way, std::span<uint8_t const> frame) {
  std::string octets(2 * frame.size(), '0');
  Macsec::hexEncode(frame, octets.data());
  Json json = frameJson(headOf(Vesk::now()), intfId.stringValue().charPtr(), way);
  json["octets"] = std::move(octets);
  return jsonText(json);
}

}  // namespace

Subscriptions::~Subscriptions() {
  if (!capturing_.empty()) host_.tapDel(*this);
}

void Subscriptions::watch(uint64_t connection, std::optional<Lumo::IntfId> intfId) {
  watching_[connection] = intfId;
  if (!watch_) watch_.emplace(host_, [this](PortEvent const& event) { happened(event); });
}

void Subscriptions::capture(uint64_t connection, Lumo::IntfId intfId) {
  if (capturing_.empty()) host_.tapIs(*this);
  capturing_[connection] = intfId;
}

void Subscriptions::end(uint64_t connection) {
  if (watching_.erase(connection) != 0 && watching_.empty()) watch_.reset();
  if (capturing_.erase(connection) != 0 && capturing_.empty()) host_.tapDel(*this);
}

void Subscriptions::happened(PortEvent const& event) {
  std::string const line = jsonText(eventJson(headOf(event.time), event));
  for (auto const& [connection, intfId] : watching_) {
    if (!intfId || intfId->stringValue().view() == event.interface) tell_(connection, line);
  }
}

void Subscriptions::framePassed(Lumo::IntfId intfId, FrameWay way, std::span<uint8_t const> frame) {
  std::string line;
  for (auto const& [connection, wanted] : capturing_) {
    if (wanted != intfId) continue;
    if (line.empty()) line = frameLine(intfId, way, frame);
    tell_(connection, line);
  }
}

}  // namespace Macsecd
