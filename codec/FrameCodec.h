#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "codec/Dialect.h"
#include "codec/FrameSink.h"
#include "codec/Ports.h"
#include "codec/Refusal.h"
#include "codec/ReplayGuard.h"
#include "model/MkaPamManager.h"
#include "model/Status.h"
#include "platform/EthIntfStatus.h"
#include "platform/MessageCounters.h"
#include "runtime/IntfId.h"
#include "runtime/Reactor.h"

namespace Codec {

class ActorFollower;

/// MKPDUs to bytes and back: what stands between the message entities of one switch and its wires.
///
/// Out: each increment of `count` on the manager's `txMessageInfo` is one message. It is written as
/// a frame within that notification, and the frame goes to the sink.
///
/// In: `receive()` checks a frame, fills the manager's `rxMessageInfo` and increments its `count`.
/// A frame that fails a check changes no entity and allocates nothing; it is counted and traced,
/// with the octet that is wrong. Frames that are right in themselves and were recorded before are
/// kept out by the replay guard, and members beyond all measure by the limit of peers; both are
/// logged.
///
/// Keys are those of the actors in the status tree: their ciphers are set once, follow each change
/// of `ick` and `kek`, and are wiped with the actor.
class FrameCodec {
 public:
  /// Counts in `counters`; without them in a table of its own. The sink outlives the codec.
  FrameCodec(Vesk::Ptr<Macsec::MkaPamManager> pamManager, Vesk::Ptr<Macsec::Status const> status,
             Vesk::Ptr<Interface::EthIntfStatusDir const> ethIntfStatusDir, FrameSink& sink,
             Vesk::Ptr<Macsec::Brine::MessageCounters> counters = nullptr);
  ~FrameCodec();
  FrameCodec(FrameCodec const&) = delete;
  FrameCodec& operator=(FrameCodec const&) = delete;

  /// Takes a frame that came in on an interface, from its destination address to its last octet,
  /// without a frame check sequence; padding of the link may follow the MKPDU. Returns why it was
  /// refused, or nothing against it: then the receive entity has told what it holds.
  Refusal receive(Lumo::IntfId intfId, std::span<uint8_t const> frame);
  /// A frame of this interface comes soon: what it will need is fetched ahead.
  void expect(Lumo::IntfId intfId) const;

  /// Whether the replay guard stands before the engine, as it does unless this says otherwise.
  void replayGuardIs(bool on) { guardIsOn_ = on; }

  /// How frames are written on an interface from now on.
  void dialectIs(Lumo::IntfId intfId, Dialect const& dialect);
  Dialect dialect(Lumo::IntfId intfId) const;

  Macsec::Brine::MessageCounters& counters() const { return *counters_; }

 private:
  using Direction = Macsec::MessageCounterDirection;

  struct PamManagerReactor;
  struct TxMessageReactor;
  struct EthIntfStatusDirReactor;

  void handleTxMessageInfo();
  void handleTxMessage(Macsec::MkaMessageInfo const& message);
  void handleEthIntfStatus(Lumo::IntfId intfId);
  Port& countedPortIs(Lumo::IntfId intfId);
  Refusal checkSender(Port const& port, FrameReader const& reader) const;
  void refuse(Port const& port, Refusal const& refusal);
  void countLeftOut(Port const& port, SubType list, size_t peers);
  void countSuccess(Port const& port, Direction direction);
  void countFailure(Port const& port, Direction direction, Refusal const& refusal);

  Vesk::Ptr<Macsec::MkaPamManager> pamManager_;
  FrameSink& sink_;
  Vesk::Ptr<Macsec::Brine::MessageCounters> counters_;
  Ports ports_;
  ReplayGuard const guard_;
  bool guardIsOn_ = true;
  std::unique_ptr<ActorFollower> actors_;
  Vesk::Ptr<PamManagerReactor> pamManagerReactor_;
  Vesk::Ptr<TxMessageReactor> txMessageReactor_;
  Vesk::Ptr<EthIntfStatusDirReactor> ethIntfStatusDirReactor_;
};

}  // namespace Codec
