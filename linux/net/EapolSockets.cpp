#include "linux/net/EapolSockets.h"

#include <utility>

#include "linux/process/Limits.h"
#include "runtime/Trace.h"

namespace Linux {

namespace {

Vesk::TraceHandle traceHandle("EapolSockets");

}  // namespace

EapolSockets::EapolSockets(EventLoop& loop, Handlers handlers, Open open)
    : loop_(loop), handlers_(std::move(handlers)), open_(std::move(open)) {}

EapolSockets::~EapolSockets() {
  for (auto& [intfId, interface] : interfaces_) close(interface);
}

void EapolSockets::interfaceIs(Lumo::IntfId intfId, int index) {
  Interface& interface = interfaces_[intfId];
  if (interface.socket && interface.index == index) return;
  close(interface);
  interface.index = index;
  open(intfId, interface);
}

void EapolSockets::interfaceDel(Lumo::IntfId intfId) {
  auto const found = interfaces_.find(intfId);
  if (found == interfaces_.end()) return;
  close(found->second);
  found->second.index = 0;
}

bool EapolSockets::open(Lumo::IntfId intfId, Interface& interface) {
  auto opened = open_(interface.index);
  if (!opened) return refused(intfId, interface, opened.fault().text());
  auto socket = std::make_unique<EapolSocket>(*std::move(opened));
  auto const watched = loop_.watch(socket->fd(), [this, intfId] { receive(intfId); });
  if (!watched) return refused(intfId, interface, watched.fault().what);
  interface.hasFailed = false;
  interface.socket = std::move(socket);
  return true;
}

bool EapolSockets::refused(Lumo::IntfId intfId, Interface& interface, std::string const& why) {
  VESK_TRACE(3, ": ", intfId, ": ", why);
  if (!std::exchange(interface.hasFailed, true)) handlers_.failed(intfId, why);
  return false;
}

void EapolSockets::close(Interface& interface) {
  if (!interface.socket) return;
  interface.former += interface.socket->counts();
  loop_.forget(interface.socket->fd());
  interface.socket.reset();
}

void EapolSockets::receive(Lumo::IntfId intfId) {
  interfaces_[intfId].socket->receive(
      Limits::kFramesPerTurn, [this, intfId](auto frame) { handlers_.received(intfId, frame); });
}

void EapolSockets::send(Lumo::IntfId intfId, std::span<uint8_t const> frame) {
  Interface& interface = interfaces_[intfId];
  bool const isOpen = interface.socket || (interface.index != 0 && open(intfId, interface));
  if (!isOpen) {
    ++interface.former.sendFailures;
  } else if (!interface.socket->send(frame)) {
    VESK_TRACE(3, ": A frame on ", intfId, " couldn't be sent");
  }
}

EapolSocket::Counts EapolSockets::counts(Lumo::IntfId intfId) const {
  auto const found = interfaces_.find(intfId);
  if (found == interfaces_.end()) return {};
  EapolSocket::Counts counts = found->second.former;
  if (found->second.socket) counts += found->second.socket->counts();
  return counts;
}

}  // namespace Linux
