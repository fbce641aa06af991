#include "linux/kernel/KernelRemedy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <set>

namespace Linux {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

std::string forNewDevice(int error, Master const& master = {}) {
  return remedyOf({error, "text"}, {"eth0", "eth0.sec", true, master});
}

TEST(KernelRemedy, NamesTheBridgeThatAnInterfaceIsIn) {
  EXPECT_EQ(
      forNewDevice(EBUSY, {"br0", "bridge"}),
      "eth0 is a member of the bridge br0: take it out ('ip link set eth0 nomaster'), and put "
      "eth0.sec into br0 in its place");
}

TEST(KernelRemedy, NamesTheBondThatAnInterfaceIsIn) {
  EXPECT_EQ(forNewDevice(EBUSY, {"bond0", "bond"}),
            "eth0 is a member of the bond bond0: configure bond0 in its place, or take eth0 out of "
            "it ('ip link set eth0 nomaster')");
}

TEST(KernelRemedy, KnowsADeviceThatHasTheSameSci) {
  EXPECT_THAT(forNewDevice(EBUSY), AllOf(HasSubstr("same SCI"), Not(HasSubstr("member"))));
}

TEST(KernelRemedy, KnowsANameThatIsTaken) {
  EXPECT_THAT(forNewDevice(EEXIST),
              AllOf(HasSubstr("another device has the name eth0.sec"), HasSubstr("'device'")));
}

TEST(KernelRemedy, KnowsAMissingModuleAndAMissingPrivilege) {
  EXPECT_THAT(forNewDevice(EOPNOTSUPP), HasSubstr("modprobe macsec"));
  EXPECT_THAT(forNewDevice(EPERM), HasSubstr("CAP_NET_ADMIN"));
  EXPECT_EQ(remedyOf({EPERM, "text"}, {"eth0", "eth0.sec", false, {}}), forNewDevice(EPERM));
}

TEST(KernelRemedy, IsAnotherForEachRefusalOfADevice) {
  std::set<std::string> remedies;
  for (int const error : {EBUSY, EEXIST, EOPNOTSUPP, EINVAL, ENODEV, EPERM, ENOMEM, EIO}) {
    EXPECT_TRUE(remedies.insert(forNewDevice(error)).second) << error;
  }
}

}  // namespace
}  // namespace Linux
