#include <gmock/gmock.h>

#include <fstream>
#include <set>
#include <sstream>

#include "lab/report/Events.h"
#include "runtime/Describe.h"
#include "tests/lab/Played.h"

// Processes of switches that end themselves, and what they leave to the next one.

namespace Lab {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::SizeIs;

std::vector<double> startsAgain(Played const& played) {
  std::vector<double> times;
  for (auto const& ended : played.all<ProcessEnded>("A")) times.push_back(ended.startsAgain);
  return times;
}

TEST(Process, IsFollowedAtOnceByTheNextOneWhenItEndsWhileItRuns) {
  Played played(pair("at 12 set FIPS of A to on"));
  EXPECT_THAT(played.times<ProcessEnded>("A"), ElementsAre(12));
  EXPECT_THAT(startsAgain(played), ElementsAre(12));
  EXPECT_THAT(played.times<ProcessEnded>("B"), IsEmpty());
  EXPECT_TRUE(played.simulation().switchOf("A").host().running());
}

TEST(Process, ThatEndsAsItStartsIsFollowedByTheNextOneASecondLater) {
  std::string text = pair("at 12 FIPS provider of A is there", "14");
  text.replace(text.find("  config:"), 0, "  start at 8.5\n  FIPS provider is missing\n");
  text.replace(text.find("    profiles:"), 0, "    fips: true\n");
  Played played(text);
  EXPECT_THAT(played.times<ProcessEnded>("A"), ElementsAre(8.5, 9.5, 10.5, 11.5));
  EXPECT_THAT(startsAgain(played), ElementsAre(9.5, 10.5, 11.5, 12.5));
  EXPECT_EQ(played.times<FramePassed>("A").front(), 9.001) << "the link is there all the time";
  EXPECT_TRUE(played.simulation().switchOf("A").host().running());
}

TEST(Process, ThatEndsAsItStartsTearsNothingOfTheTree) {
  auto treeAt = [](std::string const& lines) {
    Played played(pair(lines, "20.3"));
    auto const& host = played.simulation().switchOf("A").host();
    Vesk::WorldScope const scope(host.world());
    host.status()->fipsStatusIs(Macsec::FipsStatus());
    return Vesk::entityToText(*host.status());
  };
  std::string const fips = "at 0 set FIPS of A to on\n";
  auto const running = treeAt(fips);
  EXPECT_THAT(running, testing::HasSubstr("controlledPortEnabled"));
  EXPECT_EQ(treeAt(fips + "at 20.2 FIPS provider of A is missing\nat 20.3 restart A"), running);
}

TEST(Process, SaysNothingOnItsWayOut) {
  Played played(
      pair("at 12 FIPS provider of A is missing\nat 12 set FIPS of A to on\n"
           "at 12 mark dead\nat 15.5 expect A has exited 5 times with status 0\n"
           "at 15.5 expect A has exited 3 times since dead\n"
           "at 15.5 expect A has exited 0 times with status 1\n"
           "at 15.5 expect A is not running\nat 15.5 expect A has FIPS mode unset",
           "15.9"));
  EXPECT_THAT(played.failures(), IsEmpty());
  for (double time : played.times<SyslogLine>("A")) EXPECT_LE(time, 12);
  auto const frames = played.all<FramePassed>("A");
  auto const times = played.times<FramePassed>("A");
  for (size_t i = 0; i < frames.size(); ++i) {
    if (times[i] <= 12) continue;
    EXPECT_EQ(frames[i].verdict, "ignored") << "nobody sends or reads any";
  }
}

TEST(Process, ReadsTheWholeConfigurationHoweverFarTheOneBeforeItHasCome) {
  // A process in FIPS mode ends at the shutdown, which is written before anything else.
  std::string const file = testing::TempDir() + "whole.yaml";
  std::ofstream(file) << "shutdown: true\nfips: true\ndelay-protection: true\n";
  Played played(pair("at 0 set FIPS of A to on\nat 12 reload A from " + file +
                     "\nat 12 expect A has exited 2 times\n"
                     "at 12 expect A has FIPS mode unset\nat 12 expect A has delay protection"));
  EXPECT_THAT(played.failures(), IsEmpty());
  auto const& host = played.simulation().switchOf("A").host();
  EXPECT_TRUE(host.config()->shutdown());
  EXPECT_FALSE(host.config()->profile("core"));
}

// The line of this name goes out once in two minutes.
std::vector<double> timesOfCaCreated(std::string const& line) {
  Played played(pair(line));
  auto const lines = played.all<SyslogLine>("A");
  auto const times = played.times<SyslogLine>("A");
  std::vector<double> found;
  for (size_t i = 0; i < lines.size(); ++i) {
    if (lines[i].name == "MKA_CA_CREATED") found.push_back(times[i]);
  }
  return found;
}

TEST(Process, DoesNotKnowWhatTheFormerOneHasLogged) {
  EXPECT_THAT(timesOfCaCreated("at 15 restart A"), ElementsAre(0, 15));
  EXPECT_THAT(timesOfCaCreated("at 15 set FIPS of A to on"), ElementsAre(0, 15));
}

TEST(Process, StartsAsLateAfterARestartAsIsSaid) {
  Played played(
      pair("at 15.5 restart A after 3\nat 18.4 expect A is not running\n"
           "at 18.5 expect A is running\nfrom 10 to 30 expect A Ethernet1 is open"));
  EXPECT_THAT(played.failures(), IsEmpty());
}

TEST(Process, DiesAtTheCommitThatIsNamedAndIsFollowedAsLateAsIsSaid) {
  Played played(pair("at 12 kill A at commit 2 after 1.5", "25"));
  ASSERT_THAT(played.times<ProcessEnded>("A"), SizeIs(1));
  double const died = played.times<ProcessEnded>("A")[0];
  EXPECT_GE(died, 12);
  EXPECT_THAT(startsAgain(played), ElementsAre(died + 1.5));
  EXPECT_EQ(played.all<ProcessEnded>("A")[0].status, kKilled);
  EXPECT_THAT(played.states("A"), ElementsAre("closed", "open"));
}

TEST(Process, WithoutItsStateIsAnotherMember) {
  auto const members = [](std::string const& lines) {
    std::set<std::string> all;
    Played played(pair(lines, "40"));
    for (FramePassed const& frame : played.all<FramePassed>("A")) {
      if (frame.way == FrameWay::out) all.insert(*frame.memberId);
    }
    return all.size();
  };
  EXPECT_EQ(members("at 20 restart A"), 1u);
  EXPECT_EQ(members("at 20 restart A without its state"), 2u);
}

TEST(Process, ThatStandsStillTakesWhatWaitedBeforeItsTimersRun) {
  Played played(pair("at 20.5 stop A for 5", "40"));
  for (double const time : played.times<FramePassed>("A")) {
    EXPECT_TRUE(time <= 20.5 || time >= 25.5) << time;
  }
  EXPECT_THAT(played.states("A"), ElementsAre("closed", "open"));
  EXPECT_EQ(played.received("A", "accepted"), Played(pair("", "40")).received("A", "accepted"));
}

TEST(Process, KeepsWhatItsStoreRefusedOnceTheStoreIsWell) {
  auto const values = [](std::string const& lines) {
    return Played(pair(lines, "30")).simulation().switchOf("A").store().values().size();
  };
  EXPECT_EQ(values("at 1 store of A refuses\nat 25 store of A is well"), values(""));
  EXPECT_LT(values("at 0 store of A refuses"), values(""));
}

TEST(Process, TellsItsEndAndReloadsAsEvents) {
  auto eventOf = [](TreeWatch::What what) {
    std::ostringstream out;
    std::string const name = "A";
    Events(out).happened({7.001, name, std::move(what)});
    return out.str();
  };
  EXPECT_EQ(
      eventOf(ProcessEnded{0, 8.0010000001}),
      R"({"time":"1970-01-01T00:00:07.001000Z","monotonic":7.001,"switch":"A","event":"exit","status":0,"starts-again":"1970-01-01T00:00:08.001000Z","starts-again-monotonic":8.001})"
      "\n");
  EXPECT_EQ(
      eventOf(Reloaded{"b.yaml", false, {{"b.yaml", 1, 2, "no", "write 'yes'"}}}),
      R"({"time":"1970-01-01T00:00:07.001000Z","monotonic":7.001,"switch":"A","event":"reload","file":"b.yaml","taken":false,)"
      R"("mistakes":[{"file":"b.yaml","line":1,"column":2,"what":"no","remedy":"write 'yes'"}]})"
      "\n");
}

TEST(Reload, ThatHasMistakesWritesNothingAndTellsEachOfThem) {
  Played played(pair("at 12.3 mark m\nat 12.3 reload A from " EXAMPLES "/reload-bad.yaml\n"
                     "at 12.3 expect A has written nothing since m"));
  EXPECT_THAT(played.failures(), IsEmpty());
  auto const reloads = played.all<Reloaded>("A");
  ASSERT_EQ(reloads.size(), 1u);
  EXPECT_FALSE(reloads[0].taken);
  EXPECT_EQ(reloads[0].diagnostics.size(), 3u);
}

TEST(Reload, IsWhatLaterChangesStartFrom) {
  Played played(pair("at 12 reload A from " EXAMPLES "/profile-move.yaml\n"
                     "at 13 set priority of profile edge on A to 7"));
  auto const& config = *played.simulation().switchOf("A").host().config();
  EXPECT_FALSE(config.profile("core"));
  ASSERT_TRUE(config.profile("edge"));
  EXPECT_EQ(config.profile("edge")->keyServerPriority(), 7);
  EXPECT_EQ(played.simulation().switchOf("A").interfaces().size(), 3u);
}

TEST(Dot1x, KeysOfOneAddressDeriveNothing) {
  std::string const line =
      "at 12 publish 802.1X key on A Ethernet1 between 02:00:00:00:00:01 and "
      "02:00:00:00:00:01 of session 0d and master key " +
      std::string(128, '4');
  std::string text = pair(line + "\nat 13 expect A Ethernet1 has no primary key");
  text.replace(text.find("key: {ckn"), 0, "dot1x: true, fallback-");
  EXPECT_THAT(Played(text).failures(), IsEmpty());
}

TEST(SwitchExpectations, ThatFailTellWhatIs) {
  auto failing = [](std::string const& line) {
    auto const failures = Played(pair("at 1 mark m\nat 9 expect " + line)).failures();
    return failures.empty() ? std::string("none") : failures[0];
  };
  EXPECT_EQ(failing("A is not running"),
            "f:20: at 9.000 on A: expected that A is not running, but A is running");
  EXPECT_THAT(failing("A has exited 1 time"), EndsWith("but A has exited 0 times"));
  EXPECT_THAT(failing("A has FIPS mode on"), EndsWith("but A has FIPS mode off"));
  EXPECT_THAT(failing("A has delay protection"), EndsWith("but A has no delay protection"));
  EXPECT_THAT(failing("A has MKPDU period 1"), EndsWith("but A has MKPDU period 2"));
  EXPECT_THAT(failing("A has MKPDU threshold 3"), EndsWith("but A has MKPDU threshold 2"));
  EXPECT_THAT(failing("A has written nothing since m"), EndsWith(" attributes"));
  EXPECT_THAT(failing("A has no mistake in its reload"), EndsWith("but A has reloaded nothing"));
  EXPECT_THAT(failing("A has a mistake in its reload at line 1 column 1"),
              EndsWith("but A has reloaded nothing"));
  EXPECT_THAT(failing("A Ethernet1 uses a key from 802.1X"),
              EndsWith("but A Ethernet1 uses the configured key ab"));
  EXPECT_THAT(failing("A Ethernet1 has no primary key"),
              EndsWith("but A Ethernet1 has a primary key"));
  EXPECT_THAT(failing("A Ethernet1 has packet number 5 from its peer"),
              EndsWith("but A Ethernet1 has packet number 0 from its peer for AN 0"));
}

}  // namespace
}  // namespace Lab
