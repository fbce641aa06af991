#include <array>

#include "lab/FrameSummary.h"
#include "lab/Switch.h"
#include "platform/CknOctets.h"
#include "platform/Hex.h"

// The frames of a switch, and what becomes of them.

namespace Lab {

namespace {

using SubType = Codec::FrameCounters::SubType;
constexpr size_t kSubTypes = static_cast<size_t>(SubType::unrecognizedSetErr) + 1;

// Frames received on an interface: accepted, and refused by each sub type.
struct RxCounts {
  uint64_t accepted = 0;
  std::array<uint64_t, kSubTypes> refused{};
};

RxCounts rxCounts(Macsecd::Host const& host, Lumo::IntfId intfId) {
  using enum Macsec::MessageCounterDirection;
  using enum Macsec::MessageCounterType;
  RxCounts counts;
  if (!host.codec()) return counts;
  auto const& counters = host.codec()->counters();
  counts.accepted = counters.value(intfId, rx, success, SubType::none);
  for (size_t i = 0; i < kSubTypes; ++i) {
    counts.refused[i] = counters.value(intfId, rx, failure, static_cast<SubType>(i));
  }
  return counts;
}

std::string verdict(RxCounts const& before, RxCounts const& after) {
  if (after.accepted != before.accepted) return "accepted";
  for (size_t i = 0; i < kSubTypes; ++i) {
    if (after.refused[i] != before.refused[i]) return stringValue(static_cast<SubType>(i));
  }
  return "ignored";
}

}  // namespace

void Switch::receive(Lumo::IntfId intfId, std::span<uint8_t const> frame) {
  FramePassed frameReceived = passed(intfId, frame);
  frameReceived.received = true;
  heldBack_.emplace();
  inWorld([&] {
    RxCounts const before = rxCounts(*host_, intfId);
    host_->receive(intfId, frame);
    frameReceived.verdict = verdict(before, rxCounts(*host_, intfId));
  });
  if (frameReceived.verdict == "accepted") lastAccepted_[intfId].assign(frame.begin(), frame.end());
  auto const following = std::exchange(heldBack_, std::nullopt);
  tell(std::move(frameReceived));
  for (auto const& what : *following) tell(what);
}

void Switch::send(Lumo::IntfId intfId, std::span<uint8_t const> frame) {
  tell(passed(intfId, frame));
  outlets_.sent(*this, intfId, frame);
}

// A key is called as its actor here spells it, or by its octets if there is none.
FramePassed Switch::passed(Lumo::IntfId intfId, std::span<uint8_t const> frame) const {
  FrameSummary summary = summaryOf(frame);
  auto const portStatus = host_->status()->portStatus(intfId);
  if (portStatus && summary.ckn) {
    for (Macsec::MkaActorStatus& actor : portStatus->actorStatus()) {
      Macsec::CknOctets const ckn(actor.ckn().view());
      if (Macsec::hexString(ckn.octets()) != summary.ckn->c_str()) continue;
      summary.ckn = actor.ckn().charPtr();
      break;
    }
  }
  return {intfId.stringValue().charPtr(), false,        summary.ckn,  summary.memberId,
          summary.messageNumber,          frame.size(), summary.sets, std::nullopt};
}

}  // namespace Lab
