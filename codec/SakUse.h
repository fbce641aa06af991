#pragma once

#include "model/ParameterSets.h"
#include "model/SakUseSet.h"

namespace Codec {

/// Which keys the sender uses. A default `SakUseInfo` is left out.
///
///       0               1               2               3
///      +---------------+---+-+-+---+-+-+-+-+-+-+-----------------------+
///    0 | type (3)      |LAN|T|R|OAN|T|R|P|p|0|D| body length (40)      |
///      +---------------+---+-+-+---+-+-+-+-+-+-+-----------------------+
///    4 | latest key: member identifier of its key server (12)          |
///      +---------------------------------------------------------------+
///   16 | latest key: number                                            |
///      +---------------------------------------------------------------+
///   20 | latest key: lowest acceptable packet number                   |
///      +---------------------------------------------------------------+
///   24 | old key: the same three fields (20)                           |
///      +---------------------------------------------------------------+
///
/// LAN, OAN: association number of the latest and of the old key; T, R: the sender transmits, and
/// receives, under it; P, p: plain text is sent, and accepted; D: delay protection. A body of
/// length 0 is understood too: it says that no key is in use.
struct SakUse {
  using Set = Macsec::SakUseSet;
  using Key = Macsec::KeyInfo;
  using Plain = Macsec::PlainTextInfo;

  template <class Walk>
  static void latestKey(Walk&& walk) {
    walk("latest key AN", &Set::latestKeyAN, &Set::latestKeyANIs, &Key::keyAN, &Key::keyANIs);
    walk("latest key transmit", &Set::latestKeyTx, &Set::latestKeyTxIs, &Key::keyTx, &Key::keyTxIs);
    walk("latest key receive", &Set::latestKeyRx, &Set::latestKeyRxIs, &Key::keyRx, &Key::keyRxIs);
    walk("latest key server", &Set::latestKeyServerMemberIdentifier,
         &Set::latestKeyServerMemberIdentifierIs, &Key::keyServerMsgId, &Key::keyServerMsgIdIs);
    walk("latest key number", &Set::latestKeyNumber, &Set::latestKeyNumberIs, &Key::keyNum,
         &Key::keyNumIs);
    walk("latest lowest acceptable PN", &Set::llpn, &Set::llpnIs, &Key::keyLLPN, &Key::keyLLPNIs);
  }
  template <class Walk>
  static void oldKey(Walk&& walk) {
    walk("old key AN", &Set::oldKeyAN, &Set::oldKeyANIs, &Key::keyAN, &Key::keyANIs);
    walk("old key transmit", &Set::oldKeyTx, &Set::oldKeyTxIs, &Key::keyTx, &Key::keyTxIs);
    walk("old key receive", &Set::oldKeyRx, &Set::oldKeyRxIs, &Key::keyRx, &Key::keyRxIs);
    walk("old key server", &Set::oldKeyServerMemberIdentifier, &Set::oldKeyServerMemberIdentifierIs,
         &Key::keyServerMsgId, &Key::keyServerMsgIdIs);
    walk("old key number", &Set::oldKeyNumber, &Set::oldKeyNumberIs, &Key::keyNum, &Key::keyNumIs);
    walk("old lowest acceptable PN", &Set::olpn, &Set::olpnIs, &Key::keyLLPN, &Key::keyLLPNIs);
  }
  template <class Walk>
  static void plainText(Walk&& walk) {
    walk("plain transmit", &Set::plainTx, &Set::plainTxIs, &Plain::plainTx, &Plain::plainTxIs);
    walk("plain receive", &Set::plainRx, &Set::plainRxIs, &Plain::plainRx, &Plain::plainRxIs);
    walk("delay protection", &Set::delayProtect, &Set::delayProtectIs, &Plain::delayProtect,
         &Plain::delayProtectIs);
  }
};

}  // namespace Codec
