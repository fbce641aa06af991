#include "codec/FrameCodec.h"

#include <utility>

#include "codec/ActorFollower.h"
#include "codec/FrameReader.h"
#include "codec/FrameWriter.h"
#include "runtime/Trace.h"

namespace Codec {

namespace {

Vesk::TraceHandle traceHandle("Macsec");

using Macsec::Brine::MessageCounters;
using Type = Macsec::MessageCounterType;

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
  Port& port = ports_.portIs(intfId);
  if (!port.txCounter) port.txCounter = pamManager_->txPamCounterIs(intfId);
  if (!port.rxCounter) port.rxCounter = pamManager_->rxPamCounterIs(intfId);
  counters_->intfIs(intfId);
  return port;
}

// The frame stands on the stack: the entity is free for the next actor, and whatever the sink
// starts finds the codec at rest.
void FrameCodec::handleTxMessage(Macsec::MkaMessageInfo const& message) {
  Lumo::IntfId const intfId = message.intfId();
  VESK_TRACE(8, ": IntfId ", intfId);
  Port const stranger(intfId);
  Port const* known = ports_.find(intfId);
  Port const& port = known ? *known : stranger;
  FrameWriter writer(port);
  if (Refusal refusal = writer.write(message)) {
    VESK_TRACE(3, ": No MKPDU sent on ", intfId, ": octet ", refusal.octet, " ",
               std::string_view(refusal.what));
    countFailure(port, Direction::tx, refusal);
    return;
  }
  countSuccess(port, Direction::tx);
  sink_.send(intfId, writer.frame());
}

Refusal FrameCodec::receive(Lumo::IntfId intfId, std::span<uint8_t const> frame) {
  VESK_TRACE(8, ": IntfId ", intfId);
  Port const stranger(intfId);
  Port const* known = ports_.find(intfId);
  Port const& port = known ? *known : stranger;
  FrameReader reader(port);
  if (Refusal refusal = reader.check(frame)) {
    VESK_TRACE(3, ": MKPDU refused on ", intfId, ": octet ", refusal.octet, " ",
               std::string_view(refusal.what));
    countFailure(port, Direction::rx, refusal);
    return refusal;
  }
  for (unsigned i = 0; i < reader.unknownSets(); ++i) {
    counters_->inc(intfId, Direction::rx, Type::failure, SubType::unrecognizedSetErr);
  }
  countSuccess(port, Direction::rx);
  auto const message = pamManager_->rxMessageInfo();
  reader.fill(*message);
  message->countInc(1);
  return {};
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
  ports_.portIs(intfId).dialect = dialect;
}

Dialect FrameCodec::dialect(Lumo::IntfId intfId) const {
  Port const* port = ports_.find(intfId);
  return port ? port->dialect : Dialect();
}

}  // namespace Codec
