#include "codec/AnsweredReports.h"

#include "model/PacketNumbers.h"

namespace Codec {

namespace {

using Macsec::KeyInfo;
using Macsec::nearlyUsedUp;

bool isAnswered(KeyInfo const& key, Macsec::Sak const& distributed) {
  bool const isOfIt =
      key.keyNum() == distributed.keyNum() && key.keyServerMsgId() == distributed.keyMsgId();
  return key.keyLLPN() >= nearlyUsedUp && !isOfIt;
}

KeyInfo lowered(KeyInfo key) {
  key.keyLLPNIs(nearlyUsedUp - 1);
  return key;
}

}  // namespace

void lowerAnswered(Macsec::SakUseInfo& report, Macsec::MkaActorStatus const& actor) {
  Macsec::Sak const& sak = actor.distSak();
  if (!actor.electedSelf() || sak.isDefault()) return;
  KeyInfo const& latest = report.latestKeyInfo();
  KeyInfo const& old = report.oldKeyInfo();
  if (isAnswered(latest, sak)) report.latestKeyInfoIs(lowered(latest));
  if (isAnswered(old, sak)) report.oldKeyInfoIs(lowered(old));
}

}  // namespace Codec
