#include "host/text/TimeText.h"

#include <gtest/gtest.h>

namespace Macsecd {
namespace {

TEST(TimeText, IsThatOfRfc3339InUtcWithMicroseconds) {
  EXPECT_EQ(timeText(0), "1970-01-01T00:00:00.000000Z");
  EXPECT_EQ(timeText(7.001), "1970-01-01T00:00:07.001000Z");
  EXPECT_EQ(timeText(1769903997.10425), "2026-01-31T23:59:57.104250Z");
  EXPECT_EQ(timeText(59.9999996), "1970-01-01T00:01:00.000000Z");
}

TEST(TimeText, IsReadBack) {
  EXPECT_EQ(timeOf("1970-01-01T00:00:07.250000Z"), 7.25);
  EXPECT_EQ(timeText(*timeOf("2026-01-31T23:59:57.104250Z")), "2026-01-31T23:59:57.104250Z");
}

TEST(TimeText, IsNoOtherText) {
  for (char const* const text : {"", "7.001", "2026-01-31 23:59:57.104250Z", "2026-01-31T23:59:57Z",
                                 "2026-01-31T23:59:57.1042501", "2026-01-3xT23:59:57.104250Z"}) {
    EXPECT_FALSE(timeOf(text)) << text;
  }
}

}  // namespace
}  // namespace Macsecd
