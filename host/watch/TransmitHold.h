#pragma once

#include <functional>
#include <map>

#include "engine/MkaKeyServerSm.h"
#include "host/state/KeyHistory.h"
#include "host/watch/PortChanges.h"
#include "platform/IntfForwardingModel.h"
#include "runtime/TimerWheel.h"

namespace Macsecd {

/// Holds back the transmit key of a port, and closes it, while sending would repeat a nonce:
///
/// - as long as the actor in use has more than one live peer. With extended packet numbers the two
///   members of a link have the SSCIs 1 and 2; a third one has the same as another, and with it the
///   same nonces under the one SAK. The keys that are sent with meanwhile are spent, and, if this
///   switch is the key server, all others too, which it made for three;
/// - as long as the only live peer has another SCI than the one for which this end has its SSCI:
///   the peer, which comes back under a new address, may have this very SSCI now. The keys that are
///   asked for meanwhile are spent;
/// - as long as the transmit key that is asked for is spent (`KeyHistory`).
///
/// It ends with a key that isn't spent. If this switch is the key server, it makes one as soon as
/// the third member has gone. The engine goes on untouched: this acts on forwarding by an input of
/// its own, which the hardware goes by as well.
///
/// It tells the history which keys are asked for, and binds each key to the SSCI under which it is
/// asked for (`KeyHistory::bindSsci`), too, so that hardware that is late doesn't send with it
/// under another one.
class TransmitHold final : public Vesk::StateMachine, private PortListener {
 public:
  using Input = Interface::IntfForwardingModelInputDir;
  enum class Reason : uint8_t { none, tooManyMembers, otherPeer, spentKey };

  /// The state machine that decides on new SAKs for the key in use; null if there is none.
  using KeyServerOf = std::function<Vesk::Ptr<Macsec::MkaKeyServerSm>(Lumo::IntfId)>;

  /// An interface stands in `input` while its transmit key is held back. `ports` and `history` live
  /// longer.
  TransmitHold(PortChanges& ports, KeyHistory& history, Vesk::Ptr<Input> input,
               Vesk::Ptr<Zorn::TimerWheel> wheel, KeyServerOf keyServerOf);

  /// Why the transmit key of this interface is held back.
  Reason reason(Lumo::IntfId intfId) const;
  /// Whether nothing may be sent with this key.
  bool isSpent(Lumo::IntfId intfId, SakId const& sak) const;
  /// All that are held back.
  std::map<Lumo::IntfId, Reason> const& held() const { return held_; }
  /// Looks again, since a key may have been spent.
  void look(Lumo::IntfId intfId);

 private:
  struct Timer;

  void end() override;
  void portChanged(Lumo::IntfId intfId) override { look(intfId); }
  void takeUp();
  Reason reasonNow(Lumo::IntfId intfId) const;
  void askForKeys(Lumo::IntfId intfId);
  void bindKeys(Lumo::IntfId intfId);
  void spend(Lumo::IntfId intfId, Macsec::Sak const& sak);
  void spendTransmitKey(Lumo::IntfId intfId);
  void spendKeys(Lumo::IntfId intfId);
  void reasonIs(Lumo::IntfId intfId, Reason reason);
  void tell(Lumo::IntfId intfId, Reason reason);
  void handleTime();
  void renewKey(Lumo::IntfId intfId);

  PortChanges& ports_;
  KeyHistory& history_;
  Vesk::Ptr<Input> const input_;
  KeyServerOf const keyServerOf_;
  std::map<Lumo::IntfId, Reason> held_;
  Vesk::Ptr<Timer> timer_;
};

}  // namespace Macsecd
