#include "host/watch/PortTrouble.h"

namespace Macsecd {

char const* wordOf(PortTrouble trouble) {
  switch (trouble) {
    case PortTrouble::notPrincipal:
      return "not-principal";
    case PortTrouble::spentKey:
      return "spent-key";
    case PortTrouble::otherPeer:
      return "other-peer";
    case PortTrouble::peerNotReceiving:
      return "peer-not-receiving";
    case PortTrouble::waitingToSend:
      return "waiting-to-send";
    case PortTrouble::overlookedKey:
      return "overlooked-key";
  }
  return "";
}

char const* textOf(PortTrouble trouble) {
  switch (trouble) {
    case PortTrouble::notPrincipal:
      return "it has a live peer, and no principal actor";
    case PortTrouble::spentKey:
      return "it may not send with its key, and its key server gives no other one";
    case PortTrouble::otherPeer:
      return "its peer has another SCI than the one that it receives from";
    case PortTrouble::peerNotReceiving:
      return "its peer has gone over to another key, and no key is in use here";
    case PortTrouble::waitingToSend:
      return "its hardware has got the new key later than its peers";
    case PortTrouble::overlookedKey:
      return "it leads under its primary key, and uses another one";
  }
  return "";
}

}  // namespace Macsecd
