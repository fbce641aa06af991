#include "runtime/World.h"

#include <gtest/gtest.h>

#include "tests/support/RecordingWorld.h"

namespace Vesk::Test {
namespace {

TEST(World, UnsetHasAClockAtZeroAndSinksThatDropEverything) {
  EXPECT_EQ(now(), 0.0);
  EXPECT_EQ(world().rand(), 0);
  static LogHandle handle("WORLD_UNSET", LogSeverity::notice, "text", "", NoActionRequired, 0.0,
                          0.0);
  log(handle);
  flushEntityLogOutputBuffer();
}

TEST(World, ScopesNestAndTheFormerOneComesBack) {
  RecordingWorld outer;
  outer.time = 1.0;
  EXPECT_EQ(now(), 1.0);
  {
    RecordingWorld inner;
    inner.time = 2.0;
    EXPECT_EQ(now(), 2.0);
  }
  EXPECT_EQ(now(), 1.0);
  EXPECT_EQ(&world(), &outer);
}

TEST(World, EndOfTheProcessGoesThroughIt) {
  RecordingWorld recording;
  world().exit(0);
  EXPECT_EQ(recording.exits, std::vector<int>{0});
}

}  // namespace
}  // namespace Vesk::Test
