#include "host/config/DeviceName.h"

#include <gtest/gtest.h>

#include <set>

namespace Macsecd {
namespace {

TEST(TheDefaultNameOfADevice, IsThatOfTheInterfaceWithSecBehindIt) {
  EXPECT_EQ(defaultDeviceName("eth0"), "eth0-sec");
  EXPECT_EQ(defaultDeviceName("enp0s31f6"), "enp0s31f6-sec");
  EXPECT_EQ(defaultDeviceName("br-lan"), "br-lan-sec");
}

TEST(TheDefaultNameOfADevice, HasNoDotSoThatNobodyTakesItForAVlan) {
  EXPECT_EQ(defaultDeviceName("eth0.100"), "eth0_100-sec");
  EXPECT_EQ(defaultDeviceName("enp1s0.4094").find('.'), std::string::npos);
  EXPECT_EQ(defaultDeviceName("enp175s0f0np0.1").find('.'), std::string::npos);
}

TEST(TheDefaultNameOfADevice, FitsIntoTheKernelsOctetsWhateverTheInterfaceIsCalled) {
  for (char const octet : {'a', '.', '_', '-', '\xe4', '%'}) {
    for (size_t size = 1; size <= 64; ++size) {
      std::string const name = defaultDeviceName(std::string(size, octet));
      EXPECT_LE(name.size(), maxDeviceName) << name;
      EXPECT_EQ(name.find('.'), std::string::npos) << name;
      EXPECT_TRUE(name.ends_with("-sec")) << name;
    }
  }
}

TEST(TheDefaultNameOfADevice, IsAnotherOneForEachInterface) {
  std::set<std::string> names;
  size_t count = 0;
  auto const add = [&](std::string const& interface) {
    ++count;
    names.insert(defaultDeviceName(interface));
  };
  for (char const* name : {"eth0.1", "eth0_1", "eth0-1", "eth01", "eth0..1", "eth0._1"}) add(name);
  for (int vlan = 1; vlan < 4095; ++vlan) add("enp175s0f0." + std::to_string(vlan));
  for (int port = 0; port < 1000; ++port) add("enx0011223344" + std::to_string(port));
  EXPECT_EQ(names.size(), count);
}

TEST(TheDefaultNameOfADevice, NeverChangesForWhatStandsOnItKnowsItByName) {
  EXPECT_EQ(defaultDeviceName("enx001122334455"), "enx0-bq1ofe-sec");
  EXPECT_EQ(defaultDeviceName("enp175s0f0np0"), "enp1-9mscka-sec");
  EXPECT_EQ(defaultDeviceName("wan_1"), "wan_-so1grq-sec");
}

}  // namespace
}  // namespace Macsecd
