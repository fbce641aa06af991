#pragma once

#include <array>
#include <cstdint>

namespace Lab {

/// What the faults and operations of a swarm are about.
enum class FaultProfile : uint8_t { all, wires, interfaces, hardware, processes, configurations };
inline constexpr std::array kFaultProfiles = {
    FaultProfile::all,      FaultProfile::wires,     FaultProfile::interfaces,
    FaultProfile::hardware, FaultProfile::processes, FaultProfile::configurations};

/// As an operator writes it: "wires".
constexpr char const* wordOf(FaultProfile profile) {
  constexpr std::array kWords = {"all",      "wires",     "interfaces",
                                 "hardware", "processes", "configurations"};
  return kWords[static_cast<size_t>(profile)];
}

}  // namespace Lab
