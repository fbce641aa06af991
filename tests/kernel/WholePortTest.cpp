#include <gtest/gtest.h>

#include "tests/host/HostFixture.h"
#include "tests/kernel/Station.h"

namespace Kernel {
namespace {

using Macsecd::Suite;

// The whole control plane of one end, on the kernel's MACsec.
struct End {
  End(std::string const& home, std::string const& interface, uint8_t number)
      : space(home), intfId(interface.c_str()), peer(number, {.emulateHardware = false}) {
    Inside const inside(space);
    kernel.emplace();
    index = static_cast<int>(if_nametoindex(interface.c_str()));
  }
  void startDriver() {
    slice = Macsec::macSecStatusFactory("kernel");
    host().slices()->entityPtrIs(slice);
    driver.emplace(host().status(), slice, *kernel);
    driver->interfaceIs(intfId, index);
  }
  void bringUp(Macsecd::SwitchConfig const& config) {
    Vesk::WorldScope const scope(peer.world);
    host().interfaceIs(intfId, Lumo::EthAddr({2, 0, 0, 0, 0, peer.number}), 1);
    host().configIs(config);
    startDriver();
    host().start();
    host().linkIs(intfId, true);
  }
  // Dies, and starts again on what it left.
  void restart() {
    Vesk::WorldScope const scope(peer.world);
    driver.reset();
    host().die();
    host().slices()->entityPtrDel("kernel");
    startDriver();
    host().start();
  }
  void turn(double time) {
    Vesk::WorldScope const scope(peer.world);
    peer.world.time = time;
    host().timerWheel()->runDue();
    if (driver->nextTime() <= time) driver->run();
  }
  void take(std::vector<uint8_t> const& frame) {
    Vesk::WorldScope const scope(peer.world);
    host().receive(intfId, frame);
  }
  void clear() const {
    std::vector<Linux::MacsecLink> links;
    kernel->links(links);
    for (auto const& link : links) kernel->secYDel(link.index);
  }
  Macsecd::Host& host() { return peer.host; }
  Vesk::Ptr<Macsec::CpStatus> cp() { return host().status()->cpStatus(intfId); }
  std::string device() const { return std::string(intfId.stringValue().view()) + "-sec"; }
  FrameSocket frames() const { return {space, device(), peer.number}; }
  Linux::SecY held() const {
    std::vector<Linux::SecY> all;
    kernel->secYs(all);
    return all.empty() ? Linux::SecY() : all.front();
  }

  std::string const space;
  Lumo::IntfId const intfId;
  mutable std::optional<Linux::MacsecNetlink> kernel;
  int index = 0;
  Macsecd::Switch peer;
  Vesk::Ptr<Macsec::MacSecStatus> slice;
  std::optional<Linux::KernelDriver> driver;
};

class AWholePort : public ::testing::TestWithParam<Suite> {
 protected:
  static void SetUpTestSuite() { cableIs(); }
  static void TearDownTestSuite() { cableDel(); }
  ~AWholePort() override {
    a.clear();
    b.clear();
  }

  Macsecd::SwitchConfig config(End const& end, uint32_t rekeyPeriod = 0) const {
    auto config = Macsecd::configWith(Macsecd::kCak);
    config.profiles[0].cipherSuite = GetParam();
    config.profiles[0].rekeyPeriod = rekeyPeriod;
    config.profiles[0].includeSci = true;
    config.interfaces[0].name = std::string(end.intfId.stringValue().view());
    return config;
  }
  void bothUp(uint32_t rekeyPeriod = 0) {
    a.bringUp(config(a, rekeyPeriod));
    b.bringUp(config(b, rekeyPeriod));
  }
  // A quarter of a second, with the MKPDUs of both.
  void step() {
    now += 0.25;
    for (auto [from, to] : {std::pair(&a, &b), std::pair(&b, &a)}) {
      from->turn(now);
      to->turn(now);
      for (auto const& frame : std::exchange(from->peer.sent.frames, {})) to->take(frame);
    }
  }
  bool areOpen() {
    return a.cp()->controlledPortEnabled() && b.cp()->controlledPortEnabled() &&
           a.cp()->oldSakContext() != Macsec::SakContext() &&
           b.cp()->oldSakContext() != Macsec::SakContext();
  }
  void open() {
    while (now < 30 && !areOpen()) step();
    ASSERT_TRUE(areOpen());
  }
  // Data frames both ways; how many are lost.
  static size_t lost(FrameSocket const& one, FrameSocket const& other, size_t count = 10) {
    size_t arrived = 0;
    for (auto [from, to] : {std::pair(&one, &other), std::pair(&other, &one)}) {
      for (size_t i = 0; i < count; ++i) from->sendFrame();
      arrived += to->received(count);
    }
    return 2 * count - arrived;
  }
  static void expectNoneBad(Linux::SecY const& secY) {
    ASSERT_EQ(secY.rxScs.size(), 1u);
    auto const& c = secY.rxScs[0].counters;
    EXPECT_EQ(c.late + c.invalid + c.notValid + c.notUsingSa + c.unusedSa, 0u) << counted(secY);
  }

  double now = 0;
  End a{"a", "va", 10}, b{"b", "vb", 11};
};

INSTANTIATE_TEST_SUITE_P(Suites, AWholePort,
                         ::testing::Values(Suite::gcmAesXpn128, Suite::gcmAesXpn256),
                         [](auto const& test) {
                           return test.param == Suite::gcmAesXpn128 ? "xpn128" : "xpn256";
                         });

TEST_P(AWholePort, OpensAndCarriesFrames) {
  bothUp();
  open();
  EXPECT_EQ(lost(a.frames(), b.frames()), 0u);
  EXPECT_EQ(a.held().txSas.size(), 1u);
  EXPECT_EQ(a.driver->counts().refusals, 0u);
  EXPECT_EQ(a.peer.world.logged("MACSEC_KERNEL_REFUSED"), 0u);
}

TEST_P(AWholePort, LosesNoFrameOverTenTimedChangesOfTheKey) {
  bothUp(30);
  open();
  auto const one = a.frames(), other = b.frames();
  size_t all = 0;
  for (double const end = now + 310; now < end; step()) all += lost(one, other, 5);
  EXPECT_EQ(all, 0u);
  EXPECT_GE(a.peer.world.logged("MKA_SAK_ACTIVATED"), 11u);
  EXPECT_EQ(a.held().txSas.size(), 1u);
  EXPECT_LE(a.held().rxScs.at(0).sas.size(), 2u);
  expectNoneBad(a.held());
  expectNoneBad(b.held());
  EXPECT_EQ(a.driver->counts().refusals + b.driver->counts().refusals, 0u);
}

TEST_P(AWholePort, ARestartTouchesNoAssociationAndLosesNoFrame) {
  bothUp(30);
  open();
  auto const one = a.frames(), other = b.frames();
  size_t all = 0;
  for (int restarts = 0; restarts < 20; ++restarts) {
    End& end = restarts % 2 ? a : b;
    Linux::SecY const before = end.held();
    end.restart();
    Linux::SecY const after = end.held();
    EXPECT_EQ(after.index, before.index);
    EXPECT_EQ(after.encodingSa, before.encodingSa);
    EXPECT_EQ(end.driver->counts().sasInstalled + end.driver->counts().sasRemoved, 0u);
    EXPECT_EQ(end.driver->counts().devicesAdopted, 1u);
    for (double const until = now + 5 + 0.25 * restarts; now < until; step()) {
      all += lost(one, other, 5);
    }
  }
  EXPECT_EQ(all, 0u);
  expectNoneBad(a.held());
  expectNoneBad(b.held());
  EXPECT_GE(a.peer.world.logged("MKA_SAK_ACTIVATED"), 3u);
}

TEST_P(AWholePort, APortOutOfTheConfigurationTakesItsDeviceAlong) {
  bothUp();
  open();
  {
    Vesk::WorldScope const scope(a.peer.world);
    a.host().configIs(Macsecd::SwitchConfig());
  }
  step();
  std::vector<Linux::MacsecLink> links;
  ASSERT_TRUE(a.kernel->links(links));
  EXPECT_TRUE(links.empty());
}

}  // namespace
}  // namespace Kernel
