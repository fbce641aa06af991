#include <gtest/gtest.h>

#include "linux/kernel/PortForwarding.h"
#include "tests/kernel/Station.h"
#include "tests/support/TestWorld.h"

namespace Kernel {
namespace {

using Linux::PortForwarding;
using Macsec::AssociationNumber;
using Macsec::CipherSuite;

// Two stations in a network namespace each, and a cable between them.
class OnTheKernel : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { cableIs(); }
  static void TearDownTestSuite() { cableDel(); }

  OnTheKernel() {
    uint8_t const host[WardcodeLib::kHostKeySize] = {7};
    WardcodeLib::hostKeyIs(host);
    a.emplace("a", "va", 10);
    b.emplace("b", "vb", 11);
  }
  ~OnTheKernel() override {
    a->clear();
    b->clear();
  }
  void TearDown() override {
    if (!HasFailure()) return;
    for (auto const& log : world.logs) std::cout << log.name << ": " << log.text << "\n";
    std::cout << "a: " << counted(a->held()) << "\nb: " << counted(b->held()) << "\n";
    run("ip -n a -s -d link show; ip -n b -s -d link show");
  }

  void bothPorts(CipherSuite suite, bool includeSci = true) {
    a->portIs(suite, *b, includeSci);
    b->portIs(suite, *a, includeSci);
    a->start();
    b->start();
  }
  void receiveKey(Macsec::Sak const& sak) {
    a->cp->rxSakIs(sak);
    b->cp->rxSakIs(sak);
  }
  void transmitKey(Macsec::Sak const& sak) {
    a->cp->txSakIs(sak);
    b->cp->txSakIs(sak);
  }
  void firstKey(CipherSuite suite) {
    receiveKey(sakOf(0, 1, suite));
    transmitKey(sakOf(0, 1, suite));
  }
  // How many of so many frames arrive at the other end.
  static size_t pass(FrameSocket const& from, FrameSocket const& to, size_t count = 20) {
    for (size_t i = 0; i < count; ++i) from.sendFrame();
    return to.received(count);
  }
  void poll() {
    world.time += 2;
    a->driver->run();
    b->driver->run();
  }

  Support::TestWorld world;
  Vesk::WorldScope scope{world};
  std::optional<Station> a, b;
};

class WithBothSuites : public OnTheKernel, public ::testing::WithParamInterface<CipherSuite> {};
INSTANTIATE_TEST_SUITE_P(Suites, WithBothSuites,
                         ::testing::Values(CipherSuite::gcmAesXpn128, CipherSuite::gcmAesXpn256),
                         [](auto const& test) { return std::string(stringValue(test.param)); });

TEST_P(WithBothSuites, KeysPassFramesBothWays) {
  bothPorts(GetParam());
  ASSERT_TRUE(a->report()->configured());
  EXPECT_EQ(a->report()->secHdrSize(), 32u);
  auto const fromA = a->frames(), fromB = b->frames();
  EXPECT_EQ(pass(fromA, fromB), 0u);
  firstKey(GetParam());
  ASSERT_TRUE(a->report()->rxSaStatus(AssociationNumber(0)));
  ASSERT_TRUE(a->report()->txSaStatus());
  EXPECT_EQ(pass(fromA, fromB), 20u) << counted(b->held());
  EXPECT_EQ(pass(fromB, fromA), 20u);
  Linux::SecY const held = b->held();
  EXPECT_EQ(held.cipher,
            GetParam() == CipherSuite::gcmAesXpn128 ? Linux::kGcmAesXpn128 : Linux::kGcmAesXpn256);
  ASSERT_EQ(held.rxScs.size(), 1u);
  EXPECT_EQ(held.rxScs[0].sci, 0x02000000000a0001u);
  EXPECT_EQ(held.rxScs[0].counters.ok, 20u);
  EXPECT_EQ(held.outEncrypted, 20u);
  EXPECT_EQ(held.settings, Linux::SecYSettings());
}

TEST_P(WithBothSuites, AChangeOfKeyLosesNoFrame) {
  bothPorts(GetParam());
  firstKey(GetParam());
  auto const fromA = a->frames(), fromB = b->frames();
  for (uint32_t n = 2; n <= 9; ++n) {
    auto const sak = sakOf((n - 1) % 4, n, GetParam());
    a->cp->rxSakIs(sak);
    EXPECT_EQ(pass(fromA, fromB), 20u) << counted(b->held());
    b->cp->rxSakIs(sak);
    EXPECT_EQ(pass(fromA, fromB), 20u) << counted(b->held());
    a->cp->txSakIs(sak);
    EXPECT_EQ(pass(fromA, fromB) + pass(fromB, fromA), 40u) << n;
    b->cp->txSakIs(sak);
    EXPECT_EQ(pass(fromA, fromB) + pass(fromB, fromA), 40u) << n;
    for (auto* station : {&*a, &*b}) {
      station->cp->rxSakDel(AssociationNumber((n - 2) % 4));
      ASSERT_EQ(station->held().txSas.size(), 1u);
      EXPECT_EQ(station->held().txSas[0].an, sak.an().value());
      EXPECT_FALSE(station->report()->rxSaStatus(AssociationNumber((n - 2) % 4)));
      EXPECT_EQ(station->report()->txSaStatus()->keyNum(), n);
    }
  }
  auto const counters = b->held().rxScs.at(0).counters;
  EXPECT_EQ(counters.late + counters.notValid + counters.notUsingSa + counters.invalid, 0u);
  EXPECT_EQ(world.logs, std::vector<Support::Logged>());
}

TEST_P(WithBothSuites, AnotherDriverOnTheSameTreeTouchesNothing) {
  bothPorts(GetParam());
  firstKey(GetParam());
  auto const fromA = a->frames(), fromB = b->frames();
  EXPECT_EQ(pass(fromA, fromB), 20u) << counted(b->held());
  Linux::SecY const before = a->held();
  a->restart();
  Linux::SecY const after = a->held();
  EXPECT_EQ(after.index, before.index);
  ASSERT_EQ(after.txSas.size(), 1u);
  EXPECT_EQ(after.txSas[0].packetNumber, 21u);
  EXPECT_EQ(a->driver->packetNumber(a->intfId), 21u);
  EXPECT_EQ(a->driver->counts(), (Linux::KernelCounts{.devicesAdopted = 1}));
  EXPECT_TRUE(a->report()->txSaStatus());
  EXPECT_TRUE(a->report()->rxSaStatus(AssociationNumber(0)));
  EXPECT_EQ(pass(fromA, fromB), 20u) << counted(b->held());
  EXPECT_EQ(a->held().txSas[0].packetNumber, 41u);
}

TEST_F(OnTheKernel, PassesFramesWithoutTheSciInThem) {
  bothPorts(CipherSuite::gcmAesXpn128, false);
  firstKey(CipherSuite::gcmAesXpn128);
  EXPECT_EQ(a->report()->secHdrSize(), 24u);
  EXPECT_FALSE(a->held().sendSci);
  EXPECT_EQ(pass(a->frames(), b->frames()), 20u) << counted(b->held());
}

TEST_F(OnTheKernel, ReadsPacketNumbersBeyond32Bits) {
  bothPorts(CipherSuite::gcmAesXpn128);
  firstKey(CipherSuite::gcmAesXpn128);
  auto const tx = Linux::SaPlace{a->held().index, {}, 0};
  auto const rx = Linux::SaPlace{b->held().index, 0x02000000000a0001, 0};
  ASSERT_TRUE(a->kernel->packetNumberIs(tx, 0xfffffffe));
  ASSERT_TRUE(b->kernel->packetNumberIs(rx, 0xfffffffe));
  EXPECT_EQ(pass(a->frames(), b->frames(), 10), 10u);
  poll();
  EXPECT_EQ(a->driver->packetNumber(a->intfId), 0x100000008u);
  EXPECT_EQ(a->report()->txSaStatus()->lpn(), 8u);
  EXPECT_EQ(b->report()->rxSaStatus(AssociationNumber(0))->lpn(), 8u);
}

TEST_F(OnTheKernel, DropsFramesBelowTheLowestAcceptablePacketNumber) {
  bothPorts(CipherSuite::gcmAesXpn128);
  firstKey(CipherSuite::gcmAesXpn128);
  auto const fromA = a->frames(), fromB = b->frames();
  EXPECT_EQ(pass(fromA, fromB, 10), 10u);
  b->cp->rxLPNIs({5, AssociationNumber(0)});
  EXPECT_EQ(b->held().rxScs.at(0).sas.at(0).packetNumber, 11u);
  b->cp->rxLPNIs({16, AssociationNumber(0)});
  poll();  // another number was told in the same moment
  EXPECT_EQ(pass(fromA, fromB, 10), 5u);
  EXPECT_EQ(b->held().rxScs.at(0).counters.late, 5u);
}

TEST_F(OnTheKernel, AWrongShortChannelIdentifierShowsAsFramesThatAreNotValid) {
  bothPorts(CipherSuite::gcmAesXpn128);
  b->cp->peerSsciIs({a->sci(), "00000003"});
  firstKey(CipherSuite::gcmAesXpn128);
  EXPECT_EQ(pass(a->frames(), b->frames(), 10), 0u);
  // The kernel may send frames of its own as well.
  EXPECT_GE(b->held().rxScs.at(0).counters.notValid, 10u);
}

TEST_F(OnTheKernel, AnotherSuiteMakesTheDeviceAnew) {
  bothPorts(CipherSuite::gcmAesXpn128);
  firstKey(CipherSuite::gcmAesXpn128);
  for (auto* station : {&*a, &*b}) station->status->cpStatusDel(station->intfId);
  a->portIs(CipherSuite::gcmAesXpn256, *b);
  b->portIs(CipherSuite::gcmAesXpn256, *a);
  EXPECT_EQ(a->held().cipher, Linux::kGcmAesXpn256);
  EXPECT_FALSE(a->report()->txSaStatus());
  firstKey(CipherSuite::gcmAesXpn256);
  EXPECT_EQ(pass(a->frames(), b->frames()), 20u) << counted(b->held());
}

TEST_P(WithBothSuites, OneDeviceIsToldAsInTheListOfAll) {
  bothPorts(GetParam());
  std::vector<Linux::MacsecLink> links;
  ASSERT_TRUE(a->kernel->links(links));
  ASSERT_EQ(links.size(), 1u);
  Linux::MacsecLink link;
  Linux::SecY secY;
  ASSERT_TRUE(a->kernel->device(links[0].name, link, secY));
  auto const all = a->held();
  EXPECT_EQ(std::tie(link.index, link.parent, link.up, link.isOurs),
            std::tie(links[0].index, links[0].parent, links[0].up, links[0].isOurs));
  EXPECT_EQ(std::tie(secY.index, secY.sci, secY.cipher, secY.sendSci, secY.encodingSa),
            std::tie(all.index, all.sci, all.cipher, all.sendSci, all.encodingSa));
  EXPECT_EQ(secY.settings, all.settings);
  EXPECT_FALSE(a->kernel->device("lo", link, secY));
  EXPECT_FALSE(a->kernel->device("nothing", link, secY));
}

TEST_F(OnTheKernel, APortThatGoesTakesItsDeviceAlongAndNoOther) {
  run("ip -n a link add link va other type macsec port 9");
  bothPorts(CipherSuite::gcmAesXpn128);
  firstKey(CipherSuite::gcmAesXpn128);
  a->status->cpStatusDel(a->intfId);
  a->driver->run();
  std::vector<Linux::MacsecLink> links;
  ASSERT_TRUE(a->kernel->links(links));
  ASSERT_EQ(links.size(), 1u);
  EXPECT_EQ(links[0].name, "other");
  EXPECT_FALSE(a->report()->configured());
  EXPECT_FALSE(a->report()->txSaStatus());
}

TEST_F(OnTheKernel, ANameThatIsTakenIsToldInTheKernelsWordsUntilItIsFree) {
  run("ip -n a link add va-sec type veth peer name taken");
  bothPorts(CipherSuite::gcmAesXpn128);
  firstKey(CipherSuite::gcmAesXpn128);
  EXPECT_FALSE(a->report()->configured());
  EXPECT_FALSE(a->report()->txSaStatus());
  ASSERT_EQ(world.logged("MACSEC_KERNEL_REFUSED"), 1u);
  EXPECT_EQ(world.logs[0].text,
            "The kernel refuses to make the device on interface va (va-sec): File exists; another "
            "device has the name va-sec: rename that one, or give va another 'device' in the "
            "configuration");
  run("ip -n a link del va-sec");
  poll();
  EXPECT_TRUE(a->report()->configured());
  EXPECT_TRUE(a->report()->txSaStatus());
  EXPECT_EQ(pass(a->frames(), b->frames()), 20u) << counted(b->held());
  EXPECT_EQ(world.logs.size(), 1u);
}

TEST_F(OnTheKernel, ADeviceThatSomebodyRemovesComesBackWithHigherPacketNumbers) {
  bothPorts(CipherSuite::gcmAesXpn128);
  firstKey(CipherSuite::gcmAesXpn128);
  EXPECT_EQ(pass(a->frames(), b->frames()), 20u) << counted(b->held());
  run("ip -n a link del va-sec");
  poll();
  ASSERT_EQ(a->held().txSas.size(), 1u);
  EXPECT_EQ(a->held().txSas[0].packetNumber, 1 + Macsecd::KeyHistory::kReserved);
  EXPECT_EQ(pass(a->frames(), b->frames()), 20u) << counted(b->held());
}

TEST_F(OnTheKernel, ADormantDeviceIsUpWhenItIsAuthorized) {
  a->portIs(CipherSuite::gcmAesXpn128, *b);
  b->portIs(CipherSuite::gcmAesXpn128, *a);
  auto const forwarding = PortForwarding::Directory::IntfForwardingModelInputDirIs("forwarding");
  auto const unauthorized = Interface::intfForwardingModelUnauthorized();
  forwarding->forwardingModelInputIs(a->intfId, unauthorized);
  a->start({.dormant = true});
  b->start();
  PortForwarding const shown({forwarding}, *a->driver);
  EXPECT_NO_THROW(becomes("a", "va-sec", "DORMANT"));
  forwarding->forwardingModelInputDel(a->intfId);
  EXPECT_NO_THROW(becomes("a", "va-sec", "UP"));
  forwarding->forwardingModelInputIs(a->intfId, unauthorized);
  EXPECT_NO_THROW(becomes("a", "va-sec", "DORMANT"));
}

}  // namespace
}  // namespace Kernel
