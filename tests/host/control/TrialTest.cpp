#include "host/control/Trial.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/host/HostFixture.h"
#include "tests/host/KeptState.h"

namespace Macsecd {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::string textWith(std::string const& more) {
  return "profiles:\n  one:\n    key: {ckn: \"6162\", cak: " + std::string(kCak) +
         "}\ninterfaces: {Ethernet1: {profile: one}}\n" + more;
}
std::string const kFormer = textWith("");
std::string const kNew = textWith("delay-protection: true\n");

class ATrial : public ::testing::Test {
 protected:
  ATrial() {
    write(own_, kFormer);
    write(other_, kNew);
    begin();
    EXPECT_TRUE(host().reload(configIn(own_)));
    host().commit();
  }
  ~ATrial() override {
    std::filesystem::remove(own_);
    std::filesystem::remove(other_);
  }
  static void write(std::string const& path, std::string const& text) {
    std::ofstream(path) << text;
    std::filesystem::permissions(path, std::filesystem::perms(0600));
  }
  /// A process begins.
  void begin() {
    trial_.reset();
    switch_.reset();
    switch_.emplace(1, HostOptions{.store = &store_});
    trial_.emplace(host(), own_, [this](SwitchConfig const& config) {
      applied_.push_back(config.delayProtection);
    });
  }
  Host& host() { return switch_->host; }
  ConfigResult configIn(std::string const& path) {
    Vesk::WorldScope const scope(switch_->world);
    return readConfigFile(path, Keys::kept);
  }
  Trial& trial() { return *trial_; }
  std::vector<Diagnostic> tried(std::string const& path) { return *trial().begin(path, 60); }
  bool isNew() { return host().config()->delayProtection(); }
  void runAt(double time) {
    switch_->world.time = time;
    trial().run();
  }

  std::string const own_ = ::testing::TempDir() + "/trial-own-" + std::to_string(getpid());
  std::string const other_ = ::testing::TempDir() + "/trial-other-" + std::to_string(getpid());
  KeptState store_;
  std::optional<Switch> switch_;
  std::optional<Trial> trial_;
  std::vector<bool> applied_;
};

TEST_F(ATrial, IsInForceForItsTimeAndThenTheFormerOneAgain) {
  EXPECT_THAT(tried(other_), IsEmpty());
  EXPECT_TRUE(isNew());
  EXPECT_EQ(trial().nextTime(), 60);
  runAt(59);
  EXPECT_TRUE(isNew());
  EXPECT_EQ(trial().secondsLeft(), 1);
  runAt(60);
  EXPECT_FALSE(isNew());
  EXPECT_EQ(trial().state(), Trial::State::wentBack);
  EXPECT_EQ(trial().nextTime(), std::numeric_limits<double>::infinity());
  EXPECT_THAT(applied_, ElementsAre(true, false));
  EXPECT_EQ(switch_->world.logged("MACSECD_TRIAL_WENT_BACK"), 1u);
  EXPECT_EQ(host().configFault(), "");
}

TEST_F(ATrial, ThatIsKeptInTimeStays) {
  EXPECT_THAT(tried(other_), IsEmpty());
  runAt(59);
  EXPECT_TRUE(trial().keep());
  runAt(1000);
  EXPECT_TRUE(isNew());
  EXPECT_EQ(trial().state(), Trial::State::kept);
  EXPECT_TRUE(trial().isOfAnotherFile());
  EXPECT_FALSE(trial().keep());
  host().commit();
  begin();
  Vesk::WorldScope const scope(host().world());
  EXPECT_TRUE(host().keptConfig().config()->delayProtection);
}

TEST_F(ATrial, OfAFileWithMistakesOrWithoutAFileChangesNothing) {
  write(other_, kNew + "shutdwon: true\n");
  EXPECT_EQ(tried(other_).size(), 1u);
  EXPECT_FALSE(trial().begin(other_ + "-none", 60));
  EXPECT_FALSE(isNew());
  EXPECT_EQ(trial().state(), Trial::State::none);
  EXPECT_FALSE(trial().keep());
}

TEST_F(ATrial, NeedsAConfigurationToGoBackTo) {
  store_.values.clear();
  begin();
  EXPECT_FALSE(trial().begin(other_, 60));
}

TEST_F(ATrial, OfAnotherFileMeanwhileGoesBackToTheFormerOneToo) {
  EXPECT_THAT(tried(other_), IsEmpty());
  write(other_, textWith("delay-protection: true\nshutdown: true\n"));
  EXPECT_THAT(tried(other_), IsEmpty());
  EXPECT_TRUE(host().config()->shutdown());
  runAt(60);
  EXPECT_FALSE(host().config()->shutdown());
  EXPECT_FALSE(isNew());
}

TEST_F(ATrial, EndsWhenAFileIsReadOverIt) {
  EXPECT_THAT(tried(other_), IsEmpty());
  host().reload(configIn(other_));
  trial().endReplaced();
  runAt(60);
  EXPECT_TRUE(isNew());
  EXPECT_EQ(trial().state(), Trial::State::replaced);
}

TEST_F(ATrial, IsKnownToTheNextProcessHoweverThisOneDies) {
  write(own_, kNew);
  EXPECT_THAT(tried(own_), IsEmpty());  // and no commit comes after
  EXPECT_FALSE(trial().isOfAnotherFile());
  begin();
  Vesk::WorldScope const scope(host().world());
  EXPECT_TRUE(host().keptConfig().isTried(configIn(own_).sealed));
  EXPECT_FALSE(host().keptConfig().config()->delayProtection);
}

TEST_F(ATrial, IsRefusedWhenTheStoreDoesNotTakeThatItIsOne) {
  store_.refusal = "no room in /run";
  auto const begun = trial().begin(other_, 60);
  ASSERT_FALSE(begun);
  EXPECT_EQ(begun.fault().text(),
            "a start wouldn't know that it is on trial: no room in /run; free some");
  EXPECT_FALSE(isNew());
  EXPECT_EQ(trial().state(), Trial::State::none);
  EXPECT_THAT(applied_, IsEmpty());
  EXPECT_FALSE(host().keptConfig().isTried(configIn(other_).sealed));
  store_.refusal.clear();
  EXPECT_THAT(tried(other_), IsEmpty());
  EXPECT_TRUE(isNew());
}

TEST_F(ATrial, OfTheFileItselfIsToldUntilThatIsRead) {
  write(own_, kNew);
  EXPECT_THAT(tried(own_), IsEmpty());
  runAt(60);
  EXPECT_EQ(host().configFault(), own_ + " was tried and not kept");
  host().reload(configIn(own_));
  EXPECT_EQ(host().configFault(), "");
  EXPECT_FALSE(host().keptConfig().isTried(configIn(own_).sealed));
}

}  // namespace
}  // namespace Macsecd
