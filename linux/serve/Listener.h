#pragma once

#include <sys/types.h>
#include <unistd.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "linux/process/Descriptor.h"

namespace Linux {

/// Who is at the other side of a connection, as the kernel says it.
struct SocketPeer {
  uid_t user = 0;
  std::vector<gid_t> groups;  ///< its own first, then the supplementary ones
  uint64_t connection = 0;    ///< a number that no other connection of the server has or had
};

/// A stream socket that listens, without ever blocking.
class Listener {
 public:
  virtual ~Listener() = default;
  Listener(Listener const&) = delete;
  Listener& operator=(Listener const&) = delete;

  int fd() const { return socket_.fd(); }
  /// Where it listens, as it was told.
  std::string const& place() const { return place_; }
  /// The next connection, which doesn't block either; none when nobody waits.
  Descriptor accept();
  /// Nothing if the kernel doesn't say it.
  virtual std::optional<SocketPeer> peerOf(Descriptor const& connection) const = 0;

 protected:
  Listener(Descriptor socket, std::string place);

 private:
  Descriptor socket_;
  // Held so that there is one to spare: a connection that can't be taken would wait forever.
  Descriptor spare_;
  std::string const place_;
};

}  // namespace Linux
