#include "linux/kernel/NetlinkSocket.h"

#include <linux/netlink.h>
#include <netlink/errno.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <system_error>

#include "linux/process/Limits.h"
#include "platform/SecretOctets.h"
#include "runtime/Assert.h"

namespace Linux {

namespace {

struct Exchange {
  KernelAnswer answer;
  NetlinkSocket::Taker const* take;
  bool ended = false;
};

// The kernel's own words stand behind the header that it repeats, if it knows any.
std::string extendedText(nlmsgerr const* error) {
  auto const* const header = reinterpret_cast<nlmsghdr const*>(error) - 1;
  if (!(header->nlmsg_flags & NLM_F_ACK_TLVS)) return {};
  size_t before = sizeof *error;
  if (!(header->nlmsg_flags & NLM_F_CAPPED)) before += error->msg.nlmsg_len - NLMSG_HDRLEN;
  nlattr* found[NLMSGERR_ATTR_MAX + 1];
  auto* const first = reinterpret_cast<nlattr*>(
      reinterpret_cast<char*>(const_cast<nlmsgerr*>(error)) + NLMSG_ALIGN(before));
  int const size =
      static_cast<int>(header->nlmsg_len) - NLMSG_HDRLEN - static_cast<int>(NLMSG_ALIGN(before));
  if (size <= 0 || nla_parse(found, NLMSGERR_ATTR_MAX, first, size, nullptr) < 0) return {};
  return found[NLMSGERR_ATTR_MSG] ? nla_get_string(found[NLMSGERR_ATTR_MSG]) : "";
}

std::string wordsFor(int error, std::string const& extended) {
  std::string const words = std::generic_category().message(error);
  return extended.empty() ? words : words + ": " + extended;
}

int onError(sockaddr_nl*, nlmsgerr* error, void* arg) {
  auto& exchange = *static_cast<Exchange*>(arg);
  exchange.answer.error = -error->error;
  if (error->error) exchange.answer.text = wordsFor(-error->error, extendedText(error));
  exchange.ended = true;
  return NL_STOP;
}

int onEnd(nl_msg*, void* arg) {
  static_cast<Exchange*>(arg)->ended = true;
  return NL_STOP;
}

int onValid(nl_msg* message, void* arg) {
  auto const* const take = static_cast<Exchange*>(arg)->take;
  if (take) (*take)(nlmsg_hdr(message));
  return NL_OK;
}

void optionOn(nl_sock* socket, int option) {
  int const on = 1;
  setsockopt(nl_socket_get_fd(socket), SOL_NETLINK, option, &on, sizeof on);
}

}  // namespace

NetlinkMessage::NetlinkMessage() : message_(nlmsg_alloc()) {
  if (!message_) throw std::bad_alloc();
}

NetlinkMessage::~NetlinkMessage() {
  nlmsghdr* const header = nlmsg_hdr(message_);
  Macsec::wipe({reinterpret_cast<uint8_t*>(header), header->nlmsg_len});
  nlmsg_free(message_);
}

void NetlinkMessage::text(int type, std::string_view v) {
  check(nla_put_string(message_, type, std::string(v).c_str()));
}

void NetlinkMessage::octets(int type, std::span<uint8_t const> v) {
  check(nla_put(message_, type, static_cast<int>(v.size()), v.data()));
}

void NetlinkMessage::check(int result) { VESK_ASSERT(result >= 0); }

// Without the cap, an error comes back with the whole request: with the key. With room for any
// answer, none is looked at before it is taken.
NetlinkSocket::NetlinkSocket(int protocol) : socket_(nl_socket_alloc()) {
  if (!socket_) throw std::bad_alloc();
  if (nl_connect(socket_.get(), protocol) < 0) {
    throw std::system_error(errno, std::generic_category(), "netlink socket");
  }
  nl_socket_disable_msg_peek(socket_.get());
  nl_socket_set_msg_buf_size(socket_.get(), Limits::kLinkMessage);
  optionOn(socket_.get(), NETLINK_CAP_ACK);
  optionOn(socket_.get(), NETLINK_EXT_ACK);
}

KernelAnswer NetlinkSocket::ask(NetlinkMessage& message, int flags) {
  return exchange(message, NLM_F_REQUEST | NLM_F_ACK | flags, nullptr);
}

KernelAnswer NetlinkSocket::get(NetlinkMessage& message, Taker const& take) {
  return exchange(message, NLM_F_REQUEST | NLM_F_ACK, &take);
}

KernelAnswer NetlinkSocket::dump(NetlinkMessage& message, Taker const& take) {
  return exchange(message, NLM_F_REQUEST | NLM_F_DUMP, &take);
}

KernelAnswer NetlinkSocket::exchange(NetlinkMessage& message, int flags, Taker const* take) {
  Exchange exchange{{}, take};
  nlmsg_hdr(message.get())->nlmsg_flags = static_cast<uint16_t>(flags);
  std::unique_ptr<nl_cb, CallbackFree> const callbacks(nl_cb_alloc(NL_CB_DEFAULT));
  nl_cb_err(callbacks.get(), NL_CB_CUSTOM, onError, &exchange);
  nl_cb_set(callbacks.get(), NL_CB_VALID, NL_CB_CUSTOM, onValid, &exchange);
  nl_cb_set(callbacks.get(), NL_CB_FINISH, NL_CB_CUSTOM, onEnd, &exchange);
  nl_cb_set(callbacks.get(), NL_CB_ACK, NL_CB_CUSTOM, onEnd, &exchange);
  int result = nl_send_auto(socket_.get(), message.get());
  while (result >= 0 && !exchange.ended) {
    result = nl_recvmsgs(socket_.get(), callbacks.get());
  }
  if (result < 0 && exchange.answer) {
    int const error = result == -NLE_DUMP_INTR ? EINTR : EIO;
    exchange.answer = {error, std::string("netlink: ") + nl_geterror(result)};
  }
  return exchange.answer;
}

}  // namespace Linux
