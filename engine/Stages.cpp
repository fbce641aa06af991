#include "engine/Stages.h"

#include <ostream>

namespace Macsec {

PeerStage stageOf(MkaActorStatus const& actor, Vesk::String8 const& memberIdentifier) {
  if (actor.livePeer(memberIdentifier)) return PeerStage::live;
  return actor.potentialPeer(memberIdentifier) ? PeerStage::potential : PeerStage::unknown;
}

char const* nameOf(PeerStage stage) {
  switch (stage) {
    case PeerStage::unknown:
      return "Unknown";
    case PeerStage::potential:
      return "Potential";
    case PeerStage::live:
      return "Live";
  }
  return "?";
}

std::ostream& operator<<(std::ostream& out, PeerStage stage) { return out << nameOf(stage); }

// What is wanted counts only while the guard has to run off first.
GuardStage stageOf(MkaKeyServerSm const& keyServer) {
  if (!keyServer.mkaPeriodicTimer().isArmed()) return GuardStage::disarmed;
  return keyServer.mkaActorStatus()->newSak() ? GuardStage::armedNewSak : GuardStage::armed;
}

char const* nameOf(GuardStage stage) {
  switch (stage) {
    case GuardStage::disarmed:
      return "Guard disarmed";
    case GuardStage::armed:
      return "Guard armed";
    case GuardStage::armedNewSak:
      return "Guard armed, newSak";
  }
  return "?";
}

std::ostream& operator<<(std::ostream& out, GuardStage stage) { return out << nameOf(stage); }

}  // namespace Macsec
