#include "lab/judge/invariants/NoncesOnce.h"

#include <cstring>

#include "lab/data/SecTag.h"
#include "lab/judge/invariants/Link.h"
#include "lab/world/PortView.h"

namespace Lab {

void NoncesOnce::dataSent(double, DataSent const& sent) {
  SecTag tag;
  if (sent.frame.size() < sizeof tag) return;
  std::memcpy(&tag, sent.frame.data(), sizeof tag);
  LinkEnd const end{simulation_.switchOf(sent.from.switchName),
                    Lumo::IntfId(sent.from.interface.c_str()), sent.from};
  auto const hardware = end.hardware();
  auto const sa = hardware ? hardware->txSaStatus() : nullptr;
  if (!sa) return;
  auto const server = Macsec::MemberIdentifier::parsed(sa->keyId().view());
  bool const isServed = end.owner.status() && end.owner.host().running();
  if (server && isServed &&
      end.owner.host().keyHistory().isSpent(end.intfId, {*server, sa->keyNum()})) {
    breaks(sent.from.text() + " sends with a key that is spent");
  }
  Nonce nonce{sa->keyId().charPtr(), sa->keyNum(), sciText(tag.sci()), tag.packetNumber.value()};
  if (used_.insert(std::move(nonce)).second) return;
  breaks(sent.from.text() + " sends a second frame with one packet number under one key");
}

void NoncesOnce::ended() {
  for (std::string const& repeat : simulation_.nonceRepeats()) breaks(repeat);
}

}  // namespace Lab
