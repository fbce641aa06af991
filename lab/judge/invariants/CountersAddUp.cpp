#include "lab/judge/invariants/CountersAddUp.h"

#include <fmt/format.h>

namespace Lab {

namespace {

using Macsec::Brine::MessageCounterData;
using SubType = MessageCounterData::SubType;

uint64_t refused(MessageCounterData const& counters) {
  uint64_t sum = 0;
  for (size_t i = 1; i <= MessageCounterData::kReasons; ++i) {
    sum += counters.value(Macsec::MessageCounterDirection::rx, Macsec::MessageCounterType::failure,
                          SubType{static_cast<uint8_t>(i)});
  }
  return sum;
}

}  // namespace

void CountersAddUp::happened(Event const& event) {
  auto const* const frame = std::get_if<FramePassed>(&event.what);
  if (!frame || frame->verdict == "ignored") return;
  Frames& frames = seen_[{event.switchName, frame->interface}];
  ++(frame->way == FrameWay::out    ? frames.sent
     : frame->verdict == "accepted" ? frames.accepted
                                    : frames.refused);
}

void CountersAddUp::ended() {
  for (auto const& [port, frames] : seen_) compare(port, frames);
}

void CountersAddUp::compare(PortName const& port, Frames const& seen) {
  using enum Macsec::MessageCounterDirection;
  using enum Macsec::MessageCounterType;
  Switch& owner = simulation().switchOf(port.switchName);
  Vesk::WorldScope const scope(owner.world());
  auto const counters =
      owner.host().counters()->messageCounterData(Lumo::IntfId(port.interface.c_str()));
  auto const demand = [&](char const* what, uint64_t counted, uint64_t are) {
    if (counted == are) return;
    breaks(
        fmt::format("{} counts {} {} frames, and there are {}", port.text(), counted, what, are));
  };
  demand("sent", counters.value(tx, success, SubType::none), seen.sent);
  demand("received", counters.value(rx, success, SubType::none), seen.accepted);
  demand("refused", refused(counters), seen.refused);
}

}  // namespace Lab
