#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "runtime/EthAddr.h"

namespace Lab {

/// What stands in an MKPDU without any key. What a damaged frame doesn't tell is left out.
struct FrameSummary {
  std::optional<std::string> ckn;  ///< hexadecimal text of its octets
  std::optional<std::string> memberId;
  std::optional<uint32_t> messageNumber;
  std::vector<std::string> sets;  ///< names of the parameter sets behind the basic one
};

/// Reads an Ethernet frame as far as it goes.
FrameSummary summaryOf(std::span<uint8_t const> frame);

}  // namespace Lab
