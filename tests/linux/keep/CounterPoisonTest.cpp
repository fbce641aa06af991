#include <filesystem>
#include <fstream>
#include <iterator>

#include "linux/keep/SharedCounters.h"
#include "tests/host/HostFixture.h"
#include "tests/linux/SharedName.h"
#include "tests/support/Poison.h"

namespace Linux {
namespace {

using Macsec::Brine::MessageCounters;
using Macsecd::kIntf;

std::string contentOf(std::filesystem::path const& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// Two switches agree on keys over frames that hold them, wrapped; some are refused.
TEST(CounterFiles, HoldNoKey) {
  SharedName const name;
  std::filesystem::path const memory = "/dev/shm" + std::string(name);
  auto const corruption =
      std::filesystem::path(::testing::TempDir()) / ("corrupt" + memory.filename().string());
  Support::Poison poison;
  {
    Macsecd::Switch b(2);
    auto const counters = Vesk::make<MessageCounters>(
        "mka", std::make_shared<SharedCounters>(
                   name, SharedCountersOptions{.corruptionFile = corruption.string()}));
    Macsecd::Switch a(1, {.counters = counters});
    for (Macsecd::Switch* one : {&a, &b}) {
      Vesk::WorldScope const scope(one->world);
      one->bringUp();
    }
    for (double time = 0; time < 20; time += 0.5) {
      talk(a, b, time);
      poison.addFrom(*a.host.status());
      poison.addFrom(*b.host.status());
    }
    EXPECT_GT(poison.count("SAK"), 0u);
    EXPECT_GT(poison.count("ICK"), 0u);
    poison.add("CAK", Macsecd::kCak);
    std::string const table = contentOf(memory);
    EXPECT_NE(table.find("Ethernet1"), std::string::npos);
    EXPECT_EQ(poison.foundIn(table), "");

    std::fstream(memory, std::ios::binary | std::ios::in | std::ios::out) << "damage";
    a.host.config()->clearMkaCountersInc(1);
  }
  std::string const kept = contentOf(corruption);
  EXPECT_NE(kept.find("damage"), std::string::npos);
  EXPECT_NE(kept.find("Ethernet1"), std::string::npos);
  EXPECT_EQ(poison.foundIn(kept), "");
  std::filesystem::remove(corruption);
}

}  // namespace
}  // namespace Linux
