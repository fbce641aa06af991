#include "linux/net/EapolSockets.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "linux/process/Limits.h"
#include "linux/process/ProcessWorld.h"
#include "tests/linux/SocketPair.h"

namespace Linux {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

Lumo::IntfId const kFirst("eth0");
Lumo::IntfId const kSecond("eth1");

struct Fixture : ::testing::Test {
  Macsecd::Result<EapolSocket> open(int index) {
    opened.push_back(index);
    if (refuses) return Macsecd::Fault{"refused", "wait"};
    SocketPair pair;
    wires[index] = Descriptor(std::move(pair.far));
    return EapolSocket(std::move(pair.near));
  }
  /// Puts a frame on the wire of that interface, and lets the loop turn until it has come.
  void receive(int index) {
    auto const frame = mkaFrame(60);
    ASSERT_EQ(::send(wires[index].fd(), frame.data(), frame.size(), 0), 60);
    loop.timeIs(0.0);
    loop.timerIs([this] {
      if (++turns < 10) return loop.timeIs(world.now() + 0.002);
      loop.exit(0);
    });
    loop.run();
  }

  void take(Lumo::IntfId intfId) {
    received.push_back(intfId);
    auto const gone = goesWith.find(intfId);
    if (gone != goesWith.end()) sockets.interfaceDel(gone->second);
  }

  std::vector<int> opened;
  std::vector<std::string> failures;
  std::vector<Lumo::IntfId> received;
  std::vector<Lumo::IntfId> expected;
  std::map<int, Descriptor> wires;
  std::map<Lumo::IntfId, Lumo::IntfId> goesWith;  ///< who is taken away by a frame of whom
  bool refuses = false;
  int turns = 0;
  ProcessWorld world{[](Vesk::LogMessage const&) {}};
  EventLoop loop;
  EapolSockets sockets{loop,
                       {[this](auto intfId, auto) { take(intfId); },
                        [this](auto, auto const& why) { failures.push_back(why); },
                        [this](auto intfId) { expected.push_back(intfId); }},
                       [this](int index) { return open(index); }};
};

using EapolSocketsTest = Fixture;

TEST_F(EapolSocketsTest, HandFramesOverUnderTheNameOfTheirInterface) {
  sockets.interfaceIs(kFirst, 3);
  sockets.interfaceIs(kSecond, 4);
  receive(4);
  EXPECT_THAT(received, ElementsAre(kSecond));
  EXPECT_EQ(sockets.counts(kSecond).received, 1u);
  EXPECT_EQ(sockets.counts(kFirst).received, 0u);
}

TEST_F(EapolSocketsTest, TakeWhatHasComeOnManyInterfacesInAFewTurns) {
  constexpr size_t kInterfaces = 2 * Limits::kSocketsPerTurn;
  auto const frame = mkaFrame(60);
  for (int index = 1; index <= static_cast<int>(kInterfaces); ++index) {
    sockets.interfaceIs(Lumo::IntfId(Vesk::String8("eth" + std::to_string(index))), index);
    ASSERT_EQ(::send(wires[index].fd(), frame.data(), frame.size(), 0), 60);
  }
  int ends = 0;
  loop.beforeWaitIs([&ends] { ++ends; });
  ASSERT_TRUE(loop.runNext());
  EXPECT_EQ(received.size(), Limits::kSocketsPerTurn) << "timers may come in between";
  EXPECT_EQ(expected, std::vector(received.begin() + 1, received.end())) << "who comes next";
  while (loop.runNext()) {
  }
  EXPECT_EQ(std::set(received.begin(), received.end()).size(), kInterfaces);
  EXPECT_LE(ends, 4);
}

TEST_F(EapolSocketsTest, TakeNothingMoreOfAnInterfaceThatAFrameTookAway) {
  sockets.interfaceIs(kFirst, 3);
  sockets.interfaceIs(kSecond, 4);
  goesWith = {{kFirst, kSecond}, {kSecond, kFirst}};
  auto const frame = mkaFrame(60);
  for (int const index : {3, 4}) ::send(wires[index].fd(), frame.data(), frame.size(), 0);
  while (loop.runNext()) {
  }
  EXPECT_EQ(received.size(), 1u);
}

TEST_F(EapolSocketsTest, SendOnTheInterfaceAlone) {
  sockets.interfaceIs(kFirst, 3);
  sockets.interfaceIs(kSecond, 4);
  sockets.send(kFirst, mkaFrame(60));
  std::array<uint8_t, 100> buffer;
  EXPECT_EQ(recv(wires[3].fd(), buffer.data(), buffer.size(), MSG_DONTWAIT), 60);
  EXPECT_EQ(recv(wires[4].fd(), buffer.data(), buffer.size(), MSG_DONTWAIT), -1);
}

TEST_F(EapolSocketsTest, KeepTheSocketOfAnInterfaceThatIsToldAgain) {
  sockets.interfaceIs(kFirst, 3);
  sockets.interfaceIs(kFirst, 3);
  EXPECT_THAT(opened, ElementsAre(3));
}

TEST_F(EapolSocketsTest, OpenAnotherOneForAnotherIndexAndGoOnCounting) {
  sockets.interfaceIs(kFirst, 3);
  sockets.send(kFirst, mkaFrame(60));
  sockets.interfaceIs(kFirst, 9);
  sockets.send(kFirst, mkaFrame(60));
  EXPECT_THAT(opened, ElementsAre(3, 9));
  EXPECT_EQ(sockets.counts(kFirst).sent, 2u);
  receive(9);
  EXPECT_THAT(received, ElementsAre(kFirst));
}

TEST_F(EapolSocketsTest, SendNothingOnAnInterfaceThatHasGone) {
  sockets.interfaceIs(kFirst, 3);
  sockets.interfaceDel(kFirst);
  sockets.interfaceDel(kSecond);
  sockets.send(kFirst, mkaFrame(60));
  EXPECT_THAT(opened, ElementsAre(3));
  EXPECT_EQ(sockets.counts(kFirst).sendFailures, 1u);
  EXPECT_THAT(failures, IsEmpty());
}

TEST_F(EapolSocketsTest, TryAgainWithEachFrameWhenTheSocketIsRefusedAndTellThatOnce) {
  refuses = true;
  sockets.interfaceIs(kFirst, 3);
  sockets.send(kFirst, mkaFrame(60));
  EXPECT_THAT(opened, ElementsAre(3, 3));
  EXPECT_THAT(failures, ElementsAre("refused; wait"));
  EXPECT_EQ(sockets.counts(kFirst).sendFailures, 1u);
  refuses = false;
  sockets.send(kFirst, mkaFrame(60));
  EXPECT_EQ(sockets.counts(kFirst).sent, 1u);
}

}  // namespace
}  // namespace Linux
