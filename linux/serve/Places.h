#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <vector>

namespace Linux {

/// A connection that holds one of a server's places, or would have one.
struct Place {
  uid_t user = 0;
  bool isOwner = false;   ///< root, or the user of the server itself
  bool isIdle = false;    ///< nothing is asked, answered or told just now
  uint64_t lastUsed = 0;  ///< the greater, the later
};

/// Which of the places, all taken, goes to a newcomer; none if it has to be turned away.
///
/// An idle one goes before one in use, one of the user who holds the most before others, and the
/// one unused for longest before others. A user never takes from one who holds no more than he
/// does, and one in use only if that brings the two closer together; never one in use of an owner.
/// An owner always gets in.
std::optional<size_t> placeGivenUp(std::vector<Place> const& places, Place const& newcomer);

}  // namespace Linux
