#include "linux/serve/ControlSocket.h"

#include <grp.h>
#include <unistd.h>

#include <algorithm>

#include "host/text/ControlProtocol.h"
#include "host/text/JsonText.h"
#include "linux/process/Limits.h"
#include "linux/serve/UnixListener.h"

namespace Linux {

namespace {

std::optional<gid_t> groupNamed(std::string const& name) {
  if (name.empty()) return std::nullopt;
  group const* const found = getgrnam(name.c_str());
  return found ? std::optional(found->gr_gid) : std::nullopt;
}

std::string lineOf(Macsecd::Fault const& fault) {
  nlohmann::ordered_json const json = {{"version", Macsecd::kControlVersion},
                                       {"ok", false},
                                       {"error", fault.what},
                                       {"remedy", fault.remedy}};
  return Macsecd::jsonText(json) + "\n";
}

}  // namespace

ControlSocket::ControlSocket(EventLoop& loop, Macsecd::Host& host, Macsecd::Control::Reload reload)
    : ControlSocket(loop, host, std::move(reload), Options()) {}

ControlSocket::ControlSocket(EventLoop& loop, Macsecd::Host& host, Macsecd::Control::Reload reload,
                             Options options)
    : control_(host, {std::move(reload),
                      [this](uint64_t connection, std::string const& line) {
                        server_.push(connection, line + "\n");
                      },
                      options.trace, options.trial}),
      group_(groupNamed(options.group)),
      protocol_({[this](SocketPeer const& peer) { return mayChange(peer) || mayLook(peer); },
                 [this](SocketPeer const& peer, std::span<uint8_t> line) {
                   std::string_view const request(reinterpret_cast<char const*>(line.data()),
                                                  line.size());
                   return control_.answer(request, mayChange(peer), peer.connection) + "\n";
                 },
                 lineOf,
                 [this](SocketPeer const& peer) { control_.connectionEnded(peer.connection); },
                 [this](SocketPeer const& peer) { return control_.isToBeTold(peer.connection); }}),
      server_(loop, protocol_,
              {.maxClients = Limits::kControlClients,
               .purpose = "ask this switch",
               .maxUnread = Limits::kControlUnread}) {}

Macsecd::Result<> ControlSocket::listenAt(std::string const& path) {
  return server_.serve(listenAtPath(path, group_ ? 0666 : 0600));
}

bool ControlSocket::mayChange(SocketPeer const& peer) const {
  return peer.user == 0 || peer.user == geteuid();
}

bool ControlSocket::mayLook(SocketPeer const& peer) const {
  return group_ && std::ranges::find(peer.groups, *group_) != peer.groups.end();
}

}  // namespace Linux
