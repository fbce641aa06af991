#pragma once

#include <cstdint>
#include <functional>
#include <span>

#include "host/text/Result.h"
#include "linux/process/Descriptor.h"

namespace Linux {

/// A packet socket for the MKPDUs of one interface: that below the secured one, whose frames go out
/// and come in unprotected. It never blocks, and whatever happens to the interface, it lives on.
class EapolSocket {
 public:
  struct Counts {
    uint64_t received = 0;
    uint64_t receiveErrors = 0;
    uint64_t dropped = 0;  ///< frames that the kernel had no room for
    uint64_t sent = 0;
    uint64_t sendFailures = 0;
    Counts& operator+=(Counts const& o);
    friend bool operator==(Counts const&, Counts const&) = default;
  };
  using Receiver = std::function<void(std::span<uint8_t const>)>;

  /// The longest frame that is taken whole, in octets; of a longer one, the beginning.
  static constexpr size_t kMostOctets = 16 * 1024;

  /// Opens one on the interface with this index in the kernel.
  static Macsecd::Result<EapolSocket> openOn(int index);
  /// One over a socket that is there already.
  explicit EapolSocket(Descriptor socket) : socket_(std::move(socket)) {}

  int fd() const { return socket_.fd(); }
  /// Hands over up to `most` of the frames that have come.
  void receive(size_t most, Receiver const& receiver);
  /// True if the kernel took it.
  bool send(std::span<uint8_t const> frame);
  /// So far, from the first frame on.
  Counts const& counts();

 private:
  Descriptor socket_;
  Counts counts_;
};

}  // namespace Linux
