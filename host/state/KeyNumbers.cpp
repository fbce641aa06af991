#include "host/state/KeyNumbers.h"

#include <algorithm>

namespace Macsecd {

void numberKeysOn(KeyHistory const& history, Macsec::Status& status) {
  for (Macsec::MkaPortStatus& port : status.portStatus()) {
    for (Macsec::MkaActorStatus& actor : port.actorStatus()) {
      auto const id = Macsec::MemberIdentifier::parsed(actor.msgId().view());
      if (!id) continue;
      actor.keyNumIs(std::max(actor.keyNum(), history.newest(port.intfId(), *id)));
    }
  }
}

}  // namespace Macsecd
