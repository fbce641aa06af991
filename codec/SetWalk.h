#pragma once

#include <cstddef>
#include <cstdint>

#include "codec/FrameLayout.h"
#include "codec/Refusal.h"

namespace Codec {

/// One parameter set behind the basic one, as it lies in its frame.
struct SetView {
  uint8_t type = 0;
  /// Where it begins in the frame.
  size_t octet = 0;
  /// Head and body, without the zeros behind them. Of an ICV indicator the head alone: its body is
  /// the ICV, at the end of the frame.
  Octets octets;
  /// What the head says; of an ICV indicator 4 or 16.
  size_t bodyLength = 0;

  Octets body() const { return octets.subspan(4); }
  template <class Set>
  Set const& as() const {
    return *reinterpret_cast<Set const*>(octets.data());
  }
  bool isKnown() const;
};

/// Walks the parameter sets of a frame in their order and checks the length of each against what
/// remains and against the forms that its type can have. Each known set may come once.
///
///     SetWalk walk(layout);
///     while (walk.next()) use(walk.set());
///     if (walk.refusal()) ...
class SetWalk {
 public:
  /// What ends a walk early.
  enum class Checks {
    all,
    /// Only what lies outside of the frame: a damaged frame is read as far as it goes. A set may
    /// then have another size than its type.
    bounds,
  };

  explicit SetWalk(FrameLayout const& layout, Checks checks = Checks::all)
      : checks_(checks), rest_(layout.sets()), octet_(layout.setsAt) {}

  /// False at the end of the frame and at a set that is wrong.
  bool next();
  SetView const& set() const { return set_; }
  Refusal const& refusal() const { return refusal_; }

 private:
  Refusal take();
  Refusal takeIcvIndicator();
  Refusal checkIcvIndicator() const;
  Refusal checkRepeated();

  Checks const checks_;
  Octets rest_;
  size_t octet_;
  SetView set_;
  Refusal refusal_;
  uint32_t seen_ = 0;
};

/// Under which sub type the failure of a set counts.
SubType failureOf(uint8_t parameterSetType);

}  // namespace Codec
