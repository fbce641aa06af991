#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>

#include <cstring>

#include "linux/serve/EapKeyFeed.h"
#include "platform/SecretOctets.h"
#include "platform/WardcodeLib.h"
#include "tests/support/MemorySearch.h"
#include "tests/support/TestWorld.h"

namespace Linux {
namespace {

constexpr size_t kDigits = 128;

/// Digits of a key that nobody else uses and that lie in memory one behind the other in keys alone.
char digit(size_t at) { return "0123456789abcdef"[(at * at / 3 + 7 * at + 5) % 16]; }

size_t copiesIn(std::string_view octets) {
  std::string wanted;
  for (size_t at = 0; at < 16; ++at) wanted += digit(at);
  size_t copies = 0;
  while (auto const* const found = static_cast<char const*>(
             memmem(octets.data(), octets.size(), wanted.data(), wanted.size()))) {
    ++copies;
    octets.remove_prefix(static_cast<size_t>(found + 1 - octets.data()));
  }
  Macsec::wipe({reinterpret_cast<uint8_t*>(wanted.data()), wanted.size()});
  return copies;
}

/// How many times sixteen digits of the key in a row lie in what this process can write to.
size_t copiesInMemory() { return Support::searchMemory(15, copiesIn); }

/// Another process sends the key, the lines in two pieces each, and waits for the answers.
[[noreturn]] void publish(std::string const& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  int const fd = socket(AF_UNIX, SOCK_STREAM, 0);
  if (connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) _exit(1);
  std::string msk;
  for (size_t at = 0; at < kDigits; ++at) msk += digit(at);
  for (char const* const type : {"0", "2"}) {
    std::string const line = R"({"interface":"Ethernet1","type":)" + std::string(type) +
                             R"(,"msk":")" + msk +
                             R"(","session-id":"0d","first-addr":"02:00:00:00:00:01",)" +
                             R"("second-addr":"02:00:00:00:00:02"})" + "\n";
    char answer[1000];
    send(fd, line.data(), 100, 0);
    send(fd, line.data() + 100, line.size() - 100, 0);
    if (recv(fd, answer, sizeof answer, 0) <= 0) _exit(1);
  }
  send(fd, msk.data(), msk.size(), 0);
  _exit(0);
}

TEST(EapKeyMemory, NoDigitsOfAKeyStayInTheProcessThatTookIt) {
  Support::TestWorld world;
  Vesk::WorldScope scope(world);
  std::string const path = ::testing::TempDir() + "/eap-memory-" + std::to_string(getpid());
  auto const keys = Dot1x::EapKeyStatus::EapKeyStatusIs("keys");
  EventLoop loop;
  EapKeyFeed feed(loop, keys);
  ASSERT_TRUE(feed.listenAt(path));
  pid_t const other = fork();
  if (other == 0) publish(path);
  pollfd waited{loop.fd(), POLLIN, 0};
  while (feed.counts().refusedLines < 2 && poll(&waited, 1, 10000) == 1) loop.runNext();
  int status = -1;
  ASSERT_EQ(waitpid(other, &status, 0), other);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(feed.counts().published, 1u);
  EXPECT_EQ(copiesInMemory(), 0u);

  auto const decoded =
      WardcodeLib::doDecodeKey(keys->key(Lumo::IntfId("Ethernet1"))->masterSessionKey());
  ASSERT_EQ(decoded.size(), kDigits);
  EXPECT_GT(copiesInMemory(), 0u) << "the search doesn't find a copy that is there";
}

}  // namespace
}  // namespace Linux
