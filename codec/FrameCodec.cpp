#include "codec/FrameCodec.h"

#include <optional>
#include <utility>

#include "codec/ActorFollower.h"
#include "codec/FrameReader.h"
#include "codec/FrameWriter.h"
#include "codec/PeerLimit.h"
#include "runtime/Log.h"
#include "runtime/Trace.h"

namespace Codec {

namespace {

Vesk::TraceHandle traceHandle("Macsec");

using Macsec::Brine::MessageCounters;
using Type = Macsec::MessageCounterType;

constexpr double kLogInterval = 60;
constexpr uint8_t kByInterface = 1;

Vesk::LogHandle const MACSECD_MKPDU_REPLAYED(
    "MACSECD_MKPDU_REPLAYED", Vesk::LogSeverity::warning,
    "MKPDUs come in on interface %s that have been heard before, or after later ones",
    "Somebody sends recorded MKPDUs again, or the network duplicates frames or changes their "
    "order. They are dropped and counted (replayErr).",
    "Find out who else is on the link, and whether there is a loop.", kLogInterval, 0.0,
    kByInterface);

Vesk::LogHandle const MACSECD_KEY_WITHOUT_PROOF(
    "MACSECD_KEY_WITHOUT_PROOF", Vesk::LogSeverity::warning,
    "MKPDUs come in on interface %s that distribute a key and don't show that their sender hears "
    "this end",
    "Somebody sends recorded MKPDUs again, or the frames of this end don't arrive at the other "
    "one. They are dropped and counted (livenessErr).",
    "Find out who else is on the link, and see whether frames arrive at the other end.",
    kLogInterval, 0.0, kByInterface);

Vesk::LogHandle const MACSECD_TOO_MANY_PEERS(
    "MACSECD_TOO_MANY_PEERS", Vesk::LogSeverity::warning,
    "More than %s members are heard on interface %s; further ones are left out",
    "Somebody sends recorded MKPDUs again, or has the key and makes members up. Frames of further "
    "members are dropped and counted (tooManyPeersErr).",
    "Find out who else is on the link; if a member does it, change the key.", kLogInterval, 0.0);

void tell(Lumo::IntfId intfId, SubType subType) {
  if (subType == Reason::replayErr) Vesk::log(MACSECD_MKPDU_REPLAYED, intfId);
  if (subType == Reason::livenessErr) Vesk::log(MACSECD_KEY_WITHOUT_PROOF, intfId);
  if (subType == Reason::tooManyPeersErr) {
    Vesk::log(MACSECD_TOO_MANY_PEERS, PeerLimit::kMostPeers, intfId);
  }
}

}  // namespace

struct FrameCodec::PamManagerReactor final
    : Vesk::Reactor<Macsec::MkaPamManager, FrameCodec, PamManagerReactor> {
  using Reactor::Reactor;
  void onTxMessageInfo() override { owner().handleTxMessageInfo(); }
};

struct FrameCodec::TxMessageReactor final
    : Vesk::Reactor<Macsec::MkaMessageInfo const, FrameCodec, TxMessageReactor> {
  using Reactor::Reactor;
  void onCount() override { owner().handleTxMessage(*notifier()); }
};

struct FrameCodec::EthIntfStatusDirReactor final
    : Vesk::Reactor<Interface::EthIntfStatusDir const, FrameCodec, EthIntfStatusDirReactor> {
  using Reactor::Reactor;
  void onIntfStatus(Lumo::IntfId const& intfId) override { owner().handleEthIntfStatus(intfId); }
};

FrameCodec::FrameCodec(Vesk::Ptr<Macsec::MkaPamManager> pamManager,
                       Vesk::Ptr<Macsec::Status const> status,
                       Vesk::Ptr<Interface::EthIntfStatusDir const> ethIntfStatusDir,
                       FrameSink& sink, Vesk::Ptr<MessageCounters> counters)
    : pamManager_(std::move(pamManager)),
      sink_(sink),
      counters_(counters ? std::move(counters) : MessageCounters::inProcess("codec")),
      guard_(status),
      pamManagerReactor_(Vesk::make<PamManagerReactor>(*this, pamManager_)),
      ethIntfStatusDirReactor_(Vesk::make<EthIntfStatusDirReactor>(*this, ethIntfStatusDir)) {
  for (auto const& intf : ethIntfStatusDir->intfStatus()) handleEthIntfStatus(intf.intfId());
  actors_ = std::make_unique<ActorFollower>(
      std::move(status), ports_,
      ActorFollower::PortHandlers{
          [this](Lumo::IntfId intfId) {
            countedPortIs(intfId);
            pamManager_->mkaIntfIs(intfId);
          },
          [this](Lumo::IntfId intfId) { pamManager_->mkaIntfDel(intfId); }});
  handleTxMessageInfo();
}

FrameCodec::~FrameCodec() {
  Vesk::retire(ethIntfStatusDirReactor_);
  Vesk::retire(txMessageReactor_);
  Vesk::retire(pamManagerReactor_);
}

void FrameCodec::handleTxMessageInfo() {
  Vesk::retire(txMessageReactor_);
  txMessageReactor_ = Vesk::make<TxMessageReactor>(*this, pamManager_->txMessageInfo());
}

void FrameCodec::handleEthIntfStatus(Lumo::IntfId intfId) {
  auto const status = ethIntfStatusDirReactor_->notifier()->intfStatus(intfId);
  Port& port = countedPortIs(intfId);
  port.address.reset();
  if (status) port.address = status->ethAddr();
}

Port& FrameCodec::countedPortIs(Lumo::IntfId intfId) {
  Port& port = ports_.memberIs(intfId, intfId);
  if (!port.txCounter) port.txCounter = pamManager_->txPamCounterIs(intfId);
  if (!port.rxCounter) port.rxCounter = pamManager_->rxPamCounterIs(intfId);
  counters_->intfIs(intfId);
  return port;
}

void FrameCodec::expect(Lumo::IntfId intfId) const {
  Vesk::Home::fetch(ports_.find(intfId));
  counters_->expect(intfId);
}

// The frame stands on the stack: the entity is free for the next actor, and whatever the sink
// starts finds the codec at rest.
void FrameCodec::handleTxMessage(Macsec::MkaMessageInfo const& message) {
  Lumo::IntfId const intfId = message.intfId();
  VESK_TRACE(8, ": IntfId ", intfId);
  counters_->expect(intfId);
  std::optional<Port> stranger;
  Port* known = ports_.find(intfId);
  Port& port = known ? *known : stranger.emplace(intfId);
  FrameWriter writer(port);
  if (Refusal refusal = writer.write(message)) {
    VESK_TRACE(3, ": No MKPDU sent on ", intfId, ": octet ", refusal.octet, " ",
               std::string_view(refusal.what));
    countFailure(port, Direction::tx, refusal);
    return;
  }
  countSuccess(port, Direction::tx);
  countLeftOut(port, SubType::livePeerListErr, writer.livePeersLeftOut());
  countLeftOut(port, SubType::potentialPeerListErr, writer.potentialPeersLeftOut());
  sink_.send(intfId, writer.frame());
}

Refusal FrameCodec::receive(Lumo::IntfId intfId, std::span<uint8_t const> frame) {
  VESK_TRACE(8, ": IntfId ", intfId);
  std::optional<Port> stranger;
  Port* known = ports_.find(intfId);
  Port& port = known ? *known : stranger.emplace(intfId);
  Vesk::BesideScope const beside(known);
  FrameReader reader(port);
  Refusal refusal = reader.check(frame);
  if (!refusal) refusal = checkSender(port, reader);
  if (refusal) {
    refuse(port, refusal);
    return refusal;
  }
  port.heard.heard(reader.actor().name(), reader.sender(), reader.messageNumber());
  for (unsigned i = 0; i < reader.unknownSets(); ++i) {
    counters_->inc(intfId, Direction::rx, Type::failure, SubType::unrecognizedSetErr);
  }
  countSuccess(port, Direction::rx);
  auto const message = pamManager_->rxMessageInfo();
  PeerLimit limit(reader.actor().status());
  bool const keysAreForUs = !guardIsOn_ || !reader.distributesKey() || guard_.areKeysForUs(reader);
  reader.fill(*message, limit, keysAreForUs);
  message->countInc(1);
  return {};
}

// What can speak against a frame that is right in itself.
Refusal FrameCodec::checkSender(Port const& port, FrameReader const& reader) const {
  if (guardIsOn_) {
    if (Refusal refusal = guard_.check(port, reader)) return refusal;
  }
  PeerLimit const limit(reader.actor().status());
  if (limit.hasRoom()) return {};
  if (limit.admitsSender(reader.sender(), guard_.hasHeardUsLately(reader))) return {};
  return {Reason::tooManyPeersErr, ReplayGuard::kMemberIdentifierAt,
          "begins the member identifier of a stranger, for whom there is no room"};
}

void FrameCodec::refuse(Port const& port, Refusal const& refusal) {
  VESK_TRACE(3, ": MKPDU refused on ", port.intfId, ": octet ", refusal.octet, " ",
             std::string_view(refusal.what));
  countFailure(port, Direction::rx, refusal);
  tell(port.intfId, refusal.subType);
}

// The frame goes out and counts as sent; that it doesn't name all peers counts beside it.
void FrameCodec::countLeftOut(Port const& port, SubType list, size_t peers) {
  if (peers == 0) return;
  VESK_TRACE(3, ": MKPDU on ", port.intfId, " has no room for ", peers, " more peers: ", list);
  counters_->inc(port.intfId, Direction::tx, Type::failure, list);
}

void FrameCodec::countSuccess(Port const& port, Direction direction) {
  counters_->inc(port.intfId, direction, Type::success, SubType::none);
  auto const& counter = direction == Direction::tx ? port.txCounter : port.rxCounter;
  if (counter) counter->successInc(1);
}

void FrameCodec::countFailure(Port const& port, Direction direction, Refusal const& refusal) {
  counters_->inc(port.intfId, direction, Type::failure, refusal.subType);
  auto const& counter = direction == Direction::tx ? port.txCounter : port.rxCounter;
  if (counter) counter->failureInc(1);
}

void FrameCodec::dialectIs(Lumo::IntfId intfId, Dialect const& dialect) {
  ports_.memberIs(intfId, intfId).dialect = dialect;
}

Dialect FrameCodec::dialect(Lumo::IntfId intfId) const {
  Port const* port = ports_.find(intfId);
  return port ? port->dialect : Dialect();
}

}  // namespace Codec
