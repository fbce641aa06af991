#include "lab/judge/invariants/StrangersChangeNothing.h"

#include <fmt/format.h>

namespace Lab {

void StrangersChangeNothing::acts(double, Action const& action) {
  if (auto const* restart = std::get_if<Restart>(&action.what)) forget(restart->switchName);
}

// Who isn't a peer at that moment is forgotten with the process.
void StrangersChangeNothing::forget(std::string const& switchName) {
  std::erase_if(messageNumbers_, [&](auto const& entry) {
    return std::get<0>(entry.first).switchName == switchName;
  });
}

void StrangersChangeNothing::happened(Event const& event) {
  if (std::holds_alternative<ProcessEnded>(event.what)) forget(event.switchName);
  auto const* const frame = std::get_if<FramePassed>(&event.what);
  if (!frame || frame->way != FrameWay::in) return;
  if (frame->verdict != "accepted") return lookAtRefused(event.switchName);
  if (!simulation().scenario().replayGuard) return;
  lookAtAccepted({{event.switchName, frame->interface}, *frame->ckn, *frame->memberId},
                 *frame->messageNumber);
}

void StrangersChangeNothing::lookAtRefused(std::string const& switchName) {
  uint64_t const writes = simulation().switchOf(switchName).record().refusedWrites;
  if (std::exchange(refusedWrites_[switchName], writes) == writes) return;
  breaks("a frame that is refused changes something at " + switchName);
}

void StrangersChangeNothing::lookAtAccepted(Way const& way, uint32_t messageNumber) {
  auto const [known, isNew] = messageNumbers_.try_emplace(way, messageNumber);
  if (isNew) return;
  if (messageNumber <= known->second) {
    breaks(fmt::format("{} takes message {} of member {} under {} a second time",
                       std::get<0>(way).text(), messageNumber, std::get<2>(way), std::get<1>(way)));
  }
  known->second = std::max(known->second, messageNumber);
}

}  // namespace Lab
