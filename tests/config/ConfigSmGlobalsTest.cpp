#include "tests/config/ConfigFixture.h"

namespace Macsec {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char const* kOn = "FIPS_mode_set(1)";
constexpr char const* kOff = "FIPS_mode_set(0)";
constexpr char const* kExit = "exit(0)";

/// The process lives on after its exit, so that what has been asked of it shows.
class FipsMode : public Configuration {
 protected:
  FipsMode() { status->macsecEnabledIs(true); }
  bool runsInFips() const { return status->fipsStatus() == FipsStatus(true, true); }
  void beginInFips() {
    config->fipsRestrictionsIs(true);
    begin();
    ASSERT_TRUE(runsInFips());
    world.calls.clear();
  }
};

TEST_F(FipsMode, IsSetAtTheStartAfterTheRandomGeneratorsHaveGone) {
  config->fipsRestrictionsIs(true);
  begin();
  EXPECT_THAT(world.calls, ElementsAre("RAND_cleanup()", kOn));
  EXPECT_TRUE(runsInFips());
  EXPECT_EQ(world.traced(" Updating Fips Status "), 1u);
}

TEST_F(FipsMode, OffIsSetAsWellAndTheGeneratorsStay) {
  begin();
  EXPECT_THAT(world.calls, ElementsAre(kOff));
  EXPECT_EQ(status->fipsStatus(), FipsStatus(false, true));
}

TEST_F(FipsMode, IsNotTouchedWhenTheSystemStartsOff) {
  status->macsecEnabledIs(false);
  config->fipsRestrictionsIs(true);
  config->delayProtectionIs(true);
  begin();
  EXPECT_THAT(world.calls, IsEmpty());
  EXPECT_EQ(status->fipsStatus(), FipsStatus());
  EXPECT_EQ(status->mkpduPeriod(), Status::mkpduPeriodBounded);
}

TEST_F(FipsMode, AFailureAtTheStartEndsTheProcessWithoutCleaningUp) {
  world.fipsModeResult = 0;
  config->fipsRestrictionsIs(true);
  bind();
  begin();
  EXPECT_THAT(world.calls, ElementsAre("RAND_cleanup()", kOn, kExit));
  EXPECT_EQ(status->fipsStatus(), FipsStatus());
  EXPECT_TRUE(intfStatus());
  EXPECT_EQ(world.traced("Setting Fips Mode failed.Dying again!"), 1u);
  EXPECT_EQ(world.traced(" Dying gracefully !"), 0u);
}

TEST_F(FipsMode, AChangeEndsTheProcessAfterTheInterfacesHaveGone) {
  begin();
  bind();
  bind("two", kOther, Support::key("6566"));
  world.calls.clear();
  config->fipsRestrictionsIs(true);
  EXPECT_TRUE(status->intfStatus().empty());
  EXPECT_THAT(world.calls, ElementsAre(kExit));
  EXPECT_EQ(world.traced(" Handle Fips Restrictions"), 1u);
  EXPECT_EQ(world.traced(" Dying gracefully !"), 1u);
  EXPECT_EQ(status->fipsStatus(), FipsStatus(false, true));
}

// The deletions reach the tree before the process ends.
TEST_F(FipsMode, TheAttributeLogIsPushedOutBetweenTheDeletionsAndTheExit) {
  struct Flushing final : Support::TestWorld {
    void flushAttributes() override { calls.push_back("flush"); }
    void trace(Vesk::TraceRecord const& record) override {
      if (record.text.find("Dying") != std::string::npos) calls.push_back("trace");
    }
  } flushing;
  begin();
  bind();
  struct Watch final : Vesk::Reactor<Status const, Flushing, Watch> {
    using Reactor::Reactor;
    void onIntfStatus(Lumo::IntfId const&) override { owner().calls.push_back("intfStatusDel"); }
  };
  auto watch = Vesk::make<Watch>(flushing, status);
  Vesk::WorldScope const inFlushing(flushing);
  config->fipsRestrictionsIs(true);
  EXPECT_THAT(flushing.calls, ElementsAre("intfStatusDel", "flush", "trace", kExit));
  Vesk::retire(watch);
}

TEST_F(FipsMode, WritingTheFormerValueBackEndsTheProcessAllTheSame) {
  begin();
  world.calls.clear();
  config->fipsRestrictionsIs(true);
  config->fipsRestrictionsIs(false);
  EXPECT_THAT(world.calls, ElementsAre(kExit, kExit));
}

TEST_F(FipsMode, AChangeWhileTheSystemIsOffWaitsUntilItIsOn) {
  begin();
  status->macsecEnabledIs(false);
  world.calls.clear();
  config->fipsRestrictionsIs(true);
  EXPECT_THAT(world.calls, IsEmpty());
  status->macsecEnabledIs(true);
  EXPECT_THAT(world.calls, ElementsAre(kExit));
}

TEST_F(FipsMode, AChangeThatIsTakenBackWhileTheSystemIsOffEndsNothing) {
  begin();
  status->macsecEnabledIs(false);
  world.calls.clear();
  config->fipsRestrictionsIs(true);
  config->fipsRestrictionsIs(false);
  status->macsecEnabledIs(true);
  EXPECT_THAT(world.calls, IsEmpty());
}

TEST_F(FipsMode, TurningTheSystemOffEndsAProcessInFipsMode) {
  beginInFips();
  status->macsecEnabledIs(false);
  EXPECT_THAT(world.calls, ElementsAre(kExit));
}

TEST_F(FipsMode, TurningTheSystemOffEndsNoOtherProcess) {
  begin();
  world.calls.clear();
  status->macsecEnabledIs(false);
  EXPECT_THAT(world.calls, IsEmpty());
}

TEST_F(FipsMode, ASystemThatStartedOffWithFipsConfiguredEndsWhenItIsTurnedOn) {
  status->macsecEnabledIs(false);
  config->fipsRestrictionsIs(true);
  begin();
  status->macsecEnabledIs(true);
  EXPECT_THAT(world.calls, ElementsAre(kExit));
}

TEST_F(FipsMode, ASystemThatStartedOffWithoutFipsRunsWhenItIsTurnedOn) {
  status->macsecEnabledIs(false);
  begin();
  status->macsecEnabledIs(true);
  EXPECT_THAT(world.calls, IsEmpty());
}

// The order in which the handlers of another tree run.
TEST_F(FipsMode, AnotherConfigurationIsFollowedInOrder) {
  begin();
  bind();
  world.calls.clear();
  world.traces.clear();
  auto const other = configFactory("other");
  auto const profile = other->profileIs("two");
  profile->keyIs(Support::key("6566"));
  profile->intfIs(kOther, true);
  other->delayProtectionIs(true);
  status->macsecEnabledIs(false);
  sm->configIs(other);
  EXPECT_TRUE(status->intfStatus(kOther));
  EXPECT_EQ(sm->profiles(), 1u);
  std::vector<std::string> order;
  for (auto const& trace : world.traces) {
    for (char const* text : {"Creating an intfStatus", "Handle Fips Restrictions",
                             "Clearing counters for: ", "Updating Delay Protection Flag"}) {
      if (trace.find(text) != std::string::npos && (order.empty() || order.back() != text)) {
        order.push_back(text);
      }
    }
  }
  EXPECT_THAT(order, ElementsAre("Creating an intfStatus", "Handle Fips Restrictions",
                                 "Clearing counters for: ", "Updating Delay Protection Flag"));
  EXPECT_EQ(status->mkpduPeriod(), Status::mkpduPeriodBounded);
}

TEST_F(FipsMode, HandlersOpenWithATraceAtLevelEight) {
  bind();
  begin();
  constexpr uint16_t kLevelEight = 1 << 8;
  for (uint16_t levels :
       {kLevelEight, static_cast<uint16_t>(Vesk::kAllTraceLevels - kLevelEight)}) {
    size_t const expected = levels == kLevelEight;
    Vesk::TraceHandle::streamLevelsIs("Macsec::Config", levels);
    world.traces.clear();
    status->macsecEnabledIs(false);
    config->fipsRestrictionsIs(!config->fipsRestrictions());
    config->delayProtectionIs(!config->delayProtection());
    config->clearMkaCountersInc(1);
    auto const profile = config->profile("one");
    profile->cipherSuiteIs(profile->cipherSuite() == CipherSuite::gcmAesXpn128
                               ? CipherSuite::gcmAesXpn256
                               : CipherSuite::gcmAesXpn128);
    profile->includeSciIs(!profile->includeSci());
    EXPECT_EQ(world.traced(" Handle Fips Restrictions"), expected);
    EXPECT_EQ(world.traced(" Updating Delay Protection Flag"), expected);
    EXPECT_EQ(world.traced("handleClearMkaCounters()"), expected);
    EXPECT_EQ(world.traced(" Updating Cipher"), expected);
    EXPECT_EQ(world.traced(" Updating SCI Inclusion Flag "), expected);
  }
}

TEST_F(FipsMode, AnotherStatusIsLookedAtForTheModeOfTheProcess) {
  begin();
  world.calls.clear();
  auto const other = statusFactory("other");
  other->macsecEnabledIs(true);
  other->fipsStatusIs(FipsStatus(true, true));
  sm->statusIs(other);
  EXPECT_THAT(world.calls, ElementsAre(kExit));
}

}  // namespace
}  // namespace Macsec
