#include "host/control/Subscriptions.h"

#include "host/control/EventJson.h"
#include "host/text/JsonText.h"

namespace Macsecd {

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
  std::string const line = jsonText(jsonOf(event));
  for (auto const& [connection, intfId] : watching_) {
    if (!intfId || intfId->stringValue().view() == event.interface) tell_(connection, line);
  }
}

void Subscriptions::framePassed(Lumo::IntfId intfId, FrameWay way, std::span<uint8_t const> frame) {
  std::string line;
  for (auto const& [connection, wanted] : capturing_) {
    if (wanted != intfId) continue;
    if (line.empty()) line = jsonText(frameJson(intfId, way, frame));
    tell_(connection, line);
  }
}

}  // namespace Macsecd
