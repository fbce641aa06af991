#pragma once

#include <sys/types.h>

#include <memory>
#include <string>
#include <variant>

#include "linux/process/Descriptor.h"

namespace Linux {

/// A Unix stream socket that listens at a path; the file goes with it.
class UnixListener {
 public:
  /// Listens there, without ever blocking; `mode` are the permissions of the file. A socket that
  /// nobody listens on any more is replaced. Otherwise returns what is wrong and what to do, with
  /// the path in front, and leaves everything as it is.
  static std::variant<UnixListener, std::string> listenAt(std::string const& path, mode_t mode);

  UnixListener(UnixListener&&) = default;
  UnixListener& operator=(UnixListener&&) = delete;
  ~UnixListener();

  int fd() const { return socket_.fd(); }
  /// The next connection, which doesn't block either; none when nobody waits.
  Descriptor accept();

 private:
  UnixListener(Descriptor socket, std::string const& path);

  Descriptor socket_;
  // Held so that there is one to spare: a connection that can't be taken would wait forever.
  Descriptor spare_;
  std::string path_;
  // Which file it made: another one at its path isn't its own.
  dev_t device_ = 0;
  ino_t inode_ = 0;
};

}  // namespace Linux
