#include "linux/net/LinkWatch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/if_arp.h>
#include <linux/rtnetlink.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "linux/process/Limits.h"
#include "tests/support/TestWorld.h"

namespace {

/// The links that the kernel tells of next, in parts of so many; none to hear the kernel itself.
struct Storm {
  int links = 0;
  int part = 1;
} storm;

ssize_t nextPart(void* buffer) {
  struct Told {
    nlmsghdr header;
    ifinfomsg info;
  };
  auto* const told = static_cast<Told*>(buffer);
  int const count = std::min(storm.part, storm.links);
  for (int i = 0; i < count; ++i) {
    told[i] = {{sizeof(Told), RTM_DELLINK, 0, 0, 0}, {}};
    told[i].info.ifi_type = ARPHRD_ETHER;
    told[i].info.ifi_index = storm.links--;
  }
  return count * static_cast<ssize_t>(sizeof(Told));
}

}  // namespace

// In place of the C library's, for the whole of this program.
extern "C" ssize_t recvfrom(int socket, void* buffer, size_t size, int flags, sockaddr* from,
                            socklen_t* fromSize) {
  if (storm.links > 0) return std::memset(from, 0, *fromSize), nextPart(buffer);
  return syscall(SYS_recvfrom, socket, buffer, size, flags, from, fromSize);
}

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

TEST(LinkWatch, GivesTheLoopBackBetweenManyLinks) {
  constexpr int kLinks = 4 * Limits::kLinksPerTurn;
  for (int const part : {1, 10}) {
    Watched watched;
    watched.runUntilSynced(1);
    auto const before = watched.watch.counts().messages;
    storm = {kLinks, part};
    watched.watch.run();
    auto const heard = watched.watch.counts().messages - before;
    EXPECT_GE(heard, Limits::kLinksPerTurn);
    EXPECT_LT(heard, Limits::kLinksPerTurn + static_cast<uint64_t>(part));
    for (int turn = 0; turn < 4; ++turn) watched.watch.run();
    EXPECT_GE(watched.watch.counts().messages - before, uint64_t{kLinks}) << "none is left out";
  }
}

}  // namespace
}  // namespace Linux
