#include <arpa/inet.h>
#include <endian.h>
#include <linux/if.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>

#include <cerrno>

#include "linux/kernel/MacsecNetlink.h"
#include "linux/kernel/NetlinkAttributes.h"

namespace Linux {

namespace {

constexpr char const* kKind = "macsec";
constexpr char const* kMark = "macsecd";  // as "alias" in what 'ip link' shows

ifinfomsg linkHeader(int index) {
  ifinfomsg header{};
  header.ifi_family = AF_UNSPEC;
  header.ifi_index = index;
  return header;
}

void begin(NetlinkMessage& message, int type, ifinfomsg const& header) {
  nlmsg_put(message.get(), NL_AUTO_PORT, NL_AUTO_SEQ, type, 0, 0);
  message.append(header);
}

void putSettings(NetlinkMessage& message, SecYSettings const& settings) {
  message.u8(IFLA_MACSEC_ENCRYPT, settings.encrypt);
  message.u8(IFLA_MACSEC_PROTECT, settings.protect);
  message.u8(IFLA_MACSEC_VALIDATION,
             settings.strict ? MACSEC_VALIDATE_STRICT : MACSEC_VALIDATE_CHECK);
  if (settings.replayProtect) message.u32(IFLA_MACSEC_WINDOW, settings.window);
  message.u8(IFLA_MACSEC_REPLAY_PROTECT, settings.replayProtect);
}

// A device that doesn't send its SCI takes none but that of its address.
void putSci(NetlinkMessage& message, NewSecY const& secY) {
  if (secY.sendSci) {
    message.u64(IFLA_MACSEC_SCI, htobe64(secY.sci));
  } else {
    message.u16(IFLA_MACSEC_PORT, htons(static_cast<uint16_t>(secY.sci & 0xffff)));
  }
}

template <class Fill>
void putInfo(NetlinkMessage& message, Fill fill) {
  message.nest(IFLA_LINKINFO, [&] {
    message.text(IFLA_INFO_KIND, kKind);
    message.nest(IFLA_INFO_DATA, fill);
  });
}

struct ToldLink {
  MacsecLink link;
  nlattr* data;  // of its kind; may be null
};

// Nothing of a device of another kind.
std::optional<ToldLink> toldIn(nlmsghdr* header) {
  nlattr* found[IFLA_MAX + 1];
  if (nlmsg_parse(header, sizeof(ifinfomsg), found, IFLA_MAX, nullptr) < 0) return {};
  if (!found[IFLA_LINKINFO] || !found[IFLA_IFNAME] || !found[IFLA_LINK]) return {};
  NetlinkAttributes<IFLA_INFO_MAX> const info(found[IFLA_LINKINFO]);
  if (!info[IFLA_INFO_KIND] || nla_strcmp(info[IFLA_INFO_KIND], kKind) != 0) return {};
  auto const& link = *static_cast<ifinfomsg const*>(nlmsg_data(header));
  return ToldLink{{link.ifi_index, static_cast<int>(nla_get_u32(found[IFLA_LINK])),
                   nla_get_string(found[IFLA_IFNAME]), (link.ifi_flags & IFF_UP) != 0,
                   found[IFLA_IFALIAS] && nla_strcmp(found[IFLA_IFALIAS], kMark) == 0},
                  info[IFLA_INFO_DATA]};
}

SecY secYOf(ToldLink const& told) {
  NetlinkAttributes<IFLA_MACSEC_MAX> const data(told.data);
  SecY secY;
  secY.index = told.link.index;
  secY.sci = be64toh(data.number(IFLA_MACSEC_SCI));
  secY.cipher = data.number(IFLA_MACSEC_CIPHER_SUITE);
  secY.sendSci = data.number(IFLA_MACSEC_INC_SCI) != 0;
  secY.encodingSa = static_cast<uint8_t>(data.number(IFLA_MACSEC_ENCODING_SA));
  secY.settings.encrypt = data.number(IFLA_MACSEC_ENCRYPT) != 0;
  secY.settings.protect = data.number(IFLA_MACSEC_PROTECT) != 0;
  secY.settings.strict = data.number(IFLA_MACSEC_VALIDATION) == MACSEC_VALIDATE_STRICT;
  secY.settings.replayProtect = data.number(IFLA_MACSEC_REPLAY_PROTECT) != 0;
  secY.settings.window = static_cast<uint32_t>(data.number(IFLA_MACSEC_WINDOW));
  return secY;
}

}  // namespace

KernelAnswer MacsecNetlink::links(std::vector<MacsecLink>& out) {
  out.clear();
  NetlinkMessage message;
  begin(message, RTM_GETLINK, linkHeader(0));
  return route_.dump(message, [&](nlmsghdr* header) {
    if (auto told = toldIn(header)) out.push_back(std::move(told->link));
  });
}

KernelAnswer MacsecNetlink::device(std::string const& name, MacsecLink& link, SecY& secY) {
  NetlinkMessage message;
  begin(message, RTM_GETLINK, linkHeader(0));
  message.text(IFLA_IFNAME, name);
  bool isThere = false;
  auto answer = route_.get(message, [&](nlmsghdr* header) {
    auto const told = toldIn(header);
    if (!told) return;
    isThere = true;
    link = told->link;
    secY = secYOf(*told);
  });
  if (!answer || isThere) return answer;
  return {ENODEV, "the device is none of MACsec"};
}

KernelAnswer MacsecNetlink::secYAdd(NewSecY const& secY) {
  NetlinkMessage message;
  begin(message, RTM_NEWLINK, linkHeader(0));
  message.text(IFLA_IFNAME, secY.name);
  message.u32(IFLA_LINK, static_cast<uint32_t>(secY.parent));
  if (secY.dormant) message.u8(IFLA_LINKMODE, IF_LINK_MODE_DORMANT);
  putInfo(message, [&] {
    putSci(message, secY);
    message.u64(IFLA_MACSEC_CIPHER_SUITE, secY.cipher);
    message.u8(IFLA_MACSEC_INC_SCI, secY.sendSci);
    putSettings(message, secY.settings);
  });
  return route_.ask(message, NLM_F_CREATE | NLM_F_EXCL);
}

KernelAnswer MacsecNetlink::secYDel(int index) {
  NetlinkMessage message;
  begin(message, RTM_DELLINK, linkHeader(index));
  return route_.ask(message);
}

template <class Fill>
KernelAnswer MacsecNetlink::macsecLink(int index, Fill fill) {
  NetlinkMessage message;
  begin(message, RTM_NEWLINK, linkHeader(index));
  putInfo(message, [&] { fill(message); });
  return route_.ask(message);
}

KernelAnswer MacsecNetlink::settingsIs(int index, SecYSettings const& settings) {
  return macsecLink(index, [&](NetlinkMessage& message) { putSettings(message, settings); });
}

KernelAnswer MacsecNetlink::encodingSaIs(int index, uint8_t an) {
  return macsecLink(index, [an](NetlinkMessage& m) { m.u8(IFLA_MACSEC_ENCODING_SA, an); });
}

KernelAnswer MacsecNetlink::linkUp(int index) {
  NetlinkMessage message;
  ifinfomsg header = linkHeader(index);
  header.ifi_flags = header.ifi_change = IFF_UP;
  begin(message, RTM_NEWLINK, header);
  message.text(IFLA_IFALIAS, kMark);
  return route_.ask(message);
}

KernelAnswer MacsecNetlink::mtuIs(int index, uint32_t mtu) {
  NetlinkMessage message;
  begin(message, RTM_NEWLINK, linkHeader(index));
  message.u32(IFLA_MTU, mtu);
  return route_.ask(message);
}

KernelAnswer MacsecNetlink::authorizedIs(int index, bool authorized) {
  NetlinkMessage message;
  begin(message, RTM_NEWLINK, linkHeader(index));
  message.u8(IFLA_OPERSTATE, authorized ? IF_OPER_UP : IF_OPER_DORMANT);
  return route_.ask(message);
}

}  // namespace Linux
