#pragma once

#include <map>
#include <memory>

#include "codec/FrameSink.h"
#include "linux/net/EapolSocket.h"
#include "linux/process/EventLoop.h"

struct epoll_event;

namespace Linux {

/// The packet sockets of all interfaces, one each, as one source of a loop: what has come on
/// several of them is taken in one turn, and whatever ends a turn is done once for all of it.
///
/// An interface whose socket can't be opened is tried again with each frame that is to go out on
/// it.
class EapolSockets final : public Codec::FrameSink {
 public:
  using Receiver = std::function<void(Lumo::IntfId, std::span<uint8_t const>)>;
  using Open = std::function<Macsecd::Result<EapolSocket>(int index)>;
  struct Handlers {
    Receiver received;
    /// A socket couldn't be opened, and why; once until one is.
    std::function<void(Lumo::IntfId, std::string const&)> failed;
    /// A frame of this interface follows the one that is handed over next; may be left out.
    std::function<void(Lumo::IntfId)> expected = [](Lumo::IntfId) {};
  };

  /// Throws `std::system_error` if the kernel gives no descriptor to wait with.
  EapolSockets(EventLoop& loop, Handlers handlers, Open open = EapolSocket::openOn);
  ~EapolSockets() override;

  /// The interface has this index in the kernel: another one makes its socket anew.
  void interfaceIs(Lumo::IntfId intfId, int index);
  void interfaceDel(Lumo::IntfId intfId);
  void send(Lumo::IntfId intfId, std::span<uint8_t const> frame) override;

  /// Of all sockets that the interface has had.
  EapolSocket::Counts counts(Lumo::IntfId intfId) const;

 private:
  struct Interface {
    int index = 0;
    std::unique_ptr<EapolSocket> socket;
    EapolSocket::Counts former;  ///< of its sockets before
    bool hasFailed = false;
  };

  using Interfaces = std::map<Lumo::IntfId, Interface>;
  using Entry = Interfaces::value_type;

  static Entry& entryOf(epoll_event const& event);
  bool open(Entry& entry);
  bool watch(Entry& entry, int socket);
  bool refused(Entry& entry, std::string const& why);
  void close(Interface& interface);
  void receiveReady();
  void receive(Entry& entry);

  EventLoop& loop_;
  Handlers const handlers_;
  Open const open_;
  Descriptor const ready_;  ///< readable when one of the sockets is
  Interfaces interfaces_;   // an entry stays where it is
};

}  // namespace Linux
