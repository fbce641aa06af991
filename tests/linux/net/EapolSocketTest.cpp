#include "linux/net/EapolSocket.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "linux/net/EapolFilter.h"
#include "tests/linux/SocketPair.h"

namespace Linux {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<size_t> sizesOf(EapolSocket& socket, size_t most) {
  std::vector<size_t> sizes;
  socket.receive(most, [&](auto frame) { sizes.push_back(frame.size()); });
  return sizes;
}

TEST(EapolSocket, HandsOverAtMostSoManyFramesAtOnceAndKeepsTheRest) {
  SocketPair pair;
  EapolSocket socket(std::move(pair.near));
  for (size_t size : {60u, 70u, 80u}) pair.put(mkaFrame(size));
  EXPECT_THAT(sizesOf(socket, 2), ElementsAre(60, 70));
  EXPECT_THAT(sizesOf(socket, 2), ElementsAre(80));
  EXPECT_THAT(sizesOf(socket, 2), IsEmpty());
  EXPECT_EQ(socket.counts().received, 3u);
  EXPECT_EQ(socket.counts().receiveErrors, 0u);
}

TEST(EapolSocket, CutsAFrameThatIsTooLong) {
  SocketPair pair;
  EapolSocket socket(std::move(pair.near));
  pair.put(mkaFrame(EapolSocket::kMostOctets + 1));
  EXPECT_THAT(sizesOf(socket, 1), ElementsAre(EapolSocket::kMostOctets));
}

TEST(EapolSocket, SendsFramesAsTheyAre) {
  SocketPair pair;
  EapolSocket socket(std::move(pair.near));
  EXPECT_TRUE(socket.send(mkaFrame(64)));
  EXPECT_EQ(pair.take(), mkaFrame(64));
  EXPECT_EQ(socket.counts().sent, 1u);
}

TEST(EapolSocket, CountsWhatCannotBeSentAndGoesOn) {
  SocketPair pair;
  EapolSocket socket(std::move(pair.near));
  pair.far = Descriptor();
  EXPECT_FALSE(socket.send(mkaFrame(64)));
  EXPECT_FALSE(socket.send(mkaFrame(64)));
  EXPECT_EQ(socket.counts().sendFailures, 2u);
  EXPECT_EQ(socket.counts().sent, 0u);
}

TEST(EapolSocket, SaysWhatIsWrongWithAnInterfaceThatIsNotThere) {
  auto const opened = EapolSocket::openOn(0x7ffffff);
  ASSERT_FALSE(opened);
  EXPECT_THAT(opened.fault().text(), ::testing::ContainsRegex("; (give|it will be)"));
}

/// Which of the frames the kernel passes.
bool passes(std::vector<uint8_t> const& frame) {
  SocketPair pair;
  EXPECT_TRUE(attachEapolFilter(pair.near.fd()));
  pair.put(frame);
  EapolSocket socket(std::move(pair.near));
  return !sizesOf(socket, 1).empty();
}

TEST(EapolFilter, PassesMkpdusAlone) {
  EXPECT_TRUE(passes(mkaFrame(60)));
  for (uint8_t type : std::initializer_list<uint8_t>{0, 1, 2, 3, 4, 6, 7, 8, 255}) {
    auto frame = mkaFrame(60);
    frame[15] = type;
    EXPECT_FALSE(passes(frame)) << int(type);
  }
  auto other = mkaFrame(60);
  other[13] = 0xe5;
  EXPECT_FALSE(passes(other));
}

TEST(EapolFilter, PassesNothingTooShortToTell) {
  for (size_t size : {1u, 12u, 13u, 14u, 15u}) EXPECT_FALSE(passes(mkaFrame(size))) << size;
  EXPECT_TRUE(passes(mkaFrame(16)));
}

TEST(EapolFilter, PassesWholeFrames) {
  SocketPair pair;
  ASSERT_TRUE(attachEapolFilter(pair.near.fd()));
  pair.put(mkaFrame(1500));
  EapolSocket socket(std::move(pair.near));
  EXPECT_THAT(sizesOf(socket, 1), ElementsAre(1500));
}

}  // namespace
}  // namespace Linux
