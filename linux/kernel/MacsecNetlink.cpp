#include "linux/kernel/MacsecNetlink.h"

#include <arpa/inet.h>
#include <endian.h>
#include <linux/if_link.h>
#include <linux/if_macsec.h>
#include <linux/netlink.h>
#include <netlink/genl/ctrl.h>
#include <netlink/genl/genl.h>

#include <cerrno>
#include <cstring>

#include "linux/kernel/NetlinkAttributes.h"

namespace Linux {

namespace {

HeldSa saOf(nlattr* nest) {
  NetlinkAttributes<MACSEC_SA_ATTR_MAX> const sa(nest);
  HeldSa held;
  held.an = static_cast<uint8_t>(sa.number(MACSEC_SA_ATTR_AN));
  held.on = sa.number(MACSEC_SA_ATTR_ACTIVE) != 0;
  held.packetNumber = sa.number(MACSEC_SA_ATTR_PN);
  held.ssci = ntohl(static_cast<uint32_t>(sa.number(MACSEC_SA_ATTR_SSCI)));
  if (nlattr* const id = sa[MACSEC_SA_ATTR_KEYID]; id && nla_len(id) == sizeof(KeyId)) {
    std::memcpy(held.keyId.data(), nla_data(id), held.keyId.size());
  }
  return held;
}

HeldRxSc rxScOf(nlattr* nest) {
  NetlinkAttributes<MACSEC_RXSC_ATTR_MAX> const sc(nest);
  HeldRxSc held;
  held.sci = be64toh(sc.number(MACSEC_RXSC_ATTR_SCI));
  held.on = sc.number(MACSEC_RXSC_ATTR_ACTIVE) != 0;
  sc.each(MACSEC_RXSC_ATTR_SA_LIST, [&](nlattr* sa) { held.sas.push_back(saOf(sa)); });
  NetlinkAttributes<MACSEC_RXSC_STATS_ATTR_MAX> const in(sc[MACSEC_RXSC_ATTR_STATS]);
  held.counters.unchecked = in.number(MACSEC_RXSC_STATS_ATTR_IN_PKTS_UNCHECKED);
  held.counters.delayed = in.number(MACSEC_RXSC_STATS_ATTR_IN_PKTS_DELAYED);
  held.counters.ok = in.number(MACSEC_RXSC_STATS_ATTR_IN_PKTS_OK);
  held.counters.invalid = in.number(MACSEC_RXSC_STATS_ATTR_IN_PKTS_INVALID);
  held.counters.late = in.number(MACSEC_RXSC_STATS_ATTR_IN_PKTS_LATE);
  held.counters.notValid = in.number(MACSEC_RXSC_STATS_ATTR_IN_PKTS_NOT_VALID);
  held.counters.notUsingSa = in.number(MACSEC_RXSC_STATS_ATTR_IN_PKTS_NOT_USING_SA);
  held.counters.unusedSa = in.number(MACSEC_RXSC_STATS_ATTR_IN_PKTS_UNUSED_SA);
  return held;
}

SecYCounters countersOf(nlattr* nest) {
  NetlinkAttributes<MACSEC_SECY_STATS_ATTR_MAX> const stats(nest);
  return {stats.number(MACSEC_SECY_STATS_ATTR_OUT_PKTS_UNTAGGED),
          stats.number(MACSEC_SECY_STATS_ATTR_OUT_PKTS_TOO_LONG),
          stats.number(MACSEC_SECY_STATS_ATTR_IN_PKTS_UNTAGGED),
          stats.number(MACSEC_SECY_STATS_ATTR_IN_PKTS_NO_TAG),
          stats.number(MACSEC_SECY_STATS_ATTR_IN_PKTS_BAD_TAG),
          stats.number(MACSEC_SECY_STATS_ATTR_IN_PKTS_UNKNOWN_SCI),
          stats.number(MACSEC_SECY_STATS_ATTR_IN_PKTS_NO_SCI),
          stats.number(MACSEC_SECY_STATS_ATTR_IN_PKTS_OVERRUN)};
}

void settingsOf(NetlinkAttributes<MACSEC_SECY_ATTR_MAX> const& secY, SecYSettings& out) {
  out.encrypt = secY.number(MACSEC_SECY_ATTR_ENCRYPT) != 0;
  out.protect = secY.number(MACSEC_SECY_ATTR_PROTECT) != 0;
  out.strict = secY.number(MACSEC_SECY_ATTR_VALIDATE) == MACSEC_VALIDATE_STRICT;
  out.replayProtect = secY.number(MACSEC_SECY_ATTR_REPLAY) != 0;
  out.window = static_cast<uint32_t>(secY.number(MACSEC_SECY_ATTR_WINDOW));
}

void takeSecY(nlmsghdr* header, std::vector<SecY>& out) {
  nlattr* found[MACSEC_ATTR_MAX + 1];
  if (genlmsg_parse(header, 0, found, MACSEC_ATTR_MAX, nullptr) < 0) return;
  if (!found[MACSEC_ATTR_IFINDEX]) return;
  NetlinkAttributes<MACSEC_SECY_ATTR_MAX> const secY(found[MACSEC_ATTR_SECY]);
  SecY held;
  held.index = static_cast<int>(nla_get_u32(found[MACSEC_ATTR_IFINDEX]));
  held.sci = be64toh(secY.number(MACSEC_SECY_ATTR_SCI));
  held.cipher = secY.number(MACSEC_SECY_ATTR_CIPHER_SUITE);
  held.sendSci = secY.number(MACSEC_SECY_ATTR_INC_SCI) != 0;
  held.encodingSa = static_cast<uint8_t>(secY.number(MACSEC_SECY_ATTR_ENCODING_SA));
  settingsOf(secY, held.settings);
  nlattr* one;
  int rest;
  if (found[MACSEC_ATTR_TXSA_LIST]) {
    nla_for_each_nested(one, found[MACSEC_ATTR_TXSA_LIST], rest) held.txSas.push_back(saOf(one));
  }
  if (found[MACSEC_ATTR_RXSC_LIST]) {
    nla_for_each_nested(one, found[MACSEC_ATTR_RXSC_LIST], rest) held.rxScs.push_back(rxScOf(one));
  }
  NetlinkAttributes<MACSEC_TXSC_STATS_ATTR_MAX> const sent(found[MACSEC_ATTR_TXSC_STATS]);
  held.outEncrypted = sent.number(MACSEC_TXSC_STATS_ATTR_OUT_PKTS_ENCRYPTED);
  held.counters = countersOf(found[MACSEC_ATTR_SECY_STATS]);
  out.push_back(std::move(held));
}

}  // namespace

MacsecNetlink::MacsecNetlink() : route_(NETLINK_ROUTE), generic_(NETLINK_GENERIC) {}

KernelAnswer MacsecNetlink::present() {
  if (family_ < 0) family_ = genl_ctrl_resolve(generic_.get(), MACSEC_GENL_NAME);
  if (family_ >= 0) return {};
  return {EOPNOTSUPP, "the kernel has no MACsec (its module 'macsec' can't be loaded)"};
}

// A dump that devices come or go under may be broken off: it is asked for again.
KernelAnswer MacsecNetlink::secYs(std::vector<SecY>& out) {
  if (auto answer = present(); !answer) return answer;
  KernelAnswer answer;
  for (int attempt = 0; attempt < 3; ++attempt) {
    out.clear();
    NetlinkMessage message;
    genlmsg_put(message.get(), NL_AUTO_PORT, NL_AUTO_SEQ, family_, 0, 0, MACSEC_CMD_GET_TXSC,
                MACSEC_GENL_VERSION);
    answer = generic_.dump(message, [&](nlmsghdr* header) { takeSecY(header, out); });
    if (answer.error != EINTR) break;
  }
  return checked(answer);
}

// A module that was loaded anew has another number.
KernelAnswer MacsecNetlink::checked(KernelAnswer answer) {
  if (answer.error == ENOENT || answer.error == EOPNOTSUPP) family_ = -1;
  return answer;
}

}  // namespace Linux
