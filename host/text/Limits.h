#pragma once

#include <cstddef>
#include <cstdint>

/// The limits and periods of this room, in one place. What only one class can make sense of stands
/// with that class: how a name is shortened, how a key is masked, what the history of keys
/// reserves.
namespace Macsecd::Limits {

// clang-format off
//                              name                  value      unit, and why so much
inline constexpr double         kLateness           = 1;         // s late; a process that stood still
inline constexpr double         kLastPatience       = 3600;      // s; a port that doesn't get well is left alone
inline constexpr double         kRenewal            = 1;         // s; between requests for a new key
inline constexpr uint32_t       kTellings           = 12;        // of a port within the period; a flapping link
inline constexpr double         kTellingPeriod      = 60;        // s
inline constexpr size_t         kSenders            = 8;         // remembered for each port; strangers forge them
inline constexpr size_t         kText               = 1 << 20;   // octets of a configuration or a scenario
inline constexpr unsigned       kUsualTrial         = 120;       // s; time to log in again
inline constexpr unsigned       kMostTrial          = 24 * 3600; // s; a day
inline constexpr size_t         kInterfaceName      = 64;        // octets; longer ones come from no kernel
// clang-format on

}  // namespace Macsecd::Limits
