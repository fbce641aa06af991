#include "linux/kernel/NetlinkSocket.h"

#include <gtest/gtest.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <limits>
#include <set>

namespace {

int looks = 0;  // at what has come, without taking it
int taken = 0;

}  // namespace

// In place of the C library's, for the whole of this program.
extern "C" ssize_t recvmsg(int socket, msghdr* message, int flags) {
  ++((flags & MSG_PEEK) != 0 ? looks : taken);
  return syscall(SYS_recvmsg, socket, message, flags);
}

namespace Linux {
namespace {

std::set<int> listedLinks(NetlinkSocket& route) {
  std::set<int> links;
  NetlinkMessage message;
  nlmsg_put(message.get(), NL_AUTO_PORT, NL_AUTO_SEQ, RTM_GETLINK, 0, 0);
  message.append(ifinfomsg{});
  auto const answer = route.dump(message, [&links](nlmsghdr* header) {
    links.insert(static_cast<ifinfomsg const*>(nlmsg_data(header))->ifi_index);
  });
  EXPECT_TRUE(answer) << answer.text;
  return links;
}

TEST(NetlinkSocket, TakesEachPartOfAnAnswerWithOneCall) {
  NetlinkSocket route(NETLINK_ROUTE);
  looks = taken = 0;
  EXPECT_TRUE(listedLinks(route).contains(static_cast<int>(if_nametoindex("lo"))));
  EXPECT_GE(taken, 1);
  EXPECT_EQ(looks, 0);
}

TEST(NetlinkSocket, SaysWhyTheKernelRefuses) {
  NetlinkSocket route(NETLINK_ROUTE);
  NetlinkMessage message;
  nlmsg_put(message.get(), NL_AUTO_PORT, NL_AUTO_SEQ, RTM_DELLINK, 0, 0);
  ifinfomsg header{};
  header.ifi_index = std::numeric_limits<int>::max();  // of no link
  message.append(header);
  auto const answer = route.ask(message);
  EXPECT_FALSE(answer);
  EXPECT_NE(answer.text, "");
  EXPECT_FALSE(listedLinks(route).empty()) << "the next request goes on";
}

}  // namespace
}  // namespace Linux
