#pragma once

#include <array>
#include <cstdint>
#include <set>

namespace Macsecd {

/// What keeps a port from getting well by itself, as the port doctor sees it.
enum class PortTrouble : uint8_t {
  notPrincipal,
  spentKey,
  otherPeer,
  peerNotReceiving,
  waitingToSend,
  overlookedKey
};

inline constexpr std::array kPortTroubles{PortTrouble::notPrincipal,  PortTrouble::spentKey,
                                          PortTrouble::otherPeer,     PortTrouble::peerNotReceiving,
                                          PortTrouble::waitingToSend, PortTrouble::overlookedKey};

using PortTroubles = std::set<PortTrouble>;
inline PortTroubles allPortTroubles() { return {kPortTroubles.begin(), kPortTroubles.end()}; }

/// In a word, as explanations name it.
char const* wordOf(PortTrouble trouble);
/// In a sentence, as the log tells it.
char const* textOf(PortTrouble trouble);

}  // namespace Macsecd
