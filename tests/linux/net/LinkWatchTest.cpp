#include "linux/net/LinkWatch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>

#include "tests/support/TestWorld.h"

namespace Linux {
namespace {

/// On the interfaces of the machine that the test runs on, whatever they are.
struct Watched {
  void runUntilSynced(int times) {
    for (int i = 0; i < 100 && synced < times; ++i) {
      pollfd source{watch.fd(), POLLIN, 0};
      ASSERT_EQ(poll(&source, 1, 5000), 1);
      watch.run();
    }
    ASSERT_EQ(synced, times);
  }

  Support::TestWorld world;
  Vesk::WorldScope scope{world};
  int synced = 0;
  std::vector<LinkChange> changes;
  LinkTable table{[this](LinkChange const& change) { changes.push_back(change); }};
  LinkWatch watch{table, [this] { ++synced; }};
};

TEST(LinkWatch, AsksForAllInterfacesFirst) {
  Watched watched;
  watched.runUntilSynced(1);
  EXPECT_EQ(watched.watch.counts().resyncs, 1u);
  EXPECT_EQ(watched.watch.counts().errors, 0u);
  EXPECT_EQ(watched.watch.nextTime(), std::numeric_limits<double>::infinity());
}

TEST(LinkWatch, DropsInAResynchronisationWhatTheKernelDoesNotKnow) {
  Watched watched;
  watched.runUntilSynced(1);
  watched.table.linkIs({0x7ffffff, "vanished", {}, true});
  watched.changes.clear();
  watched.watch.resync();
  watched.runUntilSynced(2);
  ASSERT_FALSE(watched.changes.empty());
  EXPECT_EQ(watched.changes.back().what, LinkChange::What::gone);
  EXPECT_EQ(watched.changes.back().link.name, "vanished");
}

TEST(LinkWatch, AsksAgainAfterAnAnswerThatIsUnderWay) {
  Watched watched;
  watched.watch.resync();
  watched.watch.resync();
  watched.runUntilSynced(1);
  EXPECT_EQ(watched.watch.counts().resyncs, 1u);
  EXPECT_EQ(watched.watch.counts().errors, 0u);
}

}  // namespace
}  // namespace Linux
