#pragma once

#include <map>
#include <memory>

#include "codec/FrameSink.h"
#include "linux/net/EapolSocket.h"
#include "linux/process/EventLoop.h"

namespace Linux {

/// The packet sockets of all interfaces, one each, as sources of a loop.
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
  };

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

  bool open(Lumo::IntfId intfId, Interface& interface);
  bool refused(Lumo::IntfId intfId, Interface& interface, std::string const& why);
  void close(Interface& interface);
  void receive(Lumo::IntfId intfId);

  EventLoop& loop_;
  Handlers const handlers_;
  Open const open_;
  std::map<Lumo::IntfId, Interface> interfaces_;
};

}  // namespace Linux
