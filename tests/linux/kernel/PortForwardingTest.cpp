#include "linux/kernel/PortForwarding.h"

#include "tests/linux/kernel/KernelBench.h"

namespace Linux::Test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ForwardingOfAPort : public KernelBench {
 protected:
  void unauthorized() {
    directory->forwardingModelInputIs(kIntf, Interface::intfForwardingModelUnauthorized());
  }
  void startDormant() {
    portIs();
    start({.dormant = true});
    forwarding.emplace(directories(), *driver);
  }
  PortForwarding::Directories directories() const { return {directory, other}; }
  ~ForwardingOfAPort() override { forwarding.reset(); }

  Vesk::Ptr<PortForwarding::Directory> directory =
      PortForwarding::Directory::IntfForwardingModelInputDirIs("forwarding");
  Vesk::Ptr<PortForwarding::Directory> other =
      PortForwarding::Directory::IntfForwardingModelInputDirIs("other");
  std::optional<PortForwarding> forwarding;
};

TEST_F(ForwardingOfAPort, IsShownOnTheDeviceAsItChanges) {
  unauthorized();
  startDormant();
  EXPECT_EQ(device().authorized, false);
  directory->forwardingModelInputDel(kIntf);
  EXPECT_EQ(device().authorized, true);
  unauthorized();
  EXPECT_EQ(device().authorized, false);
}

TEST_F(ForwardingOfAPort, IsOpenOnlyWhenNobodySaysOtherwise) {
  unauthorized();
  startDormant();
  other->forwardingModelInputIs(kIntf, Interface::intfForwardingModelUnauthorized());
  directory->forwardingModelInputDel(kIntf);
  EXPECT_EQ(device().authorized, false);
  other->forwardingModelInputDel(kIntf);
  EXPECT_EQ(device().authorized, true);
}

TEST_F(ForwardingOfAPort, IsntOpenedWhenThePortGoes) {
  unauthorized();
  startDormant();
  status->cpStatusDel(kIntf);
  directory->forwardingModelInputDel(kIntf);
  EXPECT_EQ(device().authorized, false);
}

TEST_F(ForwardingOfAPort, IsShownOnADeviceThatComesLater) {
  startDormant();
  unauthorized();
  kernel.devices.clear();
  kernel.asked.clear();
  runAt(2);
  EXPECT_THAT(kernel.asked, ElementsAre("make eth0-sec", "up", "unauthorized"));
  driver->interfaceIs(kIntf, 4);
  EXPECT_EQ(device().authorized, false);
}

TEST_F(ForwardingOfAPort, IsToldAgainSinceTheKernelForgetsItWithTheLink) {
  startDormant();
  device().authorized.reset();
  driver->deviceChanged(device().secY.index, true);
  EXPECT_EQ(device().authorized, true);
}

TEST_F(ForwardingOfAPort, IsToldOnceWhileTheDeviceStandsAsItDid) {
  startDormant();
  kernel.asked.clear();
  for (double const time : {2, 4, 6}) runAt(time);
  EXPECT_THAT(kernel.asked, IsEmpty());
}

TEST_F(ForwardingOfAPort, IsntShownOnADeviceThatIsDownForItsParent) {
  kernel.isParentUp = false;
  startDormant();
  EXPECT_FALSE(device().authorized);
  kernel.isParentUp = true;
  runAt(2);
  EXPECT_EQ(device().authorized, true);
}

TEST_F(ForwardingOfAPort, ConcernsNoDeviceThatDoesntComeUpDormant) {
  portIs();
  start();
  forwarding.emplace(directories(), *driver);
  kernel.asked.clear();
  unauthorized();
  EXPECT_THAT(kernel.asked, IsEmpty());
}

}  // namespace
}  // namespace Linux::Test
