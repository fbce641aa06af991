#include "linux/serve/MetricsServer.h"

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <vector>

#include "tests/linux/Settle.h"

namespace Linux {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class MetricsServerTest : public ::testing::Test {
 protected:
  void listen(std::string const& address = "127.0.0.1:0") {
    ASSERT_TRUE(server.listenAt(address));
    ASSERT_NE(server.port(), 0);
  }
  Descriptor connected() const {
    Descriptor fd(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(server.port());
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(connect(fd.fd(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    return fd;
  }
  static void put(Descriptor const& fd, std::string const& text) {
    EXPECT_EQ(send(fd.fd(), text.data(), text.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(text.size()));
  }
  /// All that comes until the server ends the connection.
  std::string answer(Descriptor const& fd) {
    std::string all;
    pollfd waited[] = {{loop.fd(), POLLIN, 0}, {fd.fd(), POLLIN, 0}};
    while (poll(waited, 2, 10000) > 0) {
      settle(loop);
      if (waited[1].revents == 0) continue;
      char part[65536];
      ssize_t const got = recv(fd.fd(), part, sizeof part, 0);
      if (got <= 0) return all;
      all.append(part, static_cast<size_t>(got));
    }
    ADD_FAILURE() << "no end";
    return all;
  }
  std::string asked(std::string const& request) {
    Descriptor const fd = connected();
    put(fd, request);
    return answer(fd);
  }

  std::string text = "macsecd_port_secured{interface=\"e1\"} 1\n";
  int made = 0;
  EventLoop loop;
  MetricsServer server{loop, [this] {
                         ++made;
                         return text;
                       }};
};

TEST_F(MetricsServerTest, GivesTheMetricsToWhoeverAsks) {
  listen();
  for (int i = 1; i <= 20; ++i) {
    std::string const told = asked("GET /metrics HTTP/1.1\r\nHost: localhost\r\n\r\n");
    EXPECT_THAT(told, StartsWith("HTTP/1.0 200 OK\r\n"
                                 "Content-Type: text/plain; version=0.0.4; charset=utf-8\r\n"
                                 "Content-Length: " +
                                 std::to_string(text.size()) + "\r\n"));
    EXPECT_THAT(told, EndsWith("\r\n\r\n" + text));
    EXPECT_EQ(made, i);
  }
}

TEST_F(MetricsServerTest, GivesMoreThanASocketHolds) {
  listen();
  text.assign(20'000'000, 'x');
  EXPECT_THAT(asked("GET /metrics HTTP/1.0\r\n\r\n").size(), ::testing::Gt(20'000'000u));
}

TEST_F(MetricsServerTest, WaitsForARequestInPieces) {
  listen();
  Descriptor const fd = connected();
  for (char const c : std::string("GET /metrics HTTP/1.0\r\n\r")) {
    put(fd, std::string(1, c));
    settle(loop);
  }
  EXPECT_EQ(made, 0);
  put(fd, "\n");
  EXPECT_THAT(answer(fd), EndsWith(text));
}

TEST_F(MetricsServerTest, RefusesWhatItDoesNotKnow) {
  listen();
  EXPECT_THAT(asked("GET / HTTP/1.0\r\n\r\n"), StartsWith("HTTP/1.0 404 "));
  EXPECT_THAT(asked("POST /metrics HTTP/1.0\r\n\r\n"), StartsWith("HTTP/1.0 405 "));
  EXPECT_THAT(asked("\r\n\r\n"), StartsWith("HTTP/1.0 400 "));
  EXPECT_THAT(asked("GET /metrics\r\n\r\n"), StartsWith("HTTP/1.0 400 "));
  EXPECT_THAT(asked(std::string(9000, 'x')), StartsWith("HTTP/1.0 431 "));
  EXPECT_EQ(made, 0);
  EXPECT_THAT(asked("HEAD /metrics HTTP/1.0\r\n\r\n"), EndsWith("\r\n\r\n"));
}

TEST_F(MetricsServerTest, IsNotHeldUpBySilentConnections) {
  listen();
  std::vector<Descriptor> silent;
  for (int i = 0; i < 40; ++i) {
    silent.push_back(connected());
    settle(loop);
  }
  EXPECT_THAT(asked("GET /metrics HTTP/1.0\r\n\r\n"), EndsWith(text));
  char octet;
  EXPECT_EQ(recv(silent[0].fd(), &octet, 1, MSG_DONTWAIT), 0);
}

TEST_F(MetricsServerTest, AnswersThoughNobodyReadsTheAnswersOfAllItsConnections) {
  listen();
  text.assign(20'000'000, 'x');
  std::vector<Descriptor> deaf;
  for (int i = 0; i < 8; ++i) {
    deaf.push_back(connected());
    put(deaf.back(), "GET /metrics HTTP/1.0\r\n\r\n");
    settle(loop);
  }
  text = "small\n";
  EXPECT_THAT(asked("GET /metrics HTTP/1.0\r\n\r\n"), EndsWith("\r\n\r\nsmall\n"));
}

TEST_F(MetricsServerTest, EndsWithoutAnAnswerWhenARequestIsNeverFinished) {
  listen();
  Descriptor const fd = connected();
  put(fd, "GET /metrics HTTP/1.0\r\n");
  shutdown(fd.fd(), SHUT_WR);
  EXPECT_EQ(answer(fd), "");
}

// A connection that can't be taken would keep the loop busy for as long as it waits.
TEST_F(MetricsServerTest, TurnsAwayWhoConnectsWhileTheProcessHasNoDescriptorLeft) {
  listen();
  Descriptor const late = connected();
  std::vector<Descriptor> all;
  do {
    all.emplace_back(dup(STDERR_FILENO));
  } while (all.back().isOpen());
  settle(loop);
  char octet;
  EXPECT_EQ(recv(late.fd(), &octet, 1, MSG_DONTWAIT), 0);
  all.clear();
  EXPECT_THAT(asked("GET /metrics HTTP/1.0\r\n\r\n"), EndsWith(text));
}

TEST_F(MetricsServerTest, ListensAtTheLoopbackOfEitherProtocol) {
  listen("127.3.2.1:0");
  MetricsServer other(loop, [] { return std::string(); });
  auto const listens = other.listenAt("[::1]:0");
  // A machine without IPv6 says so.
  if (!listens) {
    EXPECT_THAT(listens.fault().text(), HasSubstr("[::1]:0: "));
  } else {
    EXPECT_NE(other.port(), 0);
  }
}

TEST_F(MetricsServerTest, RefusesAddressesThatOthersCouldReach) {
  for (char const* const address :
       {"0.0.0.0:9464", "192.0.2.1:9464", "[::]:9464", "[2001:db8::1]:9464"}) {
    auto const listens = server.listenAt(address);
    ASSERT_FALSE(listens) << address;
    EXPECT_THAT(listens.fault().text(),
                HasSubstr("others could reach it; name a loopback address"));
  }
  for (char const* const address :
       {"", "9464", "127.0.0.1", "127.0.0.1:", "127.0.0.1:65536", "localhost:9464", "::1:9464"}) {
    auto const listens = server.listenAt(address);
    ASSERT_FALSE(listens) << address;
    EXPECT_THAT(listens.fault().text(), HasSubstr("is no address with a port")) << address;
  }
}

TEST_F(MetricsServerTest, SaysThatSomebodyElseListensThere) {
  listen();
  MetricsServer other(loop, [] { return std::string(); });
  auto const listens = other.listenAt("127.0.0.1:" + std::to_string(server.port()));
  ASSERT_FALSE(listens);
  EXPECT_THAT(listens.fault().text(),
              HasSubstr("stop the program that listens there, or name another port"));
}

}  // namespace
}  // namespace Linux
