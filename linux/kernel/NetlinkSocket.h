#pragma once

#include <netlink/attr.h>
#include <netlink/msg.h>
#include <netlink/netlink.h>

#include <functional>
#include <memory>
#include <string_view>

#include "linux/kernel/MacsecKernel.h"

namespace Linux {

/// A netlink message being written. Its octets are wiped at its end: some hold keys.
class NetlinkMessage {
 public:
  NetlinkMessage();
  ~NetlinkMessage();
  NetlinkMessage(NetlinkMessage const&) = delete;
  NetlinkMessage& operator=(NetlinkMessage const&) = delete;

  nl_msg* get() const { return message_; }
  /// Appends a header of fixed layout.
  template <class T>
  void append(T const& header) {
    check(nlmsg_append(message_, const_cast<T*>(&header), sizeof header, NLMSG_ALIGNTO));
  }
  void u8(int type, uint8_t v) { check(nla_put_u8(message_, type, v)); }
  void u16(int type, uint16_t v) { check(nla_put_u16(message_, type, v)); }
  void u32(int type, uint32_t v) { check(nla_put_u32(message_, type, v)); }
  void u64(int type, uint64_t v) { check(nla_put_u64(message_, type, v)); }
  void text(int type, std::string_view v);
  void octets(int type, std::span<uint8_t const> v);
  /// What `fill` writes stands within an attribute of this type.
  template <class Fill>
  void nest(int type, Fill fill) {
    nlattr* const nested = nla_nest_start(message_, type);
    check(nested ? 0 : -1);
    fill();
    nla_nest_end(message_, nested);
  }

 private:
  // A message too small for what is written into it is a mistake of this program.
  static void check(int result);
  nl_msg* message_;
};

/// A netlink socket that waits for each answer. It lives in the network namespace that its thread
/// was in when it was opened.
class NetlinkSocket {
 public:
  using Taker = std::function<void(nlmsghdr*)>;

  /// `protocol` as in netlink(7). Throws `std::system_error`.
  explicit NetlinkSocket(int protocol);

  nl_sock* get() const { return socket_.get(); }
  /// Sends a request and returns what the kernel says to it. The message's flags are set here.
  KernelAnswer ask(NetlinkMessage& message, int flags = 0);
  /// The same, of a request that is answered with more than an error: hands that to `take`.
  KernelAnswer get(NetlinkMessage& message, Taker const& take);
  /// Hands all the messages of a dump to `take`.
  KernelAnswer dump(NetlinkMessage& message, Taker const& take);

 private:
  struct SocketFree {
    void operator()(nl_sock* s) const { nl_socket_free(s); }
  };
  struct CallbackFree {
    void operator()(nl_cb* c) const { nl_cb_put(c); }
  };
  KernelAnswer exchange(NetlinkMessage& message, int flags, Taker const* take);

  std::unique_ptr<nl_sock, SocketFree> socket_;
};

}  // namespace Linux
