#include "linux/kernel/InterfaceUse.h"

#include <arpa/inet.h>
#include <fmt/format.h>
#include <linux/if_addr.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sys/socket.h>

#include <algorithm>
#include <map>
#include <set>
#include <span>
#include <system_error>

#include "host/config/DeviceName.h"
#include "linux/kernel/NetlinkSocket.h"
#include "linux/process/Limits.h"

namespace Linux {

namespace {

/// What stands on the interfaces, by their indices.
using Uses = std::map<uint32_t, std::vector<std::string>>;

/// A message about something of this kind, with its attributes.
template <class Header, uint16_t Most>
struct Parsed {
  explicit Parsed(nlmsghdr* message)
      : header(*static_cast<Header const*>(nlmsg_data(message))),
        isWhole(nlmsg_parse(message, sizeof(Header), found, Most, nullptr) >= 0) {}
  uint32_t number(int type) const {
    bool const isNumber = found[type] && nla_len(found[type]) == static_cast<int>(sizeof(uint32_t));
    return isNumber ? nla_get_u32(found[type]) : 0;
  }

  nlattr* found[Most + 1] = {};
  Header const& header;
  bool const isWhole;
};

std::string addressText(int family, nlattr* attribute) {
  char text[INET6_ADDRSTRLEN] = "";
  int const size = family == AF_INET ? sizeof(in_addr) : sizeof(in6_addr);
  if (!attribute || nla_len(attribute) != size) return {};
  return inet_ntop(family, nla_data(attribute), text, sizeof text) ? text : "";
}

template <class Header>
void ask(NetlinkSocket& route, int type, NetlinkSocket::Taker const& take) {
  NetlinkMessage message;
  nlmsg_put(message.get(), NL_AUTO_PORT, NL_AUTO_SEQ, type, 0, 0);
  message.append(Header{});
  route.dump(message, take);
}

void addAddresses(NetlinkSocket& route, Uses& uses) {
  ask<ifaddrmsg>(route, RTM_GETADDR, [&](nlmsghdr* message) {
    Parsed<ifaddrmsg, IFA_MAX> const address(message);
    if (!address.isWhole || address.header.ifa_scope >= RT_SCOPE_LINK) return;
    nlattr* const local =
        address.found[IFA_LOCAL] ? address.found[IFA_LOCAL] : address.found[IFA_ADDRESS];
    std::string const text = addressText(address.header.ifa_family, local);
    if (text.empty()) return;
    uses[address.header.ifa_index].push_back(
        fmt::format("the address {}/{}", text, address.header.ifa_prefixlen));
  });
}

// The interfaces over which it leads, with several ways too.
std::set<uint32_t> interfacesOf(Parsed<rtmsg, RTA_MAX> const& route) {
  std::set<uint32_t> interfaces = {route.number(RTA_OIF)};
  if (!route.found[RTA_MULTIPATH]) return interfaces;
  int left = nla_len(route.found[RTA_MULTIPATH]);
  for (auto* hop = static_cast<rtnexthop*>(nla_data(route.found[RTA_MULTIPATH]));
       RTNH_OK(hop, left); left -= RTNH_ALIGN(hop->rtnh_len), hop = RTNH_NEXT(hop)) {
    interfaces.insert(static_cast<uint32_t>(hop->rtnh_ifindex));
  }
  return interfaces;
}

void addRoutes(NetlinkSocket& route, Uses& uses) {
  ask<rtmsg>(route, RTM_GETROUTE, [&](nlmsghdr* message) {
    Parsed<rtmsg, RTA_MAX> const found(message);
    rtmsg const& header = found.header;
    bool const isGiven = header.rtm_type == RTN_UNICAST && header.rtm_protocol != RTPROT_KERNEL;
    if (!found.isWhole || !isGiven || (header.rtm_flags & RTM_F_CLONED) != 0) return;
    std::string const to = addressText(header.rtm_family, found.found[RTA_DST]);
    char const* const byDefault =
        header.rtm_family == AF_INET ? "the default route" : "the default route of IPv6";
    std::string const use =
        to.empty() ? byDefault : fmt::format("the route to {}/{}", to, header.rtm_dst_len);
    for (uint32_t const index : interfacesOf(found)) uses[index].push_back(use);
  });
}

void addMasters(NetlinkSocket& route, Uses& uses) {
  ask<ifinfomsg>(route, RTM_GETLINK, [&](nlmsghdr* message) {
    Parsed<ifinfomsg, IFLA_MAX> const link(message);
    if (!link.isWhole) return;
    char name[IF_NAMESIZE] = "";
    uint32_t const master = link.number(IFLA_MASTER);
    if (master != 0 && if_indextoname(master, name)) {
      uses[static_cast<uint32_t>(link.header.ifi_index)].push_back(
          fmt::format("the master {}", name));
    }
  });
}

// Of all interfaces at once: asking for each would cost as many times as much as there are.
Uses allUses() {
  Uses uses;
  NetlinkSocket route(NETLINK_ROUTE);
  addAddresses(route, uses);
  addRoutes(route, uses);
  addMasters(route, uses);
  uses.erase(0);  // routes over no interface, or over several alone
  return uses;
}

std::vector<std::string> usesOf(std::string const& interface, Uses const& all) {
  auto const found = all.find(if_nametoindex(interface.c_str()));
  return found == all.end() ? std::vector<std::string>() : found->second;
}

}  // namespace

std::vector<std::string> usesOf(std::string const& interface) {
  return usesOf(interface, allUses());
}

std::string cutOffText(Macsecd::InterfaceConfig const& interface,
                       std::vector<std::string> const& uses) {
  size_t const shown = std::min(uses.size(), Limits::kNamedUses);
  std::string named = fmt::format("{}", fmt::join(std::span(uses).first(shown), ", "));
  if (shown < uses.size()) named += fmt::format(" and {} more", uses.size() - shown);
  std::string const device =
      interface.device.empty() ? Macsecd::defaultDeviceName(interface.name) : interface.device;
  return fmt::format(
      "interface {} has {}, and nothing but MACsec and key agreement passes it; what is to be "
      "protected belongs on {}",
      interface.name, named, device);
}

std::vector<std::string> cutOffBy(std::vector<Macsecd::InterfaceConfig> const& interfaces) {
  std::vector<std::string> sentences;
  try {
    Uses const all = allUses();
    for (Macsecd::InterfaceConfig const& interface : interfaces) {
      if (interface.policy != Macsecd::SecurePolicy::mustSecure) continue;
      auto const uses = usesOf(interface.name, all);
      if (!uses.empty()) sentences.push_back(cutOffText(interface, uses));
    }
  } catch (std::system_error const&) {
    return sentences;
  }
  return sentences;
}

}  // namespace Linux
