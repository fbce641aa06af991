#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "codec/FrameSink.h"
#include "runtime/Text.h"

namespace Macsecd {

/// Which way a frame goes, seen from this switch.
enum class FrameWay : uint8_t { in, out };

/// Hears of what passes through a host and stands in none of its trees. It may not end within a
/// call.
class HostTap {
 public:
  /// A frame that came in, whatever becomes of it, or that is to go out.
  virtual void framePassed(Lumo::IntfId intfId, FrameWay way, std::span<uint8_t const> frame) = 0;
  /// What keeps the hardware from doing as asked has changed; empty when nothing does any more.
  virtual void hardwareFaultChanged(Lumo::IntfId intfId, std::string const& fault) = 0;
  /// The device or the SAs of an interface stand otherwise (`Host::hardwareReport`).
  virtual void hardwareReportChanged(Lumo::IntfId intfId) = 0;

 protected:
  HostTap() = default;
  ~HostTap() = default;
};

/// Stands before the sink of the frames of a host, and tells those who listen.
class HostTaps final : public Codec::FrameSink {
 public:
  explicit HostTaps(Codec::FrameSink& sink) : sink_(sink) {}

  void tapIs(HostTap& tap) { taps_.push_back(&tap); }
  void tapDel(HostTap& tap) { std::erase(taps_, &tap); }

  void send(Lumo::IntfId intfId, std::span<uint8_t const> frame) override {
    passed(intfId, FrameWay::out, frame);
    sink_.send(intfId, frame);
  }
  void passed(Lumo::IntfId intfId, FrameWay way, std::span<uint8_t const> frame) const {
    for (HostTap* tap : taps_) tap->framePassed(intfId, way, frame);
  }
  void hardwareFaultChanged(Lumo::IntfId intfId, std::string const& fault) const {
    for (HostTap* tap : taps_) tap->hardwareFaultChanged(intfId, fault);
  }
  void hardwareReportChanged(Lumo::IntfId intfId) const {
    for (HostTap* tap : taps_) tap->hardwareReportChanged(intfId);
  }

 private:
  Codec::FrameSink& sink_;
  std::vector<HostTap*> taps_;
};

}  // namespace Macsecd

template <>
struct Vesk::EnumNames<Macsecd::FrameWay> {
  using Way = Macsecd::FrameWay;
  static constexpr std::pair<Way, char const*> names[] = {{Way::in, "in"}, {Way::out, "out"}};
};
