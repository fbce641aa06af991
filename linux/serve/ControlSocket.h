#pragma once

#include <optional>
#include <string>

#include "host/control/Control.h"
#include "linux/serve/LineServer.h"

namespace Linux {

/// `Macsecd::Control` on a Unix stream socket: a request on a line, its answer on a line. Root and
/// the process's own user may change, the members of a group may look. A connection that subscribes
/// stays open and gets a line for each event.
class ControlSocket {
 public:
  struct Options {
    /// Members of this group may look; empty, or a group that isn't there, for nobody.
    std::string group = "macsec";
    /// What `trace` does; nothing can be traced if it is null.
    Macsecd::Control::Trace trace = nullptr;
    /// What `try` and `keep` go to; nothing can be tried if it is null.
    Macsecd::Trial* trial = nullptr;
  };

  ControlSocket(Macsecd::Host& host, Macsecd::Control::Reload reload, Options options);
  ControlSocket(Macsecd::Host& host, Macsecd::Control::Reload reload);

  /// Opens the socket at this path. Returns what is wrong and what to do about it.
  [[nodiscard]] std::optional<std::string> listenAt(std::string const& path);
  /// Readable when there is something to do: then `run()`, in the world of the switch.
  int fd() const { return server_.fd(); }
  void run() { server_.run(); }

  LineServer::Counts const& counts() const { return server_.counts(); }

 private:
  bool mayChange(SocketPeer const& peer) const;
  bool mayLook(SocketPeer const& peer) const;

  Macsecd::Control control_;
  std::optional<gid_t> const group_;
  LineServer server_;
};

}  // namespace Linux
