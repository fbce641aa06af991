#include "linux/kernel/Agenda.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace Linux::Test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(AnAgenda, KnowsWhatComesNextAndWhatIsDue) {
  Agenda<std::string> agenda;
  EXPECT_EQ(agenda.nextTime(), Zorn::never);
  agenda.timeIs("b", 3);
  agenda.timeIs("a", 5);
  agenda.timeIs("c", 4);
  EXPECT_EQ(agenda.nextTime(), 3);
  EXPECT_THAT(agenda.due(2), IsEmpty());
  EXPECT_THAT(agenda.due(4), ElementsAre("b", "c"));
  EXPECT_THAT(agenda.due(4), ElementsAre("b", "c")) << "until they are told another time";
}

TEST(AnAgenda, HasOneTimeForEach) {
  Agenda<std::string> agenda;
  agenda.timeIs("a", 3);
  agenda.timeIs("a", 7);
  EXPECT_EQ(agenda.size(), 1u);
  EXPECT_EQ(agenda.nextTime(), 7);
  agenda.timeIs("b", 7);
  agenda.del("a");
  agenda.del("a");
  EXPECT_THAT(agenda.due(7), ElementsAre("b"));
  agenda.timeIs("b", Zorn::never);
  EXPECT_EQ(agenda.size(), 0u);
  EXPECT_EQ(agenda.nextTime(), Zorn::never);
}

}  // namespace
}  // namespace Linux::Test
