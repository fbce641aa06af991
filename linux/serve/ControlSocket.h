#pragma once

#include <optional>
#include <string>

#include "host/control/Control.h"
#include "linux/serve/LineProtocol.h"
#include "linux/serve/StreamServer.h"

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

  /// The loop, which runs in the world of the switch, lives longer.
  ControlSocket(EventLoop& loop, Macsecd::Host& host, Macsecd::Control::Reload reload,
                Options options);
  ControlSocket(EventLoop& loop, Macsecd::Host& host, Macsecd::Control::Reload reload);

  /// Opens the socket at this path. A fault has the path in front.
  Macsecd::Result<> listenAt(std::string const& path);

  StreamServer::Counts const& counts() const { return server_.counts(); }

 private:
  bool mayChange(SocketPeer const& peer) const;
  bool mayLook(SocketPeer const& peer) const;

  Macsecd::Control control_;
  std::optional<gid_t> const group_;
  LineProtocol protocol_;
  StreamServer server_;
};

}  // namespace Linux
