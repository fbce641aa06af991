#include "linux/serve/ControlSocket.h"

#include <grp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "host/client/Pcap.h"
#include "linux/client/ControlClient.h"
#include "linux/client/ControlFollow.h"
#include "tests/host/HostFixture.h"
#include "tests/linux/Settle.h"

namespace Linux {
namespace {

using ::testing::HasSubstr;

/// A switch with many ports that haven't got a link.
Macsecd::SwitchConfig manyPorts(size_t count) {
  Macsecd::SwitchConfig config = Macsecd::configWith(Macsecd::kCak);
  config.interfaces.clear();
  for (size_t i = 0; i < count; ++i) {
    config.interfaces.push_back({"Ethernet" + std::to_string(i), "one", 1});
  }
  return config;
}

class ControlSocketTest : public ::testing::Test {
 protected:
  /// What a process gets that asks, while the socket is served.
  std::string asked(std::string const& request) {
    int pipes[2];
    EXPECT_EQ(pipe(pipes), 0);
    pid_t const other = fork();
    if (other == 0) {
      auto const answer = askAt(path, request);
      std::string const told = answer ? *answer : answer.fault().what;
      for (size_t at = 0; at < told.size();) {
        ssize_t const wrote = write(pipes[1], told.data() + at, told.size() - at);
        if (wrote <= 0) _exit(1);
        at += static_cast<size_t>(wrote);
      }
      _exit(0);
    }
    close(pipes[1]);
    Descriptor const from(pipes[0]);
    std::string told;
    pollfd waited[] = {{loop.fd(), POLLIN, 0}, {from.fd(), POLLIN, 0}};
    while (poll(waited, 2, 10000) > 0) {
      settle(loop);
      if (!(waited[1].revents & (POLLIN | POLLHUP))) continue;
      char part[4096];
      ssize_t const got = read(from.fd(), part, sizeof part);
      if (got <= 0) break;
      told.append(part, static_cast<size_t>(got));
    }
    waitpid(other, nullptr, 0);
    return told;
  }

  Macsecd::Switch a{1};
  int reloads = 0;
  EventLoop loop;
  ControlSocket socket{loop, a.host, [this] {
                         ++reloads;
                         return std::vector<Macsecd::Diagnostic>();
                       }};
  std::string const path = ::testing::TempDir() + "/control-" + std::to_string(getpid());
};

TEST_F(ControlSocketTest, AnswersAnotherProcess) {
  ASSERT_TRUE(socket.listenAt(path));
  a.bringUp();
  auto const answer = nlohmann::json::parse(asked(R"({"version":2,"command":"status"})"));
  EXPECT_EQ(answer["result"][0]["interface"], "Ethernet1");
  EXPECT_TRUE(nlohmann::json::parse(asked(R"({"version":2,"command":"reload"})"))["ok"]);
  EXPECT_EQ(reloads, 1);
}

TEST_F(ControlSocketTest, AnswersWithMoreThanASocketHolds) {
  ASSERT_TRUE(socket.listenAt(path));
  a.host.configIs(manyPorts(4000));
  std::string const text = asked(R"({"version":2,"command":"status"})");
  EXPECT_GT(text.size(), 500'000u);
  EXPECT_EQ(nlohmann::json::parse(text)["result"].size(), 4000u);
  EXPECT_EQ(socket.counts(), StreamServer::Counts());
}

TEST_F(ControlSocketTest, SaysWhatIsWrongWhenNobodyListens) {
  auto const answer = askAt(path, "{}");
  ASSERT_FALSE(answer);
  EXPECT_THAT(answer.fault().what, HasSubstr(path));
  EXPECT_THAT(answer.fault().remedy, HasSubstr("check that macsecd runs"));
}

TEST_F(ControlSocketTest, IsForItsUserAloneWhereThereIsNoGroup) {
  ASSERT_TRUE(socket.listenAt(path));
  struct stat status;
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
}

/// A connection of this process itself.
Descriptor connectedTo(std::string const& path) {
  Descriptor fd(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  EXPECT_EQ(connect(fd.fd(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  return fd;
}

std::string readAll(Descriptor const& fd) {
  std::string text;
  char part[65536];
  for (ssize_t got; (got = read(fd.fd(), part, sizeof part)) > 0;) {
    text.append(part, static_cast<size_t>(got));
  }
  return text;
}

TEST_F(ControlSocketTest, TellsEventsToAConnectionThatStaysOpen) {
  ASSERT_TRUE(socket.listenAt(path));
  a.bringUp();
  Descriptor const watching = connectedTo(path);
  std::string const request = "{\"version\":2,\"command\":\"watch\"}\n";
  ASSERT_GT(write(watching.fd(), request.data(), request.size()), 0);
  settle(loop);
  EXPECT_EQ(readAll(watching), "{\"version\":2,\"ok\":true,\"result\":null}\n");
  a.host.hardwareFaultIs(Macsecd::kIntf, "no room");
  EXPECT_THAT(readAll(watching), HasSubstr("\"fault\":\"no room\""));
  shutdown(watching.fd(), SHUT_RDWR);
  settle(loop);
  EXPECT_TRUE(a.world.attributeFollowers().empty());
}

/// Connections that are open and say nothing.
std::vector<Descriptor> silentOnes(size_t count, std::string const& path, EventLoop& loop) {
  std::vector<Descriptor> all;
  for (size_t i = 0; i < count; ++i) {
    all.push_back(connectedTo(path));
    settle(loop);
  }
  return all;
}

TEST_F(ControlSocketTest, AnswersThoughSilentConnectionsHoldEveryPlace) {
  ASSERT_TRUE(socket.listenAt(path));
  auto const silent = silentOnes(32, path, loop);
  EXPECT_TRUE(nlohmann::json::parse(asked(R"({"version":2,"command":"status"})"))["ok"]);
  EXPECT_EQ(socket.counts(), StreamServer::Counts{.madeRoom = 1});
  EXPECT_THAT(readAll(silent[0]), HasSubstr("another connection needed the place"));
}

TEST_F(ControlSocketTest, WhoWatchesKeepsItsPlaceBeforeWhoIsSilent) {
  ASSERT_TRUE(socket.listenAt(path));
  Descriptor const watching = connectedTo(path);
  std::string const request = "{\"version\":2,\"command\":\"watch\"}\n";
  ASSERT_GT(write(watching.fd(), request.data(), request.size()), 0);
  settle(loop);
  auto const silent = silentOnes(40, path, loop);
  EXPECT_EQ(socket.counts().madeRoom, 9u);
  EXPECT_EQ(readAll(watching), "{\"version\":2,\"ok\":true,\"result\":null}\n");
  EXPECT_THAT(readAll(silent[0]), HasSubstr("another connection needed the place"));
}

/// Makes root another user, of a group that may look, for as long as this lives.
class OtherUser {
 public:
  explicit OtherUser(uid_t user) {
    EXPECT_EQ(setegid(getgrnam(kGroup)->gr_gid), 0);
    EXPECT_EQ(seteuid(user), 0);
  }
  ~OtherUser() {
    EXPECT_EQ(seteuid(0), 0);
    EXPECT_EQ(setegid(0), 0);
  }
  static constexpr char const* kGroup = "nogroup";
};

TEST(ControlSocketPlaces, OneUserWhoWatchesWithEveryPlaceShutsNobodyOut) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can connect as several users";
  Macsecd::Switch a{1};
  EventLoop loop;
  ControlSocket socket(loop, a.host, nullptr, {.group = OtherUser::kGroup});
  std::string const path = "/tmp/control-places-" + std::to_string(getpid());
  ASSERT_TRUE(socket.listenAt(path));
  auto const watchAs = [&](uid_t user) {
    std::optional<OtherUser> other(user);
    Descriptor fd = connectedTo(path);
    other.reset();
    std::string const request = "{\"version\":2,\"command\":\"watch\"}\n";
    EXPECT_GT(write(fd.fd(), request.data(), request.size()), 0);
    settle(loop);
    return fd;
  };
  std::vector<Descriptor> greedy;
  for (int i = 0; i < 33; ++i) greedy.push_back(watchAs(60001));
  EXPECT_EQ(socket.counts(), StreamServer::Counts{.turnedAway = 1});
  EXPECT_THAT(readAll(greedy.back()), HasSubstr("too many connections"));
  Descriptor const modest = watchAs(60002);
  Descriptor const root = watchAs(0);
  EXPECT_THAT(readAll(modest), HasSubstr("\"ok\":true"));
  EXPECT_THAT(readAll(root), HasSubstr("\"ok\":true"));
  EXPECT_EQ(socket.counts(), (StreamServer::Counts{.turnedAway = 1, .madeRoom = 2}));
}

TEST_F(ControlSocketTest, EndsAConnectionThatDoesNotReadWhatItIsTold) {
  ASSERT_TRUE(socket.listenAt(path));
  a.bringUp();
  Descriptor const capturing = connectedTo(path);
  std::string const request =
      "{\"version\":2,\"command\":\"capture\",\"interface\":\"Ethernet1\"}\n";
  ASSERT_GT(write(capturing.fd(), request.data(), request.size()), 0);
  settle(loop);
  std::vector<uint8_t> const frame(1000, 0x5a);
  for (int i = 0; i < 2000; ++i) a.host.receive(Macsecd::kIntf, frame);
  EXPECT_EQ(socket.counts().slowReaders, 1u);
  settle(loop);
  std::string const told = readAll(capturing);
  EXPECT_GT(told.size(), 100'000u);
  EXPECT_LT(told.size(), 2'000'000u);
  EXPECT_EQ(read(capturing.fd(), nullptr, 0), 0);
  for (int i = 0; i < 2000; ++i) a.host.receive(Macsecd::kIntf, frame);
  EXPECT_EQ(socket.counts().slowReaders, 1u);
}

/// Runs `follow` in another process, and lets `happens` come about until that one has ended.
class ControlFollowTest : public ControlSocketTest {
 protected:
  int statusOf(std::function<int()> const& follow, std::function<void()> const& happens) {
    pid_t const other = fork();
    if (other == 0) _exit(follow());
    int status = 0;
    pollfd waited{loop.fd(), POLLIN, 0};
    while (waitpid(other, &status, WNOHANG) == 0) {
      if (poll(&waited, 1, 10) > 0) settle(loop);
      happens();
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  ControlFollow follow(size_t count) {
    return {.socket = path, .interface = "Ethernet1", .seconds = 60, .count = count};
  }
  std::string const file = path + ".out";
};

TEST_F(ControlFollowTest, ShowsEventsWithTheTimeOfDay) {
  ASSERT_TRUE(socket.listenAt(path));
  a.bringUp();
  int faults = 0;
  int const status = statusOf(
      [&] {
        std::ofstream out(file);
        return showEvents(follow(2), out, out);
      },
      [&] { a.host.hardwareFaultIs(Macsecd::kIntf, ++faults % 2 != 0 ? "no room" : ""); });
  EXPECT_EQ(status, 0);
  std::ifstream in(file);
  std::string line;
  std::getline(in, line);
  EXPECT_THAT(line, ::testing::MatchesRegex(
                        "[0-9]+-[0-9]+-[0-9]+ [0-9:]+[.][0-9]+  Ethernet1  the hardware .*"));
  std::filesystem::remove(file);
}

TEST_F(ControlFollowTest, WritesFramesThatCanBeReadBack) {
  ASSERT_TRUE(socket.listenAt(path));
  a.bringUp();
  std::vector<uint8_t> frame(60, 0x11);
  int const status = statusOf(
      [&] {
        std::ostringstream out;
        return captureFrames(follow(3), file, out, out);
      },
      [&] {
        ++frame[20];
        a.host.receive(Macsecd::kIntf, frame);
      });
  EXPECT_EQ(status, 0);
  Macsecd::Pcap const pcap = Macsecd::readPcap(file);
  EXPECT_EQ(pcap.fault, "");
  ASSERT_EQ(pcap.frames.size(), 3u);
  EXPECT_EQ(pcap.frames[0].octets.size(), 60u);
  EXPECT_EQ(pcap.frames[1].octets[20], static_cast<uint8_t>(pcap.frames[0].octets[20] + 1));
  std::filesystem::remove(file);
}

TEST_F(ControlFollowTest, SaysWhatIsWrong) {
  ASSERT_TRUE(socket.listenAt(path));
  std::ostringstream err;
  EXPECT_EQ(captureFrames(follow(1), "/no/such/folder/file", err, err), 1);
  EXPECT_THAT(err.str(), HasSubstr("/no/such/folder/file: can't be written"));
  EXPECT_EQ(statusOf(
                [&] {
                  std::ostringstream out;
                  return showEvents({.socket = path, .interface = "Ethernet7"}, out, out);
                },
                [] {}),
            1);
  EXPECT_EQ(showEvents({.socket = path + ".none", .interface = ""}, err, err), 3);
}

}  // namespace
}  // namespace Linux
