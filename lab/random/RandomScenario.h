#pragma once

#include <cstdint>
#include <string>

#include "lab/random/FaultProfile.h"

namespace Lab {

/// The text of a scenario of which the seed decides all: two switches or three, a few wires, keys
/// that are equal at both ends or aren't, and faults of every kind that the lab knows. Most faults
/// are repaired before the last minute.
std::string randomScenario(uint32_t seed);

/// One for the swarm, of which the number and the profile decide all. A random part of what could
/// happen is left out, so that rare things meet. First anything may happen; then all faults end,
/// and what can be secured has to be soon.
std::string swarmScenario(uint32_t number, FaultProfile profile = FaultProfile::all);

}  // namespace Lab
