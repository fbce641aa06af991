#include "runtime/Glimmer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Glimmer::Test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RingBufTest : public testing::Test {
 protected:
  RingBufTest() { desc.registerIs("File.cpp", 1, "f(): %s"); }
  void put(RingBuf& ring, std::string const& text) {
    ring.startMsg(file, desc.id());
    ring.argument(text);
    ring.endMsg();
  }
  std::vector<uint8_t> memory = std::vector<uint8_t>(4000);
  TraceFile file{memory};
  MsgDesc desc;
};

TEST_F(RingBufTest, GivesItsMessagesBackOldestFirst) {
  RingBuf& ring = file.ring(8);
  EXPECT_THAT(ring.messages(), IsEmpty());
  put(ring, "one");
  put(ring, "");
  EXPECT_THAT(ring.messages(), ElementsAre("f(): one", "f(): "));
}

TEST_F(RingBufTest, CutsALongArgumentAt255Characters) {
  std::vector<uint8_t> large(1000);
  RingBuf ring(large);
  put(ring, std::string(255, 'x'));
  put(ring, std::string(256, 'y'));
  EXPECT_THAT(ring.messages(),
              ElementsAre("f(): " + std::string(255, 'x'), "f(): " + std::string(255, 'y')));
}

// A message of one argument takes 9 octets and its text.
TEST_F(RingBufTest, WrapsAroundAndKeepsWholeMessagesOnly) {
  std::vector<uint8_t> small(31);
  RingBuf ring(small);
  for (int i = 10; i < 60; ++i) {
    put(ring, std::to_string(i));
    if (i == 10) continue;
    EXPECT_THAT(ring.messages(),
                ElementsAre("f(): " + std::to_string(i - 1), "f(): " + std::to_string(i)));
  }
  put(ring, std::string(20, 'z'));
  EXPECT_THAT(ring.messages(), ElementsAre("f(): " + std::string(20, 'z')));
}

TEST_F(RingBufTest, LeavesOutAMessageThatIsLargerThanTheRing) {
  std::vector<uint8_t> small(16);
  RingBuf ring(small);
  put(ring, "a");
  put(ring, std::string(20, 'z'));
  EXPECT_THAT(ring.messages(), ElementsAre("f(): a"));
  RingBuf none({});
  put(none, "a");
  EXPECT_THAT(none.messages(), IsEmpty());
}

TEST_F(RingBufTest, OneMessageOfManyLongArgumentsStaysInItsBuffer) {
  std::vector<uint8_t> large(10000);
  RingBuf ring(large);
  ring.startMsg(file, desc.id());
  for (int i = 0; i < 30; ++i) ring.argument(std::string(255, 'x'));
  ring.endMsg();
  EXPECT_EQ(ring.messages().size(), 1u);
}

TEST_F(RingBufTest, LevelsHaveRingsOfTheirOwn) {
  put(file.ring(1), "one");
  put(file.ring(3), "three");
  EXPECT_THAT(file.ring(1).messages(), ElementsAre("f(): one"));
  EXPECT_THAT(file.ring(3).messages(), ElementsAre("f(): three"));
  EXPECT_THAT(file.ring(8).messages(), IsEmpty());
}

}  // namespace
}  // namespace Glimmer::Test
