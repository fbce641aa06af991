#include "linux/process/NamespaceGuard.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <optional>
#include <stdexcept>

#include "tests/linux/OtherProcess.h"
#include "tests/support/TestWorld.h"

namespace Linux {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

class NamespaceGuards : public ::testing::Test {
 protected:
  std::string error() {
    try {
      NamespaceGuard const guard(name);
    } catch (std::runtime_error const& error) {
      return error.what();
    }
    return "";
  }
  /// Binds the name, as any user can, and listens or not.
  Descriptor take(bool listens) const {
    Descriptor taken(socket(AF_UNIX, SOCK_STREAM, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    name.copy(address.sun_path + 1, name.size());
    auto const size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
    EXPECT_EQ(bind(taken.fd(), reinterpret_cast<sockaddr*>(&address), size), 0);
    EXPECT_EQ(listens ? listen(taken.fd(), 0) : 0, 0);
    return taken;
  }

  Support::TestWorld world;
  Vesk::WorldScope scope{world};
  std::string const name = "macsecd-test-" + std::to_string(getpid());
  std::optional<NamespaceGuard> held;
};

TEST_F(NamespaceGuards, LetOneDaemonRunInANetworkNamespaceAndNameItToTheNext) {
  OtherProcess other([&] { held.emplace(name); });
  ASSERT_TRUE(other.hasActed());
  EXPECT_THAT(error(), AllOf(HasSubstr("process " + std::to_string(other.pid()) + " ("),
                             HasSubstr("secures the interfaces of this network namespace")));
  other.kill();
  EXPECT_EQ(error(), "");
  EXPECT_TRUE(world.logs.empty());
}

TEST_F(NamespaceGuards, LetOneDaemonRunInEachNetworkNamespace) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can make a network namespace";
  held.emplace(name);
  OtherProcess const other([&] {
    if (unshare(CLONE_NEWNET) != 0) _exit(1);
    static NamespaceGuard const guard(name);
  });
  EXPECT_TRUE(other.hasActed());
}

TEST_F(NamespaceGuards, AreNotKeptFromAnyoneByAnotherUserWhoIsTold) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can become another user";
  OtherProcess const other([&] {
    if (setuid(60001) != 0) _exit(1);
    static Descriptor const taken = take(true);
  });
  ASSERT_TRUE(other.hasActed());
  EXPECT_EQ(error(), "");
  ASSERT_EQ(world.logs.size(), 1u);
  EXPECT_THAT(world.logs[0].text, AllOf(HasSubstr("@" + name + " is held by user 60001, process " +
                                                  std::to_string(other.pid()))));
}

TEST_F(NamespaceGuards, AreNotKeptFromAnyoneByASocketThatCannotBeAsked) {
  Descriptor const silent = take(false);
  EXPECT_EQ(error(), "");
  ASSERT_EQ(world.logs.size(), 1u);
  EXPECT_THAT(world.logs[0].text, HasSubstr("a process that can't be asked"));
}

TEST_F(NamespaceGuards, CanBeAskedAgainAndAgain) {
  held.emplace(name);
  for (int i = 0; i < 100; ++i) EXPECT_NE(error(), "");
}

}  // namespace
}  // namespace Linux
