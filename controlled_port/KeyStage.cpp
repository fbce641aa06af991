#include "controlled_port/KeyStage.h"

#include <ostream>

namespace Macsec {

// A key that is sent with before it can be received counts as sent with.
KeyStage stageOf(SakContext const& latest, SakContext const& old) {
  if (latest == SakContext()) return old == SakContext() ? KeyStage::empty : KeyStage::old;
  if (latest.txInstalled()) return KeyStage::txUp;
  if (latest.txEnabled()) return KeyStage::txProgrammed;
  return latest.rxInstalled() ? KeyStage::rxUp : KeyStage::rxProgrammed;
}

KeyStage stageOf(CpStatus const& cpStatus) {
  return stageOf(cpStatus.latestSakContext(), cpStatus.oldSakContext());
}

char const* nameOf(KeyStage stage) {
  switch (stage) {
    case KeyStage::empty:
      return "Empty";
    case KeyStage::rxProgrammed:
      return "RxProgrammed";
    case KeyStage::rxUp:
      return "RxUp";
    case KeyStage::txProgrammed:
      return "TxProgrammed";
    case KeyStage::txUp:
      return "TxUp";
    case KeyStage::old:
      return "Old";
  }
  return "?";
}

std::ostream& operator<<(std::ostream& out, KeyStage stage) { return out << nameOf(stage); }

}  // namespace Macsec
