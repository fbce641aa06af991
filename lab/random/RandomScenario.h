#pragma once

#include <cstdint>
#include <string>

namespace Lab {

/// The text of a scenario of which the seed decides all: two switches or three, a few wires, keys
/// that are equal at both ends or aren't, and faults of every kind that the lab knows. Most faults
/// are repaired before the last minute.
std::string randomScenario(uint32_t seed);

}  // namespace Lab
