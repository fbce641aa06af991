#pragma once

#include <cstdint>
#include <iosfwd>

#include "engine/MkaKeyServerSm.h"
#include "model/MkaActorStatus.h"

namespace Macsec {

/// Where a member stands with an actor: the drawing in MkaActorSmPeers.cpp.
enum class PeerStage : uint8_t { unknown, potential, live };

/// A live member that stands on both lists is live.
PeerStage stageOf(MkaActorStatus const& actor, Vesk::String8 const& memberIdentifier);
char const* nameOf(PeerStage stage);
std::ostream& operator<<(std::ostream& out, PeerStage stage);

/// The stages of the guard on new keys in the drawing above `MkaKeyServerSm`.
enum class GuardStage : uint8_t { disarmed, armed, armedNewSak };

GuardStage stageOf(MkaKeyServerSm const& keyServer);
char const* nameOf(GuardStage stage);
std::ostream& operator<<(std::ostream& out, GuardStage stage);

}  // namespace Macsec
