#include "linux/net/LinkMessage.h"

#include <gtest/gtest.h>
#include <linux/if.h>
#include <linux/if_arp.h>
#include <linux/rtnetlink.h>

#include <cstring>
#include <vector>

namespace Linux {
namespace {

/// A message as the kernel writes it.
struct Made {
  explicit Made(uint16_t type = RTM_NEWLINK) {
    header().nlmsg_len = NLMSG_LENGTH(sizeof(ifinfomsg));
    header().nlmsg_type = type;
    info().ifi_family = AF_UNSPEC;
    info().ifi_type = ARPHRD_ETHER;
    info().ifi_index = 3;
  }
  Made& with(uint16_t type, std::string const& octets) {
    rtattr attribute{static_cast<unsigned short>(RTA_LENGTH(octets.size())), type};
    uint8_t* const at = buffer.data() + NLMSG_ALIGN(header().nlmsg_len);
    std::memcpy(at, &attribute, sizeof attribute);
    std::memcpy(at + RTA_LENGTH(0), octets.data(), octets.size());
    header().nlmsg_len = NLMSG_ALIGN(header().nlmsg_len) + RTA_ALIGN(attribute.rta_len);
    return *this;
  }
  Made& whole(std::string const& name = std::string("eth0\0", 5)) {
    return with(IFLA_IFNAME, name).with(IFLA_ADDRESS, "\2\1\1\1\1\7");
  }
  Made& flags(unsigned flags) {
    info().ifi_flags = flags;
    return *this;
  }
  nlmsghdr& header() { return *reinterpret_cast<nlmsghdr*>(buffer.data()); }
  ifinfomsg& info() { return *reinterpret_cast<ifinfomsg*>(buffer.data() + sizeof(nlmsghdr)); }
  std::optional<LinkMessage> read() { return linkMessageOf(header()); }

  alignas(8) std::array<uint8_t, 512> buffer{};
};

TEST(LinkMessage, TellsIndexNameAndAddressOfAnInterface) {
  auto const news = Made().whole().read();
  ASSERT_TRUE(news);
  EXPECT_TRUE(news->isThere);
  EXPECT_EQ(news->link, (Link{3, "eth0", Lumo::EthAddr({2, 1, 1, 1, 1, 7}), false, 0}));
}

TEST(LinkMessage, TellsTheMtu) {
  EXPECT_EQ(Made().whole().with(IFLA_MTU, std::string("\xdc\5\0\0", 4)).read()->link.mtu, 1500u);
  EXPECT_EQ(Made().whole().with(IFLA_MTU, "\1").read()->link.mtu, 0u);
}

TEST(LinkMessage, TellsAnInterfaceUpThatIsSwitchedOnAndHasACarrier) {
  EXPECT_TRUE(Made().whole().flags(IFF_UP | IFF_LOWER_UP).read()->link.up);
  EXPECT_FALSE(Made().whole().flags(IFF_UP | IFF_RUNNING).read()->link.up);
  EXPECT_FALSE(Made().whole().flags(IFF_LOWER_UP).read()->link.up);
}

TEST(LinkMessage, GoesByTheCarrierAndNotByTheOperationalState) {
  auto made = Made().whole();
  EXPECT_TRUE(made.with(IFLA_OPERSTATE, "\2").flags(IFF_UP | IFF_LOWER_UP).read()->link.up);
}

TEST(LinkMessage, TellsWhetherADeviceIsSetUpAndDormant) {
  auto const dormant = Made().whole().with(IFLA_OPERSTATE, "\5").flags(IFF_UP).read();
  EXPECT_TRUE(dormant->link.isSetUp);
  EXPECT_TRUE(dormant->link.isDormant);
  auto const down = Made().whole().with(IFLA_OPERSTATE, "\2").flags(IFF_LOWER_UP).read();
  EXPECT_FALSE(down->link.isSetUp);
  EXPECT_FALSE(down->link.isDormant);
}

TEST(LinkMessage, NamesTheMasterOfAnInterfaceAndTheKindOfADevice) {
  auto const member = Made().whole().with(IFLA_MASTER, std::string("\7\0\0\0", 4)).read();
  EXPECT_EQ(member->link.master, 7);
  std::string const kind("\13\0\1\0bridge\0\0", 12);
  EXPECT_EQ(Made().whole().with(IFLA_LINKINFO, kind).read()->link.kind, "bridge");
  EXPECT_EQ(Made().whole().with(IFLA_LINKINFO, "\377\377").read()->link.kind, "");
}

TEST(LinkMessage, TellsThatAnInterfaceHasGone) {
  auto const news = Made(RTM_DELLINK).whole().read();
  ASSERT_TRUE(news);
  EXPECT_FALSE(news->isThere);
  EXPECT_EQ(news->link.index, 3);
}

TEST(LinkMessage, IsNoneWhenAPortLeavesABridge) {
  Made made(RTM_DELLINK);
  made.info().ifi_family = AF_BRIDGE;
  EXPECT_FALSE(made.whole().read());
}

TEST(LinkMessage, IsNoneForAnotherKindOfInterface) {
  Made made;
  made.info().ifi_type = ARPHRD_LOOPBACK;
  EXPECT_FALSE(made.whole().read());
}

TEST(LinkMessage, IsNoneWithoutANameOrAnAddress) {
  EXPECT_FALSE(Made().read());
  EXPECT_FALSE(Made().with(IFLA_IFNAME, "eth0").read());
  EXPECT_FALSE(Made().with(IFLA_IFNAME, "eth0").with(IFLA_ADDRESS, "\1\2\3").read());
}

TEST(LinkMessage, TakesANameThatNoNulEnds) {
  EXPECT_EQ(Made().whole("wan").read()->link.name, "wan");
}

TEST(LinkMessage, IsNoneForOtherTypesAndForOneCutShort) {
  EXPECT_FALSE(Made(RTM_NEWADDR).whole().read());
  Made made;
  made.whole().header().nlmsg_len = NLMSG_LENGTH(sizeof(ifinfomsg) - 1);
  EXPECT_FALSE(made.read());
}

}  // namespace
}  // namespace Linux
