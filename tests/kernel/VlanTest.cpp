#include <gtest/gtest.h>

#include <array>

#include "linux/kernel/FilterNetlink.h"
#include "linux/kernel/ParentFilters.h"
#include "linux/net/EapolSocket.h"
#include "tests/kernel/Wire.h"
#include "tests/support/TestWorld.h"

namespace Kernel {
namespace {

constexpr uint16_t kClear = FrameSocket::kType, kMacsec = 0x88e5, kEapol = 0x888e;

constexpr int kWhile = 300;  // ms

Linux::EapolSocket eapolSocket(std::string const& space, std::string const& device) {
  Inside const inside(space);
  return *Linux::EapolSocket::openOn(static_cast<int>(if_nametoindex(device.c_str())));
}

// What the filter was when it read a tag's value without asking whether there is a tag.
constexpr char const* kFormerProgram =
    "8,32 0 0 4294963244,84 0 0 4095,21 0 3 0,32 0 0 4294963200,21 2 0 35045,21 1 0 34958,"
    "6 0 0 4294967295,6 0 0 0";

// The VLAN 5 on the cable, a device at each end. The kernel keeps the tags' values in what it knows
// of a frame, though the tags are gone.
class AVlan : public ::testing::Test {
 protected:
  AVlan() {
    cableIs();
    for (std::string const end : {"a", "b"}) {
      std::string const link = "v" + end, vlan = link + ".5";
      run("ip -n " + end + " link add link " + link + " name " + vlan +
          " type vlan id 5 && ip -n " + end + " link set " + vlan + " up");
      becomes(end, vlan, "UP");
    }
    Inside const inside("b");
    index = static_cast<int>(if_nametoindex("vb.5"));
    kernel.emplace();
    filters.emplace(*kernel);
  }
  ~AVlan() override { cableDel(); }

  bool close() { return filters->interfaceIs(Lumo::IntfId("vb.5"), index); }
  // How many of ten frames of this type go from one end's device to the other's.
  static size_t pass(char from, char to, uint16_t type) {
    auto const end = [&](char name) {
      return FrameSocket({name}, std::string("v") + name + ".5",
                         static_cast<uint8_t>(10 + name - 'a'), type);
    };
    auto const sender = end(from), receiver = end(to);
    for (int i = 0; i < 10; ++i) sender.sendFrame();
    return receiver.received(10);
  }

  Support::TestWorld world;
  Vesk::WorldScope scope{world};
  std::optional<Linux::FilterNetlink> kernel;
  std::optional<Linux::ParentFilters> filters;
  int index = 0;
};

TEST_F(AVlan, ThatMustBeSecureCarriesMacsecAndEapolThoughTheirTagIsGone) {
  ASSERT_TRUE(close());
  for (auto [from, to] : {std::pair('a', 'b'), std::pair('b', 'a')}) {
    EXPECT_EQ(pass(from, to, kMacsec), 10u) << from;
    EXPECT_EQ(pass(from, to, kEapol), 10u) << from;
    EXPECT_EQ(pass(from, to, kClear), 0u) << from;
  }
}

TEST_F(AVlan, HandsMkpdusToTheDaemonsSocketThoughTheirTagIsGone) {
  auto sender = eapolSocket("a", "va.5"), receiver = eapolSocket("b", "vb.5");
  std::array<uint8_t, 60> mkpdu{0x01, 0x80, 0xc2, 0, 0, 3, 2, 0, 0, 0, 0, 10, 0x88, 0x8e, 3, 5};
  for (int i = 0; i < 10; ++i) EXPECT_TRUE(sender.send(mkpdu));
  size_t count = 0;
  for (pollfd ready{receiver.fd(), POLLIN, 0}; count < 10 && poll(&ready, 1, kWhile) > 0;) {
    receiver.receive(10, [&](auto) { ++count; });
  }
  EXPECT_EQ(count, 10u);
}

TEST_F(AVlan, HasTheFilterOfAFormerVersionReplacedInItsPlace) {
  for (char const* const side : {"ingress", "egress"}) {
    run("tc -n b qdisc show dev vb.5 | grep -q clsact || tc -n b qdisc add dev vb.5 clsact");
    run(std::string("tc -n b filter add dev vb.5 ") + side +
        " pref 3 handle 0x88e50002 bpf skip_hw bytecode '" + kFormerProgram + "' action drop");
  }
  EXPECT_EQ(pass('a', 'b', kEapol), 0u);
  Linux::HeldFilters held;
  ASSERT_TRUE(kernel->filters(index, {}, held));
  EXPECT_TRUE(held.in.isThere && held.out.isThere);
  EXPECT_FALSE(held.in.isWhole || held.out.isWhole);
  ASSERT_TRUE(close());
  ASSERT_TRUE(kernel->filters(index, {}, held));
  EXPECT_TRUE(held.in.isWhole && held.out.isWhole && !held.hasOthers);
  EXPECT_EQ(pass('a', 'b', kEapol), 10u);
  EXPECT_EQ(pass('a', 'b', kClear), 0u);
  filters->removeAll();
  EXPECT_EQ(pass('a', 'b', kClear), 10u);
}

}  // namespace
}  // namespace Kernel
