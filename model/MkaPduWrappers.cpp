#include "model/MkaPduWrappers.h"

#include "model/Overlay.h"
#include "runtime/Assert.h"
#include "runtime/Reactor.h"
#include "runtime/Trace.h"

namespace Macsec {

namespace {

Vesk::TraceHandle traceHandle("Macsec");

/// The overlay at the packet's current position. Whoever makes a wrapper has made sure that the
/// packet has so many octets left.
template <class T>
T* overlayIn(Vesk::Ptr<Lumo::Pkt> const& pkt) {
  VESK_ASSERT_NAMED(pkt->remaining() >= sizeof(T), "an overlay lies within its packet");
  return overlayOn<T>(pkt->data());
}

}  // namespace

EapolWrapper::EapolWrapper(Vesk::Ptr<Lumo::Pkt> pkt) : pkt_(pkt) { handlePkt(); }

Vesk::Ptr<EapolWrapper> EapolWrapper::EapolWrapperIs(Vesk::Ptr<Lumo::Pkt> pkt) {
  return Vesk::makeActive<EapolWrapper>(pkt);
}

void EapolWrapper::handlePkt() {
  VESK_TRACE(8, "");
  eapolPkt_ = overlayIn<Eapol>(pkt_);
}

Vesk::Ptr<EapolWrapper> eapolWrapperFactory(Vesk::Ptr<Lumo::Pkt> pkt) {
  return EapolWrapper::EapolWrapperIs(pkt);
}

BasicParameterSetWrapper::BasicParameterSetWrapper(Vesk::Ptr<Lumo::Pkt> pkt) : pkt_(pkt) {
  handlePkt();
}

Vesk::Ptr<BasicParameterSetWrapper> BasicParameterSetWrapper::BasicParameterSetWrapperIs(
    Vesk::Ptr<Lumo::Pkt> pkt) {
  return Vesk::makeActive<BasicParameterSetWrapper>(pkt);
}

void BasicParameterSetWrapper::handlePkt() {
  VESK_TRACE(8, "");
  basicParameterSetPkt_ = overlayIn<BasicParameterSet>(pkt_);
}

void BasicParameterSetWrapper::addrIs(Lumo::EthAddr const& value) {
  SciParameterSet sci = basicParameterSetPkt_->sci();
  sci.addrIs(value);
  basicParameterSetPkt_->sciIs(sci);
}

void BasicParameterSetWrapper::portIdIs(Lumo::NetU16 value) {
  SciParameterSet sci = basicParameterSetPkt_->sci();
  sci.portIdIs(value);
  basicParameterSetPkt_->sciIs(sci);
}

Vesk::Ptr<BasicParameterSetWrapper> basicParameterSetWrapperFactory(Vesk::Ptr<Lumo::Pkt> pkt) {
  return BasicParameterSetWrapper::BasicParameterSetWrapperIs(pkt);
}

PeerInfoParameterWrapper::PeerInfoParameterWrapper(Vesk::Ptr<Lumo::Pkt> pkt) : pkt_(pkt) {
  handlePkt();
}

Vesk::Ptr<PeerInfoParameterWrapper> PeerInfoParameterWrapper::PeerInfoParameterWrapperIs(
    Vesk::Ptr<Lumo::Pkt> pkt) {
  return Vesk::makeActive<PeerInfoParameterWrapper>(pkt);
}

void PeerInfoParameterWrapper::handlePkt() {
  VESK_TRACE(8, "");
  peerInfoParameterPkt_ = overlayIn<PeerInfoParameter>(pkt_);
}

Vesk::Ptr<PeerInfoParameterWrapper> peerInfoParameterWrapperFactory(Vesk::Ptr<Lumo::Pkt> pkt) {
  return PeerInfoParameterWrapper::PeerInfoParameterWrapperIs(pkt);
}

PeerListSetWrapper::PeerListSetWrapper(Vesk::Ptr<Lumo::Pkt> pkt) : pkt_(pkt) { handlePkt(); }

Vesk::Ptr<PeerListSetWrapper> PeerListSetWrapper::PeerListSetWrapperIs(Vesk::Ptr<Lumo::Pkt> pkt) {
  return Vesk::makeActive<PeerListSetWrapper>(pkt);
}

void PeerListSetWrapper::handlePkt() {
  VESK_TRACE(8, "");
  peerListSetPkt_ = overlayIn<PeerListSet>(pkt_);
}

Vesk::Ptr<PeerListSetWrapper> peerListSetWrapperFactory(Vesk::Ptr<Lumo::Pkt> pkt) {
  return PeerListSetWrapper::PeerListSetWrapperIs(pkt);
}

SakUseSetWrapper::SakUseSetWrapper(Vesk::Ptr<Lumo::Pkt> pkt) : pkt_(pkt) { handlePkt(); }

Vesk::Ptr<SakUseSetWrapper> SakUseSetWrapper::SakUseSetWrapperIs(Vesk::Ptr<Lumo::Pkt> pkt) {
  return Vesk::makeActive<SakUseSetWrapper>(pkt);
}

void SakUseSetWrapper::handlePkt() {
  VESK_TRACE(8, "");
  sakUseSetPkt_ = overlayIn<SakUseSet>(pkt_);
}

Vesk::Ptr<SakUseSetWrapper> sakUseSetWrapperFactory(Vesk::Ptr<Lumo::Pkt> pkt) {
  return SakUseSetWrapper::SakUseSetWrapperIs(pkt);
}

DistSakSetWrapper::DistSakSetWrapper(Vesk::Ptr<Lumo::Pkt> pkt) : pkt_(pkt) { handlePkt(); }

Vesk::Ptr<DistSakSetWrapper> DistSakSetWrapper::DistSakSetWrapperIs(Vesk::Ptr<Lumo::Pkt> pkt) {
  return Vesk::makeActive<DistSakSetWrapper>(pkt);
}

void DistSakSetWrapper::handlePkt() {
  VESK_TRACE(8, "");
  distSakSetPkt_ = overlayIn<DistSakSet>(pkt_);
}

Vesk::Ptr<DistSakSetWrapper> distSakSetWrapperFactory(Vesk::Ptr<Lumo::Pkt> pkt) {
  return DistSakSetWrapper::DistSakSetWrapperIs(pkt);
}

}  // namespace Macsec
