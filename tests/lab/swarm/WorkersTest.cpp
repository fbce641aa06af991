#include "lab/swarm/Workers.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <map>

namespace Lab {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(Workers, TellInLinesAndEnd) {
  Workers workers([](uint32_t number, Workers::Tell const& tell) {
    tell("one of " + std::to_string(number));
    tell("two");
  });
  std::map<uint32_t, std::vector<std::string>> heard;
  std::vector<int> statuses;
  workers.start(7);
  workers.start(8);
  workers.listen([&](uint32_t number, std::string const& line) { heard[number].push_back(line); },
                 [&](uint32_t, int status) { statuses.push_back(status); });
  EXPECT_THAT(heard[7], ElementsAre("one of 7", "two"));
  EXPECT_THAT(heard[8], ElementsAre("one of 8", "two"));
  EXPECT_THAT(statuses, ElementsAre(0, 0));
}

TEST(Workers, EndWithoutHarmToOthersAndMayBeStartedAnew) {
  bool hasEnded = false;
  Workers workers([&](uint32_t, Workers::Tell const& tell) {
    if (!hasEnded) std::_Exit(3);
    tell("again");
  });
  std::vector<std::string> heard;
  workers.start(1);
  workers.listen([&](uint32_t, std::string const& line) { heard.push_back(line); },
                 [&](uint32_t number, int status) {
                   if (status == 0) return;
                   hasEnded = true;
                   workers.start(number);
                 });
  EXPECT_THAT(heard, ElementsAre("again"));
}

TEST(AProcess, IsSeenToEndOtherThanByItsReturn) {
  EXPECT_FALSE(endsItsProcess([] {}));
  EXPECT_TRUE(endsItsProcess([] { std::_Exit(1); }));
  EXPECT_TRUE(endsItsProcess([] { std::abort(); }));
}

}  // namespace
}  // namespace Lab
