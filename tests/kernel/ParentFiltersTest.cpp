#include <gtest/gtest.h>

#include "linux/kernel/FilterNetlink.h"
#include "linux/kernel/ParentFilters.h"
#include "tests/kernel/Station.h"
#include "tests/support/TestWorld.h"

namespace Kernel {
namespace {

// The cable, of which the end of b is closed.
class AClosedParent : public ::testing::Test {
 protected:
  AClosedParent() {
    cableIs();
    Inside const inside("b");
    kernel.emplace();
    index = static_cast<int>(if_nametoindex("vb"));
    start();
  }
  ~AClosedParent() override { cableDel(); }
  void TearDown() override {
    if (!HasFailure()) return;
    for (auto const& log : world.logs) std::cout << log.name << ": " << log.text << "\n";
    run("tc -n b -s qdisc show; tc -n b -s filter show dev vb ingress;"
        "tc -n b -s filter show dev vb egress");
  }

  void start() { filters.emplace(*kernel); }
  bool close() { return filters->interfaceIs(Lumo::IntfId("vb"), index); }
  static std::string shown(std::string const& side) {
    std::string text;
    FILE* const pipe = popen(("tc -n b filter show dev vb " + side).c_str(), "r");
    for (int c; (c = fgetc(pipe)) != EOF;) text += static_cast<char>(c);
    pclose(pipe);
    return text;
  }
  // How many of ten frames of this type go from one end to the other.
  static size_t pass(char from, char to, uint16_t type, bool inVlan = false) {
    auto const end = [&](char name) {
      return FrameSocket({name}, std::string("v") + name, static_cast<uint8_t>(10 + name - 'a'),
                         type);
    };
    auto const sender = end(from), receiver = end(to);
    for (int i = 0; i < 10; ++i) inVlan ? sender.sendInVlan(5) : sender.sendFrame();
    return receiver.received(10);
  }

  static constexpr uint16_t kClear = FrameSocket::kType, kMacsec = 0x88e5, kEapol = 0x888e;
  Support::TestWorld world;
  Vesk::WorldScope scope{world};
  std::optional<Linux::FilterNetlink> kernel;
  std::optional<Linux::ParentFilters> filters;
  int index = 0;
};

TEST_F(AClosedParent, LetsMacsecAndEapolThroughAlone) {
  EXPECT_EQ(pass('a', 'b', kClear), 10u);
  EXPECT_EQ(pass('a', 'b', kClear, true), 10u);
  ASSERT_TRUE(close());
  for (auto [from, to] : {std::pair('a', 'b'), std::pair('b', 'a')}) {
    EXPECT_EQ(pass(from, to, kMacsec), 10u) << from;
    EXPECT_EQ(pass(from, to, kEapol), 10u) << from;
    EXPECT_EQ(pass(from, to, kClear), 0u) << from;
    EXPECT_EQ(pass(from, to, kClear, true), 0u) << from;
  }
  EXPECT_EQ(pass('a', 'b', kEapol, true), 0u);
}

TEST_F(AClosedParent, LetsTheTypesThroughThatMayPassInClearAndNoOthers) {
  constexpr uint16_t kLldp = 0x88cc, kLacp = 0x8809, kPtp = 0x88f7;
  Lumo::IntfId const vb("vb");
  ASSERT_TRUE(filters->interfaceIs(vb, index, {kLldp, kLacp}));
  for (auto [from, to] : {std::pair('a', 'b'), std::pair('b', 'a')}) {
    for (uint16_t const type : {kLldp, kLacp, kMacsec, kEapol}) {
      EXPECT_EQ(pass(from, to, type), 10u) << from << std::hex << type;
    }
    for (uint16_t const type : {kPtp, kClear}) EXPECT_EQ(pass(from, to, type), 0u) << from << type;
  }
  EXPECT_EQ(pass('a', 'b', kLldp, true), 0u);
  ASSERT_TRUE(filters->interfaceIs(vb, index));
  EXPECT_EQ(pass('a', 'b', kLldp), 0u);
  EXPECT_EQ(pass('b', 'a', kLldp), 0u);
  EXPECT_TRUE(world.logs.empty());
}

TEST_F(AClosedParent, DoesntAnswerAPingAndSendsNone) {
  run("ip -n a addr add 10.0.0.1/24 dev va; ip -n b addr add 10.0.0.2/24 dev vb");
  run("ip netns exec a ping -q -c 1 -W 5 10.0.0.2 >/tmp/ping");
  ASSERT_TRUE(close());
  run("ip netns exec a ping -q -c 1 -W 0.5 10.0.0.2 >/tmp/ping; test $? = 1");
  run("ip netns exec b ping -q -c 1 -W 0.5 10.0.0.1 >/tmp/ping; test $? = 1");
}

TEST_F(AClosedParent, CarriesProtectedFrames) {
  Station a("a", "va", 10), b("b", "vb", 11);
  ASSERT_TRUE(close());
  for (auto [one, other] : {std::pair(&a, &b), std::pair(&b, &a)}) {
    one->portIs(Macsec::CipherSuite::gcmAesXpn128, *other);
    one->start();
    one->cp->rxSakIs(sakOf(0, 1, Macsec::CipherSuite::gcmAesXpn128));
    one->cp->txSakIs(sakOf(0, 1, Macsec::CipherSuite::gcmAesXpn128));
  }
  auto const fromA = a.frames(), fromB = b.frames();
  for (auto [from, to] : {std::pair(&fromA, &fromB), std::pair(&fromB, &fromA)}) {
    for (int i = 0; i < 10; ++i) from->sendFrame();
    EXPECT_EQ(to->received(10), 10u) << counted(b.held());
  }
  a.clear();
  b.clear();
}

TEST_F(AClosedParent, ShowsItsFilterAndKeepsItOverARestart) {
  ASSERT_TRUE(close());
  std::string const in = shown("ingress"), out = shown("egress");
  for (auto const& text : {in, out}) {
    EXPECT_NE(text.find("protocol all pref 3 bpf"), std::string::npos) << text;
    EXPECT_NE(text.find("action drop"), std::string::npos) << text;
  }
  start();
  ASSERT_TRUE(close());
  filters->removeOthers();
  EXPECT_EQ(shown("ingress"), in);
  EXPECT_EQ(shown("egress"), out);
  EXPECT_TRUE(world.logs.empty());
}

TEST_F(AClosedParent, IsClosedAgainWhenSomebodyChangesTheFilter) {
  ASSERT_TRUE(close());
  for (char const* const flag : {"skip_hw", ""}) {
    run("tc -n b filter del dev vb ingress pref 3 && "
        "tc -n b filter add dev vb ingress pref 3 handle 0x88e50002 bpf " +
        std::string(flag) + " bytecode '1,6 0 0 0'");
    EXPECT_EQ(pass('a', 'b', kClear), 10u);
    world.time += 10;
    filters->run();
    EXPECT_EQ(pass('a', 'b', kClear), 0u);
  }
  run("tc -n b qdisc del dev vb clsact");
  world.time += 10;
  filters->run();
  EXPECT_EQ(pass('b', 'a', kClear), 0u);
  EXPECT_EQ(pass('a', 'b', kEapol), 10u);
  EXPECT_EQ(world.logged("MACSEC_PARENT_CLOSED_AGAIN"), 1u);
}

TEST_F(AClosedParent, LeavesNothingBehindWhenItIsOpened) {
  ASSERT_TRUE(close());
  start();
  filters->removeOthers();
  run("tc -n b qdisc show dev vb | grep -q clsact; test $? = 1");
  EXPECT_EQ(pass('a', 'b', kClear), 10u);
}

TEST_F(AClosedParent, LeavesTheFiltersOfOthers) {
  run("tc -n b qdisc add dev vb clsact &&"
      "tc -n b filter add dev vb ingress pref 5 protocol all bpf bytecode '1,6 0 0 0'");
  std::string const before = shown("ingress");
  ASSERT_TRUE(close());
  EXPECT_EQ(pass('a', 'b', kClear), 0u);
  filters->removeAll();
  EXPECT_EQ(shown("ingress"), before);
  EXPECT_EQ(shown("egress"), "");
  EXPECT_EQ(pass('a', 'b', kClear), 10u);
}

TEST_F(AClosedParent, TellsThatAnotherProgramHasItsPlace) {
  run("tc -n b qdisc add dev vb clsact &&"
      "tc -n b filter add dev vb ingress pref 3 protocol ip bpf bytecode '1,6 0 0 0'");
  EXPECT_FALSE(close());
  EXPECT_NE(filters->trouble(Lumo::IntfId("vb"))->find("preference 3"), std::string::npos)
      << *filters->trouble(Lumo::IntfId("vb"));
  run("tc -n b filter del dev vb ingress pref 3");
  world.time += 10;
  filters->run();
  EXPECT_EQ(filters->trouble(Lumo::IntfId("vb")), std::nullopt);
}

}  // namespace
}  // namespace Kernel
