#include "linux/serve/EapKeyFeed.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <filesystem>
#include <fstream>

#include "host/Host.h"
#include "linux/serve/LineBuffer.h"
#include "platform/WardcodeLib.h"
#include "tests/linux/Settle.h"
#include "tests/support/TestWorld.h"

namespace Linux {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

Lumo::IntfId const kIntf("Ethernet1");
char const* const kOk = "{\"ok\":true}\n";

std::string octets(unsigned first, unsigned last) {
  std::string digits;
  for (unsigned octet = first; octet <= last; ++octet) {
    digits += "0123456789abcdef"[octet >> 4];
    digits += "0123456789abcdef"[octet & 15];
  }
  return digits;
}

std::string keyLine(std::string const& interface = "Ethernet1", int type = 0) {
  return R"({"interface":")" + interface + R"(","type":)" + std::to_string(type) + R"(,"msk":")" +
         octets(0x40, 0x7f) + R"(","session-id":"0d)" + octets(0x80, 0xbf) +
         R"(","first-addr":"02:00:00:00:00:01","second-addr":"02:00:00:00:00:02"})" + "\n";
}

/// The other program's end of a connection.
class Client {
 public:
  explicit Client(std::string const& path)
      : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    connected = connect(socket_.fd(), reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
  }
  /// Writes as much as goes; returns how much that was.
  size_t send(std::string_view text) {
    ssize_t const sent = ::send(socket_.fd(), text.data(), text.size(), MSG_NOSIGNAL);
    return sent < 0 ? 0 : static_cast<size_t>(sent);
  }
  void finish() { shutdown(socket_.fd(), SHUT_WR); }
  void leave() { socket_ = Descriptor(); }
  /// What has been answered since.
  std::string answers() {
    std::string all;
    char buffer[4096];
    ssize_t got = 0;
    while ((got = recv(socket_.fd(), buffer, sizeof buffer, 0)) > 0) {
      all.append(buffer, static_cast<size_t>(got));
    }
    ended = got == 0 || errno == ECONNRESET;
    return all;
  }

  bool connected = false;
  bool ended = false;

 private:
  Descriptor socket_;
};

class EapKeyFeeds : public ::testing::Test {
 protected:
  EapKeyFeeds() : folder_(::testing::TempDir() + "/eap-" + std::to_string(getpid())) {
    std::filesystem::remove_all(folder_);
    std::filesystem::create_directory(folder_);
  }
  ~EapKeyFeeds() override { std::filesystem::remove_all(folder_); }

  bool isReadable() const {
    pollfd waited{loop_.fd(), POLLIN, 0};
    return poll(&waited, 1, 0) == 1;
  }
  std::string asked(Client& client, std::string const& text) {
    EXPECT_EQ(client.send(text), text.size());
    settle(loop_);
    return client.answers();
  }

  Support::TestWorld world_;
  Vesk::WorldScope scope_{world_};
  EventLoop loop_;
  std::string const folder_;
  std::string const path_ = folder_ + "/eap-keys";
  Vesk::Ptr<Dot1x::EapKeyStatus> keys_ = Dot1x::EapKeyStatus::EapKeyStatusIs("keys");
};

/// A feed that listens.
class EapKeyFeedTest : public EapKeyFeeds {
 protected:
  EapKeyFeedTest() { EXPECT_TRUE(feed_.listenAt(path_)); }
  EapKeyFeed feed_{loop_, keys_};
};

TEST_F(EapKeyFeedTest, APublishedKeyIsThereUnderItsInterfaceUntilItIsWithdrawn) {
  Client client(path_);
  EXPECT_EQ(asked(client, keyLine("Ethernet7", 1)), kOk);
  auto const* const key = keys_->key(Lumo::IntfId("Ethernet7"));
  ASSERT_NE(key, nullptr);
  EXPECT_EQ(key->type(), 1);
  EXPECT_EQ(WardcodeLib::doDecodeKey(key->masterSessionKey()), octets(0x40, 0x7f).c_str());
  EXPECT_EQ(asked(client, "{\"interface\":\"Ethernet7\",\"withdrawn\":true}\n"), kOk);
  EXPECT_EQ(keys_->key(Lumo::IntfId("Ethernet7")), nullptr);
  EXPECT_EQ(feed_.counts(), (EapKeyFeed::Counts{.published = 1, .withdrawn = 1}));
}

TEST_F(EapKeyFeedTest, ThereIsNothingToDoUntilSomebodySaysSomething) {
  EXPECT_FALSE(isReadable());
  settle(loop_);
  Client client(path_);
  EXPECT_TRUE(isReadable());
  settle(loop_);
  EXPECT_EQ(feed_.clients(), 1u);
  client.send("{");
  EXPECT_TRUE(isReadable());
}

TEST_F(EapKeyFeedTest, TheEndOfAConnectionWithdrawsNothing) {
  Client client(path_);
  asked(client, keyLine());
  client.leave();
  settle(loop_);
  EXPECT_EQ(feed_.clients(), 0u);
  EXPECT_NE(keys_->key(kIntf), nullptr);
}

TEST_F(EapKeyFeedTest, LinesOfAClientThatDoesNotWaitForAnswersAreAllTaken) {
  Client client(path_);
  client.send(keyLine("Ethernet1") + keyLine("Ethernet2") + keyLine("Ethernet3"));
  client.leave();
  settle(loop_);
  for (char const* const name : {"Ethernet1", "Ethernet2", "Ethernet3"}) {
    EXPECT_NE(keys_->key(Lumo::IntfId(name)), nullptr);
  }
  EXPECT_EQ(feed_.counts().slowReaders, 0u);
}

TEST_F(EapKeyFeedTest, ALineInPiecesOfAnySizeIsOneLine) {
  Client client(path_);
  std::string const line = keyLine();
  for (size_t size : {1u, 7u, 64u, 200u}) {
    keys_->keyDel(kIntf);
    std::string answers;
    for (size_t at = 0; at < line.size(); at += size) {
      EXPECT_EQ(answers, "");
      answers += asked(client, line.substr(at, size));
    }
    EXPECT_EQ(answers, kOk);
    EXPECT_NE(keys_->key(kIntf), nullptr);
  }
}

TEST_F(EapKeyFeedTest, TwoLinesAtOnceAndABitOfAThirdAreAnsweredInOrder) {
  Client client(path_);
  std::string const third = keyLine("Ethernet3");
  std::string const answers =
      asked(client, keyLine("Ethernet1") + "nonsense\n" + third.substr(0, 50));
  EXPECT_THAT(answers, StartsWith(std::string(kOk) + "{\"error\":"));
  EXPECT_EQ(asked(client, third.substr(50)), kOk);
  EXPECT_EQ(feed_.counts(), (EapKeyFeed::Counts{.published = 2, .refusedLines = 1}));
}

TEST_F(EapKeyFeedTest, ABadLineIsAnsweredWithWhatToDoAndChangesNothing) {
  Client client(path_);
  asked(client, keyLine());
  Dot1x::EapKey const before = *keys_->key(kIntf);
  EXPECT_EQ(asked(client, keyLine("Ethernet1", 2)),
            "{\"error\":\"'type' 2 stands for a key that is configured\","
            "\"remedy\":\"give 0 (may be key server) or 1 (may not)\"}\n");
  EXPECT_EQ(*keys_->key(kIntf), before);
  EXPECT_FALSE(client.ended);
}

TEST_F(EapKeyFeedTest, ALineOfTheLimitIsTakenAndALongerOneEndsTheConnection) {
  Client client(path_);
  std::string line = keyLine();
  line.insert(line.size() - 1, LineBuffer::kMaxLine + 1 - line.size(), ' ');
  EXPECT_EQ(asked(client, line), kOk);
  EXPECT_THAT(asked(client, " " + line), HasSubstr("a line of more than 4096 octets"));
  EXPECT_TRUE(client.ended);
  EXPECT_EQ(feed_.clients(), 0u);
}

TEST_F(EapKeyFeedTest, AConnectionThatEndsWithinALineIsToldSo) {
  Client client(path_);
  std::string const line = keyLine();
  client.send(line.substr(0, line.size() - 1));
  client.finish();
  settle(loop_);
  EXPECT_THAT(client.answers(), HasSubstr("the connection ended within a line"));
  EXPECT_TRUE(client.ended);
  EXPECT_EQ(keys_->key(kIntf), nullptr);
}

TEST_F(EapKeyFeedTest, SilentClientsHoldNobodyUpAndTheOneSilentForLongestMakesRoom) {
  std::vector<std::unique_ptr<Client>> silent;
  for (int i = 0; i < 16; ++i) silent.push_back(std::make_unique<Client>(path_));
  settle(loop_);
  EXPECT_EQ(asked(*silent[0], keyLine()), kOk);
  Client late(path_);
  EXPECT_EQ(asked(late, keyLine()), kOk);
  EXPECT_THAT(silent[1]->answers(), HasSubstr("another connection needed the place"));
  EXPECT_TRUE(silent[1]->ended);
  EXPECT_EQ(silent[0]->answers(), "");
  EXPECT_FALSE(silent[0]->ended);
  EXPECT_EQ(feed_.counts(), (EapKeyFeed::Counts{.published = 2, .madeRoom = 1}));
}

TEST_F(EapKeyFeedTest, ALineThatHasComeIsTakenThoughItsConnectionIsTheOldest) {
  std::vector<std::unique_ptr<Client>> clients;
  for (int i = 0; i < 16; ++i) clients.push_back(std::make_unique<Client>(path_));
  settle(loop_);
  Client late(path_);
  clients[0]->send(keyLine());
  settle(loop_);
  EXPECT_EQ(clients[0]->answers(), kOk);
  EXPECT_NE(keys_->key(kIntf), nullptr);
  EXPECT_EQ(feed_.counts().madeRoom, 1u);
}

TEST_F(EapKeyFeedTest, WhoDoesNotReadTheAnswersIsDropped) {
  Client client(path_);
  settle(loop_);
  for (int i = 0; i < 10000 && feed_.clients() == 1; ++i) {
    client.send(std::string(1000, '\n'));
    loop_.runNext();
  }
  EXPECT_EQ(feed_.clients(), 0u);
  EXPECT_EQ(feed_.counts().slowReaders, 1u);
}

TEST_F(EapKeyFeedTest, OnlyItsOwnUserCanReachTheFileAndItGoesWithTheFeed) {
  struct stat status;
  ASSERT_EQ(stat(path_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode, static_cast<mode_t>(S_IFSOCK | 0600));
  {
    EapKeyFeed other(loop_, keys_);
    EXPECT_TRUE(other.listenAt(folder_ + "/other"));
  }
  EXPECT_FALSE(std::filesystem::exists(folder_ + "/other"));
}

TEST_F(EapKeyFeeds, AUserWhoIsNotNamedIsToldAndGoesWithoutBeingHeard) {
  Vesk::TraceHandle::streamLevelsIs("StreamServer", Vesk::kAllTraceLevels);
  EapKeyFeed feed(loop_, keys_, {.users = {geteuid() + 1}});
  ASSERT_TRUE(feed.listenAt(path_));
  struct stat status;
  ASSERT_EQ(stat(path_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0666u);
  Client client(path_);
  std::string const who = "user " + std::to_string(geteuid());
  EXPECT_THAT(asked(client, keyLine()), HasSubstr(who + " may not publish keys"));
  EXPECT_TRUE(client.ended);
  EXPECT_TRUE(keys_->key().empty());
  EXPECT_EQ(feed.counts(), (EapKeyFeed::Counts{.refusedUsers = 1}));
  EXPECT_EQ(world_.traced("Refusing the connection of " + who), 1u);
  Vesk::TraceHandle::streamLevelsIs("StreamServer", 0);
}

TEST_F(EapKeyFeeds, ASocketThatNobodyListensOnIsReplaced) {
  {
    Descriptor const left(::socket(AF_UNIX, SOCK_STREAM, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path_.copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(bind(left.fd(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  }
  EapKeyFeed feed(loop_, keys_);
  ASSERT_TRUE(feed.listenAt(path_));
  Client client(path_);
  EXPECT_EQ(asked(client, keyLine()), kOk);
}

TEST_F(EapKeyFeeds, ASocketThatSomebodyListensOnIsLeftToHim) {
  EapKeyFeed first(loop_, keys_);
  ASSERT_TRUE(first.listenAt(path_));
  EapKeyFeed second(loop_, keys_);
  EXPECT_EQ(second.listenAt(path_).fault().text(),
            path_ + ": another process listens there; stop it, or name another path");
  Client client(path_);
  EXPECT_EQ(asked(client, keyLine()), kOk);
}

TEST_F(EapKeyFeeds, AFileOfAnotherKindIsLeftAsItIs) {
  std::ofstream(path_) << "mine";
  EapKeyFeed feed(loop_, keys_);
  EXPECT_EQ(feed.listenAt(path_).fault().text(),
            path_ + ": isn't a socket; name another path, or remove it");
  EXPECT_EQ(std::filesystem::file_size(path_), 4u);
  EXPECT_THAT(feed.listenAt(folder_ + "/none/eap-keys").fault().what, HasSubstr("can't be made"));
  EXPECT_THAT(feed.listenAt(std::string(108, 'p')).fault().what,
              HasSubstr("is no path for a socket"));
  settle(loop_);
}

/// A switch whose profile takes its keys from 802.1X.
class Switch final : public Codec::FrameSink {
 public:
  Switch() {
    Macsecd::SwitchConfig config;
    Macsecd::ProfileConfig profile;
    profile.name = "one";
    profile.dot1x = true;
    config.profiles.push_back(profile);
    config.interfaces.push_back({"Ethernet1", "one", 1});
    host.interfaceIs(kIntf, Lumo::EthAddr({2, 0, 0, 0, 0, 1}), 1);
    host.configIs(config);
    host.start();
    host.linkIs(kIntf, true);
  }
  void send(Lumo::IntfId, std::span<uint8_t const>) override {}
  Macsec::Cak key() const { return host.status()->intfStatus(kIntf)->key(); }

  Macsecd::Host host{Vesk::world(), "switch", *this};
};

TEST_F(EapKeyFeeds, APublishedKeyLeadsAPortToItsKeyAndAWithdrawalLeavesItThere) {
  Switch s;
  EapKeyFeed feed(loop_, s.host.eapKeyStatus());
  ASSERT_TRUE(feed.listenAt(path_));
  Client client(path_);
  EXPECT_EQ(s.key(), Macsec::Cak());
  EXPECT_EQ(asked(client, keyLine()), kOk);
  EXPECT_EQ(s.key().ckn(), "f2f3494f070909bce38f4c3616ca1724");
  EXPECT_EQ(WardcodeLib::doDecodeKey(s.key().cak()), "d595492b9b0faadcc045f48ff84d1ded");
  EXPECT_TRUE(s.host.status()->portStatus(kIntf)->actorStatus(s.key().ckn()));
  EXPECT_EQ(asked(client, "{\"interface\":\"Ethernet1\",\"withdrawn\":true}\n"), kOk);
  EXPECT_NE(s.key(), Macsec::Cak());
  s.host.linkIs(kIntf, false);
  EXPECT_EQ(s.key(), Macsec::Cak());
}

}  // namespace
}  // namespace Linux
