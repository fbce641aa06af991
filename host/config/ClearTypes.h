#pragma once

#include <cstdint>
#include <set>
#include <string_view>
#include <variant>

#include "host/config/YamlReader.h"
#include "host/text/KeyText.h"

namespace Macsecd {

/// EtherTypes of what may pass an interface in clear beside MACsec.
using EtherTypes = std::set<uint16_t>;

/// Most of them that one interface may have.
inline constexpr size_t maxClearTypes = 16;

/// The EtherType that a word means: the name of a protocol ("lldp", "lacp", "ptp"), or a number as
/// "0x88cc". What can't or needn't pass in clear is a fault.
Result<uint16_t> clearTypeOf(std::string_view word);

/// Reads the list of an interface, which it diagnoses.
void readClearTypes(YamlReader& yaml, YAML::Node const& node, EtherTypes& types);

}  // namespace Macsecd
