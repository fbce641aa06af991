#include <algorithm>

#include "lab/world/FrameSummary.h"
#include "lab/world/MadeFrame.h"
#include "lab/world/Simulation.h"
#include "platform/CknOctets.h"
#include "platform/Hex.h"
#include "runtime/Assert.h"

// Frames that no switch has sent, or sends no more.

namespace Lab {

void Simulation::carryOut(SendFrame const& send) {
  WireEnd const* const at = wireAt(send.port);
  VESK_ASSERT(at);
  Switch& to = switchOf(send.port.switchName);
  Lumo::IntfId const intfId(send.port.interface.c_str());
  auto const frame = [&]() -> std::optional<Frame> {
    Vesk::WorldScope const scope(to.world());
    auto const port = to.host().status()->portStatus(intfId);
    return port ? madeFrame(to.lastAccepted(intfId), send.defect, *port) : std::nullopt;
  }();
  if (!frame || !to.isUp(intfId)) {
    std::string const text =
        "no frame is made: " + send.port.text() + " is down or has accepted none";
    for (Audience* audience : audience_) audience->acted(clock_.now, text);
    return;
  }
  for (Audience* audience : audience_) audience->captured(clock_.now, at->wire, *frame);
  to.receive(intfId, *frame);
}

namespace {

bool isOf(std::string const& ckn, std::optional<std::string> const& octets) {
  Macsec::CknOctets const name{ckn};
  return octets && Macsec::hexString(name.octets()) == Vesk::String8(*octets);
}

}  // namespace

bool Simulation::isMeant(Recorded const& recorded, Replay const& replay) {
  if (recorded.time < replay.after || recorded.time > replay.before) return false;
  if (replay.from && recorded.from != *replay.from) return false;
  FrameSummary const summary = summaryOf(recorded.frame);
  if (replay.ckn && !isOf(*replay.ckn, summary.ckn)) return false;
  return !replay.set || std::ranges::find(summary.sets, *replay.set) != summary.sets.end();
}

std::vector<Frame> Simulation::framesOf(Replay const& replay, size_t wire) const {
  std::vector<Frame> frames;
  auto const& recorded = recorded_[wire];
  for (size_t i = 0; i < recorded.size(); ++i) {
    if (replay.number ? i + 1 == *replay.number : isMeant(recorded[i], replay)) {
      frames.push_back(recorded[i].frame);
    }
  }
  if (frames.size() > 1 && replay.which == Replay::Which::first) frames.resize(1);
  if (frames.size() > 1 && replay.which == Replay::Which::last) frames = {frames.back()};
  return frames;
}

// A station on the wire sends again what it has heard.
void Simulation::carryOut(Replay const& replay) {
  WireEnd const* const at = wireAt(replay.to);
  VESK_ASSERT(at);
  Switch& to = switchOf(replay.to.switchName);
  Lumo::IntfId const intfId(replay.to.interface.c_str());
  std::vector<Frame> const frames =
      to.isUp(intfId) ? framesOf(replay, at->wire) : std::vector<Frame>();
  if (frames.empty()) {
    std::string const text =
        "nothing is sent again: " + replay.to.text() + " is down, or no such frame was recorded";
    for (Audience* audience : audience_) audience->acted(clock_.now, text);
  }
  for (Frame const& frame : frames) {
    for (Audience* audience : audience_) audience->captured(clock_.now, at->wire, frame);
    to.receive(intfId, frame);
  }
}

}  // namespace Lab
