#pragma once

#include "tests/support/Switch.h"

namespace Support {

/// A port that runs, whose actors a test steers by writing their status.
class Port : public Switch {
 public:
  static constexpr char const* kPrimary = "6162";
  static constexpr char const* kFallback = "6364";

  explicit Port(Macsec::Cak const& primary = key(kPrimary),
                Macsec::Cak const& fallback = key(kFallback, kOtherCak))
      : Switch(1) {
    Vesk::TraceHandle::streamLevelsIs("", Vesk::kAllTraceLevels);
    start(primary, fallback);
  }
  ~Port() { Vesk::TraceHandle::streamLevelsIs("", 0); }

  void keyIs(Macsec::Cak const& key) {
    in([&] { intfStatus()->keyIs(key); });
  }
  void defaultKeyIs(Macsec::Cak const& key) {
    in([&] { intfStatus()->defaultKeyIs(key); });
  }
  /// The actor succeeds, as key server or not.
  void succeed(Vesk::String8 const& ckn, bool electedSelf) {
    in([&] {
      actor(ckn)->electedSelfIs(electedSelf);
      actor(ckn)->successIs(true);
    });
  }
  void fail(Vesk::String8 const& ckn) {
    in([&] { actor(ckn)->successIs(false); });
  }
  void distSakIs(Vesk::String8 const& ckn, Macsec::Sak const& sak) {
    in([&] { actor(ckn)->distSakIs(sak); });
  }
  /// Moves the clock and fires what is due on the way.
  void runUntil(double time) {
    while (wheel->nextTime() <= time) {
      world.time = std::max(world.time, wheel->nextTime());
      in([&] { wheel->runOne(); });
    }
    world.time = time;
  }
  Vesk::String8 const& principal() const { return portSm()->principalActorCkn(); }
};

inline Macsec::Sak sak(uint8_t an = 0, uint32_t keyNum = 1,
                       char const* keyMsgId = "b1b2b3b4b5b6b7b8b9babbbc") {
  Macsec::Sak sak{Macsec::AssociationNumber(an)};
  sak.keyMsgIdIs(keyMsgId);
  sak.keyNumIs(keyNum);
  sak.keyIs("encoded");
  return sak;
}

}  // namespace Support
