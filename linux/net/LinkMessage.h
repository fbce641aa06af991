#pragma once

#include <optional>

#include "linux/net/LinkTable.h"

struct nlmsghdr;

namespace Linux {

/// What one message of rtnetlink says of an interface.
struct LinkMessage {
  bool isThere;  ///< false if it has gone; then of the link only the index counts
  Link link;
};

/// Reads a message, whole in memory. Nothing if it isn't about an Ethernet interface as such: those
/// of a bridge tell of its ports with the same types, and a port that leaves a bridge hasn't gone.
std::optional<LinkMessage> linkMessageOf(nlmsghdr const& message);

}  // namespace Linux
