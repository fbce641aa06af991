#include "lab/world/FrameSummary.h"
#include "lab/world/Switch.h"
#include "platform/CknOctets.h"
#include "platform/Hex.h"

// The frames of a switch, and what becomes of them.

namespace Lab {

namespace {

using Macsec::Brine::MessageCounterData;
using SubType = MessageCounterData::SubType;

// What the counters of an interface tell of the frame that came in between.
std::string verdict(MessageCounterData const& before, MessageCounterData const& after) {
  using enum Macsec::MessageCounterDirection;
  using enum Macsec::MessageCounterType;
  auto const counts = [&](Macsec::MessageCounterType type, SubType subType) {
    return after.value(rx, type, subType) != before.value(rx, type, subType);
  };
  if (counts(success, SubType::none)) return "accepted";
  for (size_t i = 1; i <= MessageCounterData::kReasons; ++i) {
    SubType const reason{static_cast<uint8_t>(i)};
    if (counts(failure, reason)) return Macsec::reasonName(reason);
  }
  return "ignored";
}

}  // namespace

void Switch::receive(Lumo::IntfId intfId, std::span<uint8_t const> frame) {
  if (!isStandingStill()) return take(intfId, frame);
  waiting_.push_back({intfId, {frame.begin(), frame.end()}});
}

// They outlive the process.
Macsec::Brine::MessageCounterData Switch::countersOf(Lumo::IntfId intfId) {
  Vesk::WorldScope const scope(world_);
  return host_->counters()->messageCounterData(intfId);
}

// They were there before any timer is looked at.
bool Switch::takeWaiting() {
  if (waiting_.empty()) return false;
  WaitingFrame const frame = std::move(waiting_.front());
  waiting_.pop_front();
  take(frame.intfId, frame.octets);
  return true;
}

void Switch::take(Lumo::IntfId intfId, std::span<uint8_t const> frame) {
  FramePassed frameReceived = passed(intfId, FrameWay::in, frame);
  heldBack_.emplace();
  uint64_t const writes = stateWrites_;
  size_t const exits = record_.exits.size();
  MessageCounterData const before = countersOf(intfId);
  inWorld([&] { host_->receive(intfId, frame); });
  frameReceived.verdict = verdict(before, countersOf(intfId));
  if (frameReceived.verdict == "accepted") {
    lastAccepted_[intfId].assign(frame.begin(), frame.end());
  } else if (record_.exits.size() == exits) {
    record_.refusedWrites += stateWrites_ - writes;
  }
  auto const following = std::exchange(heldBack_, std::nullopt);
  tell(std::move(frameReceived));
  for (auto const& what : *following) tell(what);
}

void Switch::send(Lumo::IntfId intfId, std::span<uint8_t const> frame) {
  tell(passed(intfId, FrameWay::out, frame));
  outlets_.sent(*this, intfId, frame);
}

// A key is called as its actor here spells it, or by its octets if there is none.
FramePassed Switch::passed(Lumo::IntfId intfId, FrameWay way,
                           std::span<uint8_t const> frame) const {
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
  return {intfId.stringValue().charPtr(), way,          summary.ckn,  summary.memberId,
          summary.messageNumber,          frame.size(), summary.sets, std::nullopt};
}

SecY* Switch::secY(Lumo::IntfId intfId) {
  Vesk::WorldScope const scope(world_);
  return isUp(intfId) ? hardware_->secY(intfId) : nullptr;
}

}  // namespace Lab
