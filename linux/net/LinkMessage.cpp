#include "linux/net/LinkMessage.h"

#include <linux/if.h>
#include <linux/if_arp.h>
#include <linux/rtnetlink.h>
#include <netlink/attr.h>
#include <netlink/msg.h>

#include <algorithm>

namespace Linux {

namespace {

std::optional<std::string> nameOf(nlattr const* attribute) {
  if (!attribute || nla_len(attribute) < 1) return std::nullopt;
  auto const* const text = static_cast<char const*>(nla_data(attribute));
  return std::string(text, strnlen(text, static_cast<size_t>(nla_len(attribute))));
}

std::optional<Lumo::EthAddr> addrOf(nlattr const* attribute) {
  std::array<uint8_t, 6> octets;
  if (!attribute || nla_len(attribute) != static_cast<int>(octets.size())) return std::nullopt;
  std::copy_n(static_cast<uint8_t const*>(nla_data(attribute)), octets.size(), octets.begin());
  return Lumo::EthAddr(octets);
}

bool isDormant(nlattr const* state) {
  return state && nla_len(state) == 1 && nla_get_u8(state) == IF_OPER_DORMANT;
}

int masterOf(nlattr const* attribute) {
  if (!attribute || nla_len(attribute) != sizeof(uint32_t)) return 0;
  return static_cast<int>(nla_get_u32(attribute));
}

std::string kindOf(nlattr* info) {
  nlattr* attributes[IFLA_INFO_MAX + 1];
  if (!info || nla_parse_nested(attributes, IFLA_INFO_MAX, info, nullptr) < 0) return {};
  return nameOf(attributes[IFLA_INFO_KIND]).value_or("");
}

uint32_t mtuOf(nlattr const* attribute) {
  bool const isNumber = attribute && nla_len(attribute) == static_cast<int>(sizeof(uint32_t));
  return isNumber ? nla_get_u32(attribute) : 0;
}

// The carrier itself: the operational state lags behind it.
bool isUp(ifinfomsg const& info) {
  return (info.ifi_flags & IFF_UP) != 0 && (info.ifi_flags & IFF_LOWER_UP) != 0;
}

std::optional<LinkMessage> thereOf(nlmsghdr const& message, ifinfomsg const& info) {
  nlattr* attributes[IFLA_MAX + 1];
  auto* const header = const_cast<nlmsghdr*>(&message);
  if (nlmsg_parse(header, sizeof info, attributes, IFLA_MAX, nullptr) < 0) return std::nullopt;
  auto const name = nameOf(attributes[IFLA_IFNAME]);
  auto const addr = addrOf(attributes[IFLA_ADDRESS]);
  if (!name || !addr) return std::nullopt;
  bool const isSetUp = (info.ifi_flags & IFF_UP) != 0;
  return LinkMessage{true,
                     {info.ifi_index, *name, *addr, isUp(info), isSetUp,
                      isDormant(attributes[IFLA_OPERSTATE]), masterOf(attributes[IFLA_MASTER]),
                      kindOf(attributes[IFLA_LINKINFO]), mtuOf(attributes[IFLA_MTU])}};
}

}  // namespace

std::optional<LinkMessage> linkMessageOf(nlmsghdr const& message) {
  bool const isThere = message.nlmsg_type == RTM_NEWLINK;
  if (!isThere && message.nlmsg_type != RTM_DELLINK) return std::nullopt;
  if (!nlmsg_valid_hdr(&message, sizeof(ifinfomsg))) return std::nullopt;
  auto const& info = *static_cast<ifinfomsg const*>(nlmsg_data(&message));
  if (info.ifi_family != AF_UNSPEC || info.ifi_type != ARPHRD_ETHER) return std::nullopt;
  if (isThere) return thereOf(message, info);
  return LinkMessage{false, {info.ifi_index, {}, {}, false, 0}};
}

}  // namespace Linux
