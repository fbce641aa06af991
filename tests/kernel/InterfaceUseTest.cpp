#include "linux/kernel/InterfaceUse.h"

#include <gtest/gtest.h>

#include "tests/kernel/Wire.h"

namespace Kernel {
namespace {

using Texts = std::vector<std::string>;

/// What stands on the end of the cable in the namespace a.
class TheUseOfAnInterface : public ::testing::Test {
 protected:
  TheUseOfAnInterface() { cableIs(); }
  ~TheUseOfAnInterface() override { cableDel(); }
  static Texts uses() {
    Inside const inside("a");
    return Linux::usesOf("va");
  }
  static Texts cutOff(Macsecd::InterfaceConfig const& interface) {
    Inside const inside("a");
    return Linux::cutOffBy({interface});
  }
};

TEST_F(TheUseOfAnInterface, IsNoneOfABareOneAndOfOneThatIsntThere) {
  EXPECT_EQ(uses(), Texts());
  EXPECT_EQ(Linux::usesOf("nowhere0"), Texts());
}

TEST_F(TheUseOfAnInterface, NamesAddressesAndRoutesThatSomebodyGaveIt) {
  run("ip -n a addr add 192.0.2.1/24 dev va; ip -n a route add default via 192.0.2.9;"
      "ip -n a route add 198.51.100.0/24 nexthop via 192.0.2.7 nexthop via 192.0.2.8");
  EXPECT_EQ(uses(), (Texts{"the address 192.0.2.1/24", "the default route",
                           "the route to 198.51.100.0/24"}));
}

TEST_F(TheUseOfAnInterface, NamesItsMaster) {
  run("ip -n a link add br0 type bridge && ip -n a link set va master br0");
  EXPECT_EQ(uses(), Texts{"the master br0"});
  run("ip -n a link del br0");
}

TEST_F(TheUseOfAnInterface, LeavesOutWhatTheKernelGivesEveryInterfaceAndWhatIsOnOthers) {
  run("ip netns exec a sh -c 'echo 0 >/proc/sys/net/ipv6/conf/va/disable_ipv6' 2>/dev/null; true");
  run("ip -n a addr add 192.0.2.1/24 dev lo");
  EXPECT_EQ(uses(), Texts());
}

TEST_F(TheUseOfAnInterface, IsCutOffWhereTheInterfaceMustBeSecureAlone) {
  run("ip -n a addr add 192.0.2.1/24 dev va");
  Macsecd::InterfaceConfig interface { .name = "va", .profile = "p" };
  EXPECT_EQ(cutOff(interface),
            Texts{"interface va has the address 192.0.2.1/24, and nothing but MACsec and key "
                  "agreement passes it; what is to be protected belongs on va-sec"});
  interface.policy = Macsecd::SecurePolicy::shouldSecure;
  EXPECT_EQ(cutOff(interface), Texts());
}

TEST_F(TheUseOfAnInterface, IsNamedUpToAFewPlaces) {
  run("for i in 1 2 3 4 5 6 7; do ip -n a addr add 192.0.2.$i/24 dev va; done");
  auto const told = cutOff({.name = "va", .profile = "p"});
  ASSERT_EQ(told.size(), 1u);
  EXPECT_NE(told[0].find("192.0.2.5/24 and 2 more, and nothing"), std::string::npos) << told[0];
}

}  // namespace
}  // namespace Kernel
