#include "runtime/Log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/RecordingWorld.h"

namespace Vesk::Test {
namespace {

using testing::ElementsAre;

// Handles are made at load and never destroyed, as in the system.
LogHandle const unlimited("PLAIN", LogSeverity::informational, "%s is %s", "Says what is.",
                          "Do so.", 0.0, 7.5, 1);
LogHandle const limited("LIMITED", LogSeverity::warning, "%s and %s", "", NoActionRequired, 10.0,
                        0.0);
LogHandle const byFirst("BY_FIRST", LogSeverity::warning, "%s and %s", "", NoActionRequired, 10.0,
                        0.0, 1);
LogHandle const bare("BARE", LogSeverity::notice, "nothing", "", NoActionRequired, 10.0, 0.0);

class LogTest : public testing::Test {
 protected:
  RecordingWorld recording;
};

TEST_F(LogTest, HandleKeepsAllThatItIsMadeOf) {
  EXPECT_STREQ(unlimited.name(), "PLAIN");
  EXPECT_EQ(unlimited.severity(), LogSeverity::informational);
  EXPECT_STREQ(unlimited.format(), "%s is %s");
  EXPECT_STREQ(unlimited.explanation(), "Says what is.");
  EXPECT_STREQ(unlimited.recommendedAction(), "Do so.");
  EXPECT_EQ(unlimited.interval(), 0.0);
  EXPECT_EQ(unlimited.reserved(), 7.5);
  EXPECT_EQ(unlimited.rateLimitArgs(), 1);
  EXPECT_STREQ(NoActionRequired, "No action is required.");
}

TEST_F(LogTest, SeveritiesAreThoseOfSyslog) {
  EXPECT_EQ(static_cast<int>(LogSeverity::emergency), 0);
  EXPECT_EQ(static_cast<int>(LogSeverity::error), 3);
  EXPECT_EQ(static_cast<int>(LogSeverity::notice), 5);
  EXPECT_EQ(static_cast<int>(LogSeverity::debug), 7);
}

TEST_F(LogTest, FillsTheArgumentsInOnce) {
  log(unlimited, "%s", String8("so"));
  EXPECT_THAT(recording.logged, ElementsAre("PLAIN: %s is so"));
  EXPECT_THAT(recording.lastArguments, ElementsAre("%s", "so"));
  EXPECT_EQ(recording.lastFacility, 2);
}

TEST_F(LogTest, NumbersAreDecimalThoseOfOneByteToo) {
  log(unlimited, uint8_t{65}, uint32_t{7});
  EXPECT_THAT(recording.logged, ElementsAre("PLAIN: 65 is 7"));
}

TEST_F(LogTest, MissingArgumentsLeaveTheirPlacesAndFurtherOnesAreDropped) {
  log(unlimited, "a");
  log(unlimited, "a", "b", "c");
  EXPECT_THAT(recording.logged, ElementsAre("PLAIN: a is %s", "PLAIN: a is b"));
}

TEST_F(LogTest, WithoutIntervalEveryMessageGoesOut) {
  log(unlimited, "a", "b");
  log(unlimited, "a", "b");
  EXPECT_EQ(recording.logged.size(), 2u);
}

TEST_F(LogTest, RepeatWithinTheIntervalIsDroppedAndOtherArgumentsGoOut) {
  log(limited, "a", "b");
  log(limited, "a", "b");
  log(limited, "a", "c");
  EXPECT_THAT(recording.logged, ElementsAre("LIMITED: a and b", "LIMITED: a and c"));
}

TEST_F(LogTest, LeadingArgumentsUnderTheLimitAloneTellMessagesApart) {
  log(byFirst, "a", "b");
  log(byFirst, "a", "c");
  log(byFirst, "b", "c");
  EXPECT_THAT(recording.logged, ElementsAre("BY_FIRST: a and b", "BY_FIRST: b and c"));
}

TEST_F(LogTest, LimitIsCappedAtTheNumberOfArguments) {
  EXPECT_EQ(bare.rateLimitArgs(), 255);
  log(bare);
  log(bare);
  EXPECT_THAT(recording.logged, ElementsAre("BARE: nothing"));
}

TEST_F(LogTest, ArgumentsAreJoinedByAZeroByteSoThatTheirBordersCount) {
  log(limited, "a", "bc");
  log(limited, "ab", "c");
  EXPECT_EQ(recording.logged.size(), 2u);
  EXPECT_EQ(recording.lastHash, String8(std::string_view("ab\0c", 4)).hash());
}

TEST_F(LogTest, HandlesAreLimitedApart) {
  log(limited, "a", "b");
  log(byFirst, "a", "b");
  EXPECT_EQ(recording.logged.size(), 2u);
}

TEST_F(LogTest, IntervalCountsFromTheLastMessageThatWentOut) {
  for (double time : {0.0, 9.0, 10.0, 19.0, 20.0}) {
    recording.time = time;
    log(limited, "a", "b");
  }
  EXPECT_EQ(recording.logged.size(), 3u);
}

TEST_F(LogTest, AskedWhetherItMayGoOutTheHandleRemembersThatItDid) {
  EXPECT_TRUE(limited.okToLog(1));
  EXPECT_FALSE(limited.okToLog(1));
  EXPECT_TRUE(limited.okToLog(2));
  EXPECT_TRUE(unlimited.okToLog(1));
}

TEST_F(LogTest, EntriesOlderThanTheirIntervalAreDropped) {
  for (int i = 0; i < 100; ++i) log(limited, i, "b");
  EXPECT_EQ(recording.rateLimits().size(), 100u);
  recording.time = 10.0;
  log(limited, "new", "b");
  EXPECT_EQ(recording.rateLimits().size(), 1u);
}

TEST_F(LogTest, WorldsAreLimitedApart) {
  log(limited, "a", "b");
  RecordingWorld second;
  log(limited, "a", "b");
  EXPECT_EQ(recording.logged.size(), 1u);
  EXPECT_EQ(second.logged.size(), 1u);
}

}  // namespace
}  // namespace Vesk::Test
