#include "host/state/KeyHistory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Macsecd {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr uint64_t kReserved = KeyHistory::kReserved;
constexpr uint64_t kPeer = 0x02000000000b0001;

/// A store in memory that can refuse.
struct Store final : StateStore {
  StateValues readAll() override { return values; }
  Result<> commit(StateChange const& change) override {
    if (isFull) return Fault{"no room", {}};
    apply(change, values);
    ++commits;
    return {};
  }
  StateValues values;
  bool isFull = false;
  int commits = 0;
};

SakId sak(uint32_t number, uint16_t server = 1) {
  std::array<uint8_t, 12> id{0xa1};
  id[10] = static_cast<uint8_t>(server >> 8);
  id[11] = static_cast<uint8_t>(server);
  return {Macsec::MemberIdentifier(id), number};
}

class TheKeyHistory : public ::testing::Test {
 protected:
  /// What a process that follows knows.
  KeyHistory afterDeath() {
    KeyHistory next(&store);
    EXPECT_THAT(next.takeUp(store.values), IsEmpty());
    return next;
  }
  Lumo::IntfId const intf{"eth0"}, other{"eth1"};
  Store store;
  KeyHistory history{&store};
};

TEST_F(TheKeyHistory, BeginsANewKeyWithPacketNumberOne) {
  EXPECT_EQ(history.firstToSend(intf, sak(1), 2), 1u);
  EXPECT_EQ(history.firstToReceive(intf, sak(1), kPeer), 1u);
  EXPECT_FALSE(history.isSpent(intf, sak(1)));
}

TEST_F(TheKeyHistory, BeginsAKeyThatComesBackAboveAllThatMayHaveBeenSent) {
  history.noteSent(intf, sak(1), 2, 1);
  EXPECT_EQ(history.firstToSend(intf, sak(1), 2), 1 + kReserved);
  EXPECT_EQ(history.firstToSend(other, sak(1), 2), 1u);
}

TEST_F(TheKeyHistory, ReservesFurtherNumbersWhileThereAreEnoughLeft) {
  history.noteSent(intf, sak(1), 2, 1);
  int const before = store.commits;
  history.noteSent(intf, sak(1), 2, kReserved / 2);
  EXPECT_EQ(store.commits, before);
  history.noteSent(intf, sak(1), 2, kReserved / 2 + 1);
  EXPECT_EQ(store.commits, before + 1);
  EXPECT_EQ(history.firstToSend(intf, sak(1), 2), kReserved / 2 + 1 + kReserved);
}

TEST_F(TheKeyHistory, IsInTheStoreBeforeTheFirstFrameCanBeSent) {
  history.noteSent(intf, sak(1), 2, 1);
  EXPECT_EQ(afterDeath().firstToSend(intf, sak(1), 2), 1 + kReserved);
}

TEST_F(TheKeyHistory, GivesTheStoreLaterWhatItRefused) {
  store.isFull = true;
  history.noteSent(intf, sak(1), 2, 1);
  EXPECT_FALSE(history.commit());
  store.isFull = false;
  EXPECT_TRUE(history.commit());
  EXPECT_FALSE(history.commit());
  EXPECT_EQ(afterDeath().firstToSend(intf, sak(1), 2), 1 + kReserved);
}

TEST_F(TheKeyHistory, NeverLetsAKeyBeSentWithUnderAnotherSsci) {
  history.bindSsci(intf, sak(1), 2);
  EXPECT_EQ(history.firstToSend(intf, sak(1), 2), 1u);
  EXPECT_EQ(history.firstToSend(intf, sak(1), 1), std::nullopt);
  EXPECT_EQ(afterDeath().firstToSend(intf, sak(1), 1), std::nullopt);
}

TEST_F(TheKeyHistory, NeverLetsASpentKeyBeSentWithAgain) {
  history.spend(intf, sak(1));
  EXPECT_TRUE(history.isSpent(intf, sak(1)));
  EXPECT_EQ(history.firstToSend(intf, sak(1), 2), std::nullopt);
  EXPECT_TRUE(afterDeath().isSpent(intf, sak(1)));
  EXPECT_FALSE(history.isSpent(intf, sak(2)));
}

TEST_F(TheKeyHistory, TakesAKeyWhosePacketNumbersAreUsedUpForSpent) {
  history.noteSent(intf, sak(1), 2, 1);
  history.noteSent(intf, sak(1), 2, 0);
  EXPECT_TRUE(history.isSpent(intf, sak(1)));
  history.noteSent(intf, sak(2), 2, std::numeric_limits<uint64_t>::max() - 5);
  EXPECT_TRUE(history.isSpent(intf, sak(2)));
}

TEST_F(TheKeyHistory, TakesEveryOlderKeyOfAKeyServerForSpentHoweverManyThereWere) {
  for (uint32_t number = 3; number <= 1000; ++number) history.noteSent(intf, sak(number), 2, 1);
  for (uint32_t number : {1u, 2u, 3u, 500u, 996u}) {
    EXPECT_TRUE(history.isSpent(intf, sak(number))) << number;
    EXPECT_EQ(history.firstToSend(intf, sak(number), 2), std::nullopt) << number;
  }
  EXPECT_EQ(history.firstToSend(intf, sak(997), 2), 1 + kReserved);
  EXPECT_EQ(history.firstToSend(intf, sak(1001), 2), 1u);
}

TEST_F(TheKeyHistory, KnowsWhatIsAskedForHoweverManyNewerKeysComeToNothing) {
  history.noteSent(intf, sak(1), 2, 1);
  history.askedIs(intf, {sak(1)});
  for (uint32_t number = 2; number <= 20; ++number) history.bindSsci(intf, sak(number), 2);
  for (KeyHistory const& one : {history, afterDeath()}) {
    EXPECT_FALSE(one.isSpent(intf, sak(1)));
    EXPECT_EQ(one.firstToSend(intf, sak(1), 2), 1 + kReserved);
    for (uint32_t number = 2; number <= 17; ++number) {
      EXPECT_TRUE(one.isSpent(intf, sak(number))) << number;
    }
    EXPECT_FALSE(one.isSpent(intf, sak(20)));
  }
  history.askedIs(intf, {});
  history.bindSsci(intf, sak(21), 2);
  EXPECT_TRUE(history.isSpent(intf, sak(1)));
}

TEST_F(TheKeyHistory, HasRoomForAllKeysThatAreAskedFor) {
  std::vector<SakId> asked;
  for (uint32_t number = 1; number <= 6; ++number) {
    asked.push_back(sak(number));
    history.askedIs(intf, asked);
    history.bindSsci(intf, sak(number), 2);
  }
  for (SakId const& one : asked) EXPECT_FALSE(history.isSpent(intf, one)) << one.number;
}

TEST_F(TheKeyHistory, KeepsAsMuchInTheStoreAsInMemoryAndNoMore) {
  for (uint16_t server = 0; server < 200; ++server) {
    for (uint32_t number = 1; number < 10; ++number)
      history.noteSent(intf, sak(number, server), 2, 1);
  }
  EXPECT_EQ(store.values.size(), KeyHistory::kMostServers);
  EXPECT_FALSE(history.isSpent(intf, sak(1, 0)));
  EXPECT_TRUE(history.isSpent(intf, sak(1, 199)));
}

TEST_F(TheKeyHistory, DropsTheKeyServersOfLongestAgoAfterARestartToo) {
  for (uint16_t server = 200; server > 100; --server) history.noteSent(intf, sak(1, server), 2, 1);
  KeyHistory next = afterDeath();
  next.noteSent(intf, sak(1, 7), 2, 1);
  KeyHistory last = afterDeath();
  EXPECT_EQ(last.firstToSend(intf, sak(1, 7), 2), 1 + kReserved);
  EXPECT_EQ(last.firstToSend(intf, sak(1, 101), 2), 1 + kReserved);
  EXPECT_EQ(last.firstToSend(intf, sak(1, 163), 2), 1 + kReserved);
  EXPECT_EQ(last.firstToSend(intf, sak(1, 164), 2), 1u);
}

TEST_F(TheKeyHistory, GoesOnReceivingWhereItStoodForEachChannel) {
  history.noteReceived(intf, sak(1), kPeer, 77);
  history.noteReceived(intf, sak(1), kPeer, 70);
  EXPECT_EQ(history.firstToReceive(intf, sak(1), kPeer), 77u);
  EXPECT_EQ(history.firstToReceive(intf, sak(1), kPeer + 1), 1u);
  EXPECT_EQ(afterDeath().firstToReceive(intf, sak(1), kPeer), 1u);
  EXPECT_TRUE(history.commit());
  EXPECT_EQ(afterDeath().firstToReceive(intf, sak(1), kPeer), 77u);
}

TEST_F(TheKeyHistory, HoldsInterfacesOfAnyName) {
  Lumo::IntfId const odd("a/b %c");
  history.noteSent(odd, sak(1), 2, 1);
  EXPECT_EQ(afterDeath().firstToSend(odd, sak(1), 2), 1 + kReserved);
}

TEST_F(TheKeyHistory, NamesWhatItCantReadAndTakesTheRest) {
  history.noteSent(intf, sak(1), 2, 1);
  StateValues values = store.values;
  std::string const good = values.begin()->first;
  for (char const* text : {"", "x", "1 1", "1 1:2", "1 1:2:3:z", "1 1:2:3:5", "1 2:1:1 1:1:1"}) {
    values["%keys/eth0/a1a2a3a4a5a6a7a8a9aaabac"] = text;
    values["%keys/eth0"] = "1 1:1:1";
    KeyHistory next;
    EXPECT_THAT(next.takeUp(values),
                ElementsAre("%keys/eth0", "%keys/eth0/a1a2a3a4a5a6a7a8a9aaabac"))
        << text;
    EXPECT_EQ(next.firstToSend(intf, sak(1), 2), 1 + kReserved);
  }
}

TEST_F(TheKeyHistory, KnowsNothingOfAKeyWithoutAMemberIdentifier) {
  EXPECT_FALSE(SakId::of(Macsec::Sak(Macsec::AssociationNumber(0))));
  Macsec::Sak named{Macsec::AssociationNumber(1)};
  named.keyMsgIdIs("a1a2a3a4a5a6a7a8a9aaabac");
  named.keyNumIs(7);
  ASSERT_TRUE(SakId::of(named));
  EXPECT_EQ(SakId::of(named)->number, 7u);
}

}  // namespace
}  // namespace Macsecd
