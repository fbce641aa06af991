#include "linux/net/EapolSockets.h"

#include <sys/epoll.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

#include "linux/process/Limits.h"
#include "runtime/Trace.h"

namespace Linux {

namespace {

Vesk::TraceHandle traceHandle("EapolSockets");

}  // namespace

EapolSockets::EapolSockets(EventLoop& loop, Handlers handlers, Open open)
    : loop_(loop),
      handlers_(std::move(handlers)),
      open_(std::move(open)),
      ready_(epoll_create1(EPOLL_CLOEXEC)) {
  if (!ready_.isOpen() || !loop_.watch(ready_.fd(), [this] { receiveReady(); })) {
    throw std::system_error(errno, std::generic_category(), "packet sockets");
  }
}

EapolSockets::~EapolSockets() { loop_.forget(ready_.fd()); }

void EapolSockets::interfaceIs(Lumo::IntfId intfId, int index) {
  Entry& entry = *interfaces_.try_emplace(intfId).first;
  Interface& interface = entry.second;
  if (interface.socket && interface.index == index) return;
  close(interface);
  interface.index = index;
  open(entry);
}

void EapolSockets::interfaceDel(Lumo::IntfId intfId) {
  auto const found = interfaces_.find(intfId);
  if (found == interfaces_.end()) return;
  close(found->second);
  found->second.index = 0;
}

bool EapolSockets::open(Entry& entry) {
  auto opened = open_(entry.second.index);
  if (!opened) return refused(entry, opened.fault().text());
  auto socket = std::make_unique<EapolSocket>(*std::move(opened));
  if (!watch(entry, socket->fd())) {
    return refused(entry, std::string("watching: ") + std::strerror(errno));
  }
  entry.second.hasFailed = false;
  entry.second.socket = std::move(socket);
  return true;
}

bool EapolSockets::watch(Entry& entry, int socket) {
  epoll_event event{};
  event.events = EPOLLIN;
  event.data.ptr = &entry;
  return epoll_ctl(ready_.fd(), EPOLL_CTL_ADD, socket, &event) == 0;
}

bool EapolSockets::refused(Entry& entry, std::string const& why) {
  VESK_TRACE(3, ": ", entry.first, ": ", why);
  if (!std::exchange(entry.second.hasFailed, true)) handlers_.failed(entry.first, why);
  return false;
}

void EapolSockets::close(Interface& interface) {
  if (!interface.socket) return;
  interface.former += interface.socket->counts();
  epoll_ctl(ready_.fd(), EPOLL_CTL_DEL, interface.socket->fd(), nullptr);
  interface.socket.reset();
}

EapolSockets::Entry& EapolSockets::entryOf(epoll_event const& event) {
  return *static_cast<Entry*>(event.data.ptr);
}

// The kernel begins with those that have waited longest.
void EapolSockets::receiveReady() {
  std::array<epoll_event, Limits::kSocketsPerTurn> ready;
  int const count = epoll_wait(ready_.fd(), ready.data(), static_cast<int>(ready.size()), 0);
  for (int i = 0; i < count; ++i) {
    if (i + 1 < count) handlers_.expected(entryOf(ready[static_cast<size_t>(i) + 1]).first);
    receive(entryOf(ready[static_cast<size_t>(i)]));
  }
}

// A frame of another interface may have closed it in this turn.
void EapolSockets::receive(Entry& entry) {
  if (!entry.second.socket) return;
  entry.second.socket->receive(Limits::kFramesPerTurn, [this, intfId = entry.first](auto frame) {
    handlers_.received(intfId, frame);
  });
}

void EapolSockets::send(Lumo::IntfId intfId, std::span<uint8_t const> frame) {
  Entry& entry = *interfaces_.try_emplace(intfId).first;
  Interface& interface = entry.second;
  bool const isOpen = interface.socket || (interface.index != 0 && open(entry));
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
