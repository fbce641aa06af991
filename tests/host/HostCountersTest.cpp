#include <gtest/gtest.h>

#include "host/Host.h"
#include "tests/support/TestWorld.h"

namespace Macsecd {
namespace {

using Macsec::Brine::MessageCounters;

struct NoSink final : Codec::FrameSink {
  void send(Lumo::IntfId, std::span<uint8_t const>) override {}
};

class HostCounters : public ::testing::Test {
 protected:
  void begin(HostOptions options) {
    host = std::make_unique<Host>(world, "switch", sink, options);
    host->interfaceIs(kIntf, Lumo::EthAddr({2, 0, 0, 0, 0, 1}), 1);
    SwitchConfig config;
    ProfileConfig profile;
    profile.name = "one";
    profile.key = KeyConfig{"6162", "0123456789abcdef0123456789abcdef"};
    config.profiles.push_back(profile);
    config.interfaces.push_back({"Ethernet1", "one", 1});
    host->configIs(config);
    host->start();
    host->linkIs(kIntf, true);
  }
  void receiveShortFrame() { host->receive(kIntf, {}); }
  static uint64_t refused(MessageCounters& counters) {
    return counters.value(kIntf, Macsec::MessageCounterDirection::rx,
                          Macsec::MessageCounterType::failure,
                          Macsec::MessageCounterFailureSubType::eapolErr);
  }
  uint64_t refusedSinceClearing() {
    return host->counters()->valueSinceSnapshot(kIntf, Macsec::MessageCounterDirection::rx,
                                                Macsec::MessageCounterType::failure,
                                                Macsec::MessageCounterFailureSubType::eapolErr);
  }

  static inline Lumo::IntfId const kIntf{"Ethernet1"};
  Support::TestWorld world;
  Vesk::WorldScope scope{world};
  NoSink sink;
  std::unique_ptr<Host> host;
};

TEST_F(HostCounters, AreATableOfItsOwnUnlessItIsGivenOne) {
  begin({});
  receiveShortFrame();
  EXPECT_EQ(refused(*host->counters()), 1u);
  auto const shared = MessageCounters::inProcess("shared");
  begin({.counters = shared});
  receiveShortFrame();
  EXPECT_EQ(host->counters(), shared);
  EXPECT_EQ(refused(*shared), 1u);
}

TEST_F(HostCounters, GoOnOverAStopAndARestart) {
  begin({});
  receiveShortFrame();
  host->restart();
  receiveShortFrame();
  EXPECT_EQ(refused(*host->counters()), 2u);
  host->stop();
  receiveShortFrame();
  EXPECT_EQ(refused(*host->counters()), 2u) << "nobody receives";
  host->start();
  receiveShortFrame();
  EXPECT_EQ(refused(*host->counters()), 3u);
}

TEST_F(HostCounters, AreClearedThroughTheConfiguration) {
  begin({});
  receiveShortFrame();
  host->config()->clearMkaCountersInc(1);
  EXPECT_EQ(refusedSinceClearing(), 0u);
  EXPECT_EQ(refused(*host->counters()), 1u);
  receiveShortFrame();
  host->restart();
  EXPECT_EQ(refusedSinceClearing(), 1u) << "the snapshot stays";
}

}  // namespace
}  // namespace Macsecd
