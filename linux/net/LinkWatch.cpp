#include "linux/net/LinkWatch.h"

#include <linux/rtnetlink.h>
#include <netlink/msg.h>
#include <sys/socket.h>

#include <cerrno>
#include <limits>
#include <system_error>

#include "linux/net/LinkMessage.h"
#include "linux/process/Limits.h"
#include "runtime/Trace.h"
#include "runtime/World.h"

namespace Linux {

namespace {

Vesk::TraceHandle traceHandle("LinkWatch");

constexpr double kNever = std::numeric_limits<double>::infinity();

Descriptor newSocket() {
  Descriptor socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, NETLINK_ROUTE));
  sockaddr_nl address{};
  address.nl_family = AF_NETLINK;
  address.nl_groups = RTMGRP_LINK;
  if (!socket.isOpen() ||
      bind(socket.fd(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
    throw std::system_error(errno, std::generic_category(), "watch of the interfaces");
  }
  setsockopt(socket.fd(), SOL_SOCKET, SO_RCVBUF, &Limits::kLinkRoom, sizeof Limits::kLinkRoom);
  return socket;
}

}  // namespace

LinkWatch::LinkWatch(LinkTable& table, std::function<void()> synced)
    : table_(table),
      synced_(std::move(synced)),
      socket_(newSocket()),
      buffer_(Limits::kLinkMessage),
      nextTime_(kNever) {
  resync();
}

void LinkWatch::resync() {
  again_ = asked_ != 0;
  if (again_) return;
  nextTime_ = kNever;
  if (ask()) {
    table_.resyncBegins();
  } else {
    ++counts_.errors;
    nextTime_ = Vesk::now() + Limits::kLinkRetry;
  }
}

bool LinkWatch::ask() {
  struct {
    nlmsghdr header;
    ifinfomsg info;
  } request{};
  if (++lastRequest_ == 0) ++lastRequest_;
  request.header.nlmsg_len = sizeof request;
  request.header.nlmsg_type = RTM_GETLINK;
  request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
  request.header.nlmsg_seq = lastRequest_;
  request.info.ifi_family = AF_UNSPEC;
  if (send(socket_.fd(), &request, sizeof request, 0) != sizeof request) return false;
  asked_ = lastRequest_;
  return true;
}

void LinkWatch::run() {
  if (nextTime_ <= Vesk::now()) resync();
  uint64_t const last = counts_.messages + Limits::kLinksPerTurn;
  for (int i = 0; i < Limits::kLinkReads && counts_.messages < last && readOnce(); ++i) {
  }
}

/// False when there is nothing more to read.
bool LinkWatch::readOnce() {
  sockaddr_nl from{};
  socklen_t size = sizeof from;
  ssize_t const got = recvfrom(socket_.fd(), buffer_.data(), buffer_.size(), 0,
                               reinterpret_cast<sockaddr*>(&from), &size);
  if (got < 0) return failed(errno);
  if (from.nl_pid != 0) return true;  // not the kernel
  auto left = static_cast<int>(got);
  auto* message = reinterpret_cast<nlmsghdr*>(buffer_.data());
  for (; nlmsg_ok(message, left); message = nlmsg_next(message, &left)) take(*message);
  return true;
}

bool LinkWatch::failed(int error) {
  if (error == EINTR) return true;
  if (error == ENOBUFS) {
    ++counts_.overruns;
    lost_ = true;
    return true;
  }
  if (error == EAGAIN) {
    askForTheLost();
    return false;
  }
  ++counts_.errors;
  nextTime_ = Vesk::now() + Limits::kLinkRetry;
  return false;
}

// Not before all that came has been read: until then the kernel drops what happens without a word.
void LinkWatch::askForTheLost() {
  if (!std::exchange(lost_, false)) return;
  VESK_TRACE(1, ": Events were lost; asking for all interfaces");
  resync();
}

void LinkWatch::take(nlmsghdr const& message) {
  ++counts_.messages;
  bool const isAnswer = asked_ != 0 && message.nlmsg_seq == asked_;
  if (isAnswer && (message.nlmsg_flags & NLM_F_DUMP_INTR) != 0) again_ = true;
  if (isAnswer && message.nlmsg_type == NLMSG_DONE) return ended(true);
  if (isAnswer && message.nlmsg_type == NLMSG_ERROR) return ended(false);
  auto const news = linkMessageOf(message);
  if (!news) return;
  if (news->isThere) {
    table_.linkIs(news->link);
  } else {
    table_.linkDel(news->link.index);
  }
}

void LinkWatch::ended(bool whole) {
  asked_ = 0;
  if (!whole) {
    ++counts_.errors;
    nextTime_ = Vesk::now() + Limits::kLinkRetry;
  } else if (std::exchange(again_, false)) {
    resync();
  } else {
    ++counts_.resyncs;
    table_.resyncEnds();
    synced_();
  }
}

}  // namespace Linux
