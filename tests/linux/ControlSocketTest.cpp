#include "linux/ControlSocket.h"

#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "linux/ControlClient.h"
#include "tests/host/HostFixture.h"

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
      auto const* text = std::get_if<std::string>(&answer);
      std::string const told = text ? *text : std::get<Macsecd::Fault>(answer).what;
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
    pollfd waited[] = {{socket.fd(), POLLIN, 0}, {from.fd(), POLLIN, 0}};
    while (poll(waited, 2, 10000) > 0) {
      socket.run();
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
  ControlSocket socket{a.host, [this] {
                         ++reloads;
                         return std::vector<Macsecd::Mistake>();
                       }};
  std::string const path = ::testing::TempDir() + "/control-" + std::to_string(getpid());
};

TEST_F(ControlSocketTest, AnswersAnotherProcess) {
  ASSERT_EQ(socket.listenAt(path), std::nullopt);
  a.bringUp();
  auto const answer = nlohmann::json::parse(asked(R"({"version":1,"command":"status"})"));
  EXPECT_EQ(answer["result"][0]["interface"], "Ethernet1");
  EXPECT_TRUE(nlohmann::json::parse(asked(R"({"version":1,"command":"reload"})"))["ok"]);
  EXPECT_EQ(reloads, 1);
}

TEST_F(ControlSocketTest, AnswersWithMoreThanASocketHolds) {
  ASSERT_EQ(socket.listenAt(path), std::nullopt);
  a.host.configIs(manyPorts(4000));
  std::string const text = asked(R"({"version":1,"command":"status"})");
  EXPECT_GT(text.size(), 500'000u);
  EXPECT_EQ(nlohmann::json::parse(text)["result"].size(), 4000u);
  EXPECT_EQ(socket.counts(), LineServer::Counts());
}

TEST_F(ControlSocketTest, SaysWhatIsWrongWhenNobodyListens) {
  auto const answer = askAt(path, "{}");
  ASSERT_TRUE(std::holds_alternative<Macsecd::Fault>(answer));
  EXPECT_THAT(std::get<Macsecd::Fault>(answer).what, HasSubstr(path));
  EXPECT_THAT(std::get<Macsecd::Fault>(answer).remedy, HasSubstr("see that macsecd runs"));
}

TEST_F(ControlSocketTest, IsForItsUserAloneWhereThereIsNoGroup) {
  ASSERT_EQ(socket.listenAt(path), std::nullopt);
  struct stat status;
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
}

}  // namespace
}  // namespace Linux
