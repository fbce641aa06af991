#include "lab/exhaust/Exhaust.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/lab/Played.h"

namespace Lab {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

/// A folder with one scenario, which is played with small faults.
class AnExhaustiveSearch : public ::testing::Test {
 protected:
  AnExhaustiveSearch() { std::filesystem::create_directories(folder_); }
  ~AnExhaustiveSearch() override { std::filesystem::remove_all(folder_); }

  int search(std::string const& text, std::vector<SmallFault> faults, bool pairs = false) {
    std::ofstream(folder_ / "f.scenario") << text;
    ExhaustOptions options;
    options.file = (folder_ / "f.scenario").string();
    options.faults = std::move(faults);
    options.pairs = pairs;
    options.jobs = 2;
    options.keep = folder_.string();
    std::ostringstream out, err;
    int const status = exhaust(options, out, err);
    told = out.str();
    mistakes = err.str();
    return status;
  }
  bool isKept(std::string const& name) const { return std::filesystem::exists(folder_ / name); }
  std::string kept(std::string const& name) const {
    std::ifstream file(folder_ / name);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  std::string told, mistakes;

 private:
  std::filesystem::path const folder_ =
      std::filesystem::path(testing::TempDir()) /
      ("exhaust-" + std::to_string(testing::UnitTest::GetInstance()->random_seed()) + "-" +
       testing::UnitTest::GetInstance()->current_test_info()->name());
};

TEST_F(AnExhaustiveSearch, PlaysARunForEachFrameThatCanBeLost) {
  Played const played(pair("", "6.5"));
  EXPECT_EQ(search(pair("", "6.5"), {SmallFault::loss}), 0) << mistakes;
  auto const frames = played.times<FramePassed>("A").size() + played.times<FramePassed>("B").size();
  EXPECT_THAT(told, HasSubstr(std::to_string(frames / 2) + " of the kind loss"));
  EXPECT_THAT(told, HasSubstr(std::to_string(frames / 2) + " runs with single faults, 0 failed"));
}

TEST_F(AnExhaustiveSearch, KeepsTheScenarioOfARunThatFailed) {
  EXPECT_EQ(search(pair("by 9 expect B Ethernet1 is open", "12"), {SmallFault::loss}), 1);
  EXPECT_THAT(told, HasSubstr("expected that B Ethernet1 is open"));
  EXPECT_THAT(kept("exhaust-1.scenario"), HasSubstr(" lose 1 frame from "));
  EXPECT_THAT(Played(kept("exhaust-1.scenario")).failures(), Not(IsEmpty()));
}

TEST_F(AnExhaustiveSearch, FindsWithTwoFaultsWhatOneDoesNotBringAbout) {
  std::string const text = pair("by 11 expect B Ethernet1 is open", "14");
  EXPECT_EQ(search(text, {SmallFault::loss}), 0) << told;
  EXPECT_EQ(search(text, {SmallFault::loss}, true), 1);
  EXPECT_THAT(told, HasSubstr(" runs with single faults, 0 failed"));
  EXPECT_TRUE(isKept("exhaust-1.scenario"));
}

TEST_F(AnExhaustiveSearch, LeavesOutPairsWithAFaultThatChangesNothing) {
  EXPECT_EQ(search(pair("", "12"), {SmallFault::duplicate}, true), 0);
  EXPECT_THAT(told, HasSubstr(" 0 single faults change what happens"));
  EXPECT_THAT(told, HasSubstr(" 0 runs with pairs, 0 failed"));
}

TEST_F(AnExhaustiveSearch, HasTheTimersOfEachSwitchLateAtEachInstant) {
  EXPECT_EQ(search(pair("", "3"), {SmallFault::late}), 0) << mistakes;
  Played played(pair("", "3"));
  size_t instants = 0;
  for (auto const& one : played.simulation().switches()) instants += one->timerTimes().size();
  EXPECT_GT(instants, 4u);
  EXPECT_THAT(told, HasSubstr(std::to_string(instants) + " runs with single faults, 0 failed"));
}

TEST_F(AnExhaustiveSearch, KillsEachProcessAtEachCommit) {
  EXPECT_EQ(search(pair("", "3"), {SmallFault::death}), 0);
  Played played(pair("", "3"));
  size_t commits = 0;
  for (auto const& one : played.simulation().switches()) commits += one->store().commits();
  EXPECT_THAT(told, HasSubstr(std::to_string(2 * commits) + " runs with single faults, 0 failed"));
}

TEST_F(AnExhaustiveSearch, DoesNotBeginWithAScenarioThatFailsByItself) {
  EXPECT_EQ(search(pair("at 1 expect A Ethernet1 is open", "3"), {SmallFault::loss}), 2);
  EXPECT_THAT(mistakes, HasSubstr("fails without any fault"));
  EXPECT_EQ(search("nonsense", {SmallFault::loss}), 2);
  EXPECT_THAT(mistakes, HasSubstr("f.scenario:1:1"));
}

TEST(SmallFaults, AreLinesThatHitOneFrameOfTheNextRun) {
  Played played(pair("", "6"));
  for (SmallFault const fault : {SmallFault::loss, SmallFault::duplicate, SmallFault::delay}) {
    auto const lines = allOf(fault, played.simulation());
    ASSERT_THAT(lines, Not(IsEmpty()));
    Played again(pair(lines.back(), "6"));
    EXPECT_THAT(again.simulation().recorded(0), SizeIs(lines.size())) << lines.back();
  }
  EXPECT_THAT(allOf(SmallFault::replay, played.simulation()),
              Contains(HasSubstr("replay frame 1 to ")));
}

}  // namespace
}  // namespace Lab
