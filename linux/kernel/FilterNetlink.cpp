#include "linux/kernel/FilterNetlink.h"

#include <arpa/inet.h>
#include <linux/filter.h>
#include <linux/if_ether.h>
#include <linux/netlink.h>
#include <linux/pkt_cls.h>
#include <linux/pkt_sched.h>
#include <linux/rtnetlink.h>
#include <linux/tc_act/tc_gact.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <string_view>
#include <system_error>
#include <vector>

#include "linux/process/Limits.h"
#include "model/MacsecConstants.h"

namespace Linux {

namespace {

constexpr char const* kFilterKind = "bpf";
constexpr std::string_view kCookie = "macsecd";  // on the action, for who looks at it
constexpr uint32_t kHandle = 0x88e50001;
constexpr uint32_t kHandleOfOwnHooks = 0x88e50002;
constexpr int kFirstAction = 1;

constexpr sock_filter loadAncillary(int field) {
  return {BPF_LD | BPF_W | BPF_ABS, 0, 0, static_cast<uint32_t>(SKF_AD_OFF + field)};
}
// Over so many instructions if the value is this.
constexpr sock_filter skipIf(uint32_t value, size_t skip) {
  return {BPF_JMP | BPF_JEQ | BPF_K, static_cast<uint8_t>(skip), 0, value};
}
constexpr sock_filter verdict(uint32_t value) { return {BPF_RET | BPF_K, 0, 0, value}; }

constexpr uint32_t kVlanBits = 0xfff;
constexpr uint32_t kMatches = UINT32_MAX;

// Matches what is to be dropped: frames of a VLAN, and of other types. A tag that bears a priority
// alone is none of a VLAN. Its value is asked for only where there is a tag: a kernel may still
// hold that of one which it has taken away, or written into the frame behind its first type.
std::vector<sock_filter> programFor(Macsecd::EtherTypes passing) {
  passing.insert({ETH_P_MACSEC, Macsec::MacsecConstants::eapolEthType});
  size_t left = passing.size();
  std::vector<sock_filter> program = {
      loadAncillary(SKF_AD_VLAN_TAG_PRESENT),
      skipIf(0, 3),
      loadAncillary(SKF_AD_VLAN_TAG),
      {BPF_ALU | BPF_AND | BPF_K, 0, 0, kVlanBits},
      {BPF_JMP | BPF_JEQ | BPF_K, 0, static_cast<uint8_t>(left + 1), 0},
      loadAncillary(SKF_AD_PROTOCOL),
  };
  for (uint16_t const type : passing) program.push_back(skipIf(type, left--));
  program.push_back(verdict(kMatches));
  program.push_back(verdict(0));
  return program;
}

std::span<uint8_t const> octetsOf(std::vector<sock_filter> const& program) {
  return {reinterpret_cast<uint8_t const*>(program.data()), program.size() * sizeof(sock_filter)};
}

constexpr uint32_t parentOf(FilterSide side) {
  return TC_H_MAKE(TC_H_CLSACT, side == FilterSide::in ? TC_H_MIN_INGRESS : TC_H_MIN_EGRESS);
}

tcmsg headerFor(int index) {
  tcmsg header{};
  header.tcm_family = AF_UNSPEC;
  header.tcm_ifindex = index;
  return header;
}

tcmsg hooksHeader(int index) {
  tcmsg header = headerFor(index);
  header.tcm_handle = TC_H_MAKE(TC_H_CLSACT, 0);
  header.tcm_parent = TC_H_CLSACT;
  return header;
}

tcmsg filterHeader(int index, FilterSide side, bool hooksAreOurs) {
  tcmsg header = headerFor(index);
  header.tcm_parent = parentOf(side);
  header.tcm_handle = hooksAreOurs ? kHandleOfOwnHooks : kHandle;
  header.tcm_info = TC_H_MAKE(uint32_t{FilterNetlink::kPreference} << 16, htons(ETH_P_ALL));
  return header;
}

void begin(NetlinkMessage& message, int type, tcmsg const& header) {
  nlmsg_put(message.get(), NL_AUTO_PORT, NL_AUTO_SEQ, type, 0, 0);
  message.append(header);
}

std::span<uint8_t const> octetsOf(std::string_view text) {
  return {reinterpret_cast<uint8_t const*>(text.data()), text.size()};
}

void putDrop(NetlinkMessage& message) {
  tc_gact drop{};
  drop.action = TC_ACT_SHOT;
  message.text(TCA_ACT_KIND, "gact");
  message.octets(TCA_ACT_COOKIE, octetsOf(kCookie));
  message.nest(TCA_ACT_OPTIONS, [&] {
    message.octets(TCA_GACT_PARMS, {reinterpret_cast<uint8_t const*>(&drop), sizeof drop});
  });
}

nlattr* find(nlattr* nest, int type) {
  return nest ? nla_find(static_cast<nlattr*>(nla_data(nest)), nla_len(nest), type) : nullptr;
}

bool drops(nlattr* actions) {
  nlattr* const options = find(find(actions, kFirstAction), TCA_ACT_OPTIONS);
  nlattr* const gact = find(options, TCA_GACT_PARMS);
  if (!gact || nla_len(gact) < static_cast<int>(sizeof(tc_gact))) return false;
  return static_cast<tc_gact const*>(nla_data(gact))->action == TC_ACT_SHOT;
}

bool isProgram(nlattr* ops, std::span<uint8_t const> program) {
  return ops && nla_len(ops) == static_cast<int>(program.size()) &&
         std::memcmp(nla_data(ops), program.data(), program.size()) == 0;
}

bool isOurs(tcmsg const& header, char const* kind) {
  bool const isOurHandle = header.tcm_handle == kHandle || header.tcm_handle == kHandleOfOwnHooks;
  return isOurHandle && TC_H_MAJ(header.tcm_info) >> 16 == FilterNetlink::kPreference &&
         std::string_view(kind) == kFilterKind;
}

// Each place where filters stand is told too, with no handle.
void takeFilter(nlmsghdr* message, std::span<uint8_t const> program, HeldFilter& held,
                bool& hasOthers) {
  auto const& header = *static_cast<tcmsg const*>(nlmsg_data(message));
  nlattr* found[TCA_MAX + 1];
  if (nlmsg_parse(message, sizeof header, found, TCA_MAX, nullptr) < 0 || !found[TCA_KIND]) return;
  if (header.tcm_handle == 0) return;
  if (!isOurs(header, nla_get_string(found[TCA_KIND]))) {
    hasOthers = true;
    return;
  }
  held.isThere = true;
  held.hooksAreOurs = header.tcm_handle == kHandleOfOwnHooks;
  held.isWhole = header.tcm_info == filterHeader(0, FilterSide::in, false).tcm_info &&
                 isProgram(find(found[TCA_OPTIONS], TCA_BPF_OPS), program) &&
                 drops(find(found[TCA_OPTIONS], TCA_BPF_ACT));
}

void takeHooks(nlmsghdr* message, std::vector<FilterHooks>& out) {
  auto const& header = *static_cast<tcmsg const*>(nlmsg_data(message));
  nlattr* found[TCA_MAX + 1];
  if (nlmsg_parse(message, sizeof header, found, TCA_MAX, nullptr) < 0 || !found[TCA_KIND]) return;
  if (header.tcm_parent != TC_H_CLSACT) return;
  out.push_back({header.tcm_ifindex, nla_get_string(found[TCA_KIND])});
}

}  // namespace

FilterNetlink::FilterNetlink() : route_(NETLINK_ROUTE), news_(NETLINK_ROUTE) {
  if (nl_socket_add_memberships(news_.get(), RTNLGRP_TC, 0) < 0 ||
      nl_socket_set_nonblocking(news_.get()) < 0) {
    throw std::system_error(errno, std::generic_category(), "watch of the filters");
  }
}

// What was told doesn't matter, nor whether there was room for all of it.
bool FilterNetlink::hasChanged() {
  for (int i = 0; i < Limits::kFilterNews; ++i) {
    char ignored;
    ssize_t const got = recv(nl_socket_get_fd(news_.get()), &ignored, sizeof ignored, 0);
    if (got < 0 && errno != ENOBUFS && errno != EINTR) return i > 0 || errno != EAGAIN;
  }
  return true;
}

KernelAnswer FilterNetlink::hooks(std::vector<FilterHooks>& out) {
  out.clear();
  NetlinkMessage message;
  begin(message, RTM_GETQDISC, headerFor(0));
  return route_.dump(message, [&](nlmsghdr* header) { takeHooks(header, out); });
}

KernelAnswer FilterNetlink::filters(int index, Macsecd::EtherTypes const& clear, HeldFilters& out) {
  out = {};
  auto const program = programFor(clear);
  for (auto const side : {FilterSide::in, FilterSide::out}) {
    tcmsg header = headerFor(index);
    header.tcm_parent = parentOf(side);
    NetlinkMessage message;
    begin(message, RTM_GETTFILTER, header);
    HeldFilter& held = side == FilterSide::in ? out.in : out.out;
    auto answer = route_.dump(message, [&](nlmsghdr* answered) {
      takeFilter(answered, octetsOf(program), held, out.hasOthers);
    });
    if (!answer) return answer;
  }
  return {};
}

KernelAnswer FilterNetlink::hooksAdd(int index) {
  NetlinkMessage message;
  begin(message, RTM_NEWQDISC, hooksHeader(index));
  message.text(TCA_KIND, kBothSides);
  return route_.ask(message, NLM_F_CREATE | NLM_F_EXCL);
}

KernelAnswer FilterNetlink::hooksDel(int index) {
  NetlinkMessage message;
  begin(message, RTM_DELQDISC, hooksHeader(index));
  message.text(TCA_KIND, kBothSides);
  return route_.ask(message);
}

// No hardware is asked to filter: what it would let through isn't known.
KernelAnswer FilterNetlink::filterIs(int index, FilterSide side, bool hooksAreOurs,
                                     Macsecd::EtherTypes const& clear) {
  auto const program = programFor(clear);
  NetlinkMessage message;
  begin(message, RTM_NEWTFILTER, filterHeader(index, side, hooksAreOurs));
  message.text(TCA_KIND, kFilterKind);
  message.nest(TCA_OPTIONS, [&] {
    message.nest(TCA_BPF_ACT, [&] { message.nest(kFirstAction, [&] { putDrop(message); }); });
    message.u16(TCA_BPF_OPS_LEN, static_cast<uint16_t>(program.size()));
    message.octets(TCA_BPF_OPS, octetsOf(program));
    message.u32(TCA_BPF_FLAGS_GEN, TCA_CLS_FLAGS_SKIP_HW);
  });
  return route_.ask(message, NLM_F_CREATE);
}

KernelAnswer FilterNetlink::filterDel(int index, FilterSide side, bool hooksAreOurs) {
  NetlinkMessage message;
  begin(message, RTM_DELTFILTER, filterHeader(index, side, hooksAreOurs));
  message.text(TCA_KIND, kFilterKind);
  return route_.ask(message);
}

}  // namespace Linux
