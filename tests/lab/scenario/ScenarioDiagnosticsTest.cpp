#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/lab/Scene.h"

namespace Lab {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

TEST(ScenarioDiagnostics, AWordThatIsNotKnownIsAnsweredWithTheNearestOne) {
  EXPECT_THAT(complaintsIn("wier A e to B e"),
              ElementsAre("f:19:1: there is no beginning of a line 'wier'; write 'wire'"));
  EXPECT_THAT(complaintsIn("at 5 restrat A"),
              ElementsAre("f:19:6: there is no action 'restrat'; write 'restart'"));
  EXPECT_THAT(complaintsIn("at 5 expect A Ethernet1 is opne"),
              ElementsAre("f:19:28: there is no state of a port 'opne'; write 'open'"));
  EXPECT_THAT(complaintsIn("at 5 expect A Ethernet1 hsa a SAK"),
              ElementsAre(HasSubstr("write 'has'")));
  EXPECT_THAT(complaintsIn("at 5 expect A Ethernet1 has colour"),
              ElementsAre(HasSubstr("use one of")));
  EXPECT_THAT(complaintsIn("at 5 expect A Ethernet1 has no colour"), SizeIs(1));
  EXPECT_THAT(complaintsIn("at 5 set prioritty of profile core on A to 1"),
              ElementsAre(HasSubstr("write 'priority'")));
  EXPECT_THAT(complaintsIn("at 5 hardware of A is broken"), ElementsAre(HasSubstr("is silent")));
  EXPECT_THAT(complaintsIn("at 5 link sideways on A Ethernet1"),
              ElementsAre(HasSubstr("up, down")));
  EXPECT_THAT(complaintsIn("at 5 lose 3 bytes from A Ethernet1"), SizeIs(1));
  EXPECT_THAT(complaintsIn("at 5 set cipher suite of profile core on A to aes"), SizeIs(1));
}

TEST(ScenarioDiagnostics, ANameThatNothingHasIsRefusedAtItsPlace) {
  EXPECT_THAT(complaintsIn("at 5 restart C"),
              ElementsAre("f:19:14: there is no switch 'C'; write 'A'"));
  EXPECT_THAT(complaintsIn("at 5 link up on A Ethernet2"),
              ElementsAre("f:19:19: there is no interface of A 'Ethernet2'; write 'Ethernet1'"));
  EXPECT_THAT(complaintsIn("at 5 hardware of A reports packet number 1 on Ethernet2"),
              ElementsAre(HasSubstr("f:19:47: A has no interface Ethernet2; ")));
  EXPECT_THAT(complaintsIn("at 5 remove key of profile cor on A"),
              ElementsAre("f:19:28: there is no profile of A 'cor'; write 'core'"));
  EXPECT_THAT(complaintsIn("at 5 expect A Ethernet1 uses key cc"),
              ElementsAre(HasSubstr("there is no key up to this line 'cc'; ")));
  EXPECT_THAT(complaintsIn("at 5 expect A Ethernet1 has rotated 1 time since never"),
              ElementsAre(HasSubstr("there is no mark up to this line 'never'; ")));
}

TEST(ScenarioDiagnostics, AKeyOfAnEarlierLineIsKnown) {
  EXPECT_THAT(complaintsIn("at 5 set key of profile core on A to cc " + key128 +
                           "\nat 9 expect A Ethernet1 uses key cc"),
              IsEmpty());
}

TEST(ScenarioDiagnostics, ABadKeyIsRefusedWithoutBeingShown) {
  std::string const bad = key128.substr(1);
  auto lines = complaintsIn("at 5 set key of profile core on A to ab " + bad);
  EXPECT_THAT(lines, ElementsAre(HasSubstr("f:19:41: the key has an odd number of digits, 31")));
  EXPECT_THAT(lines[0], Not(HasSubstr(bad)));
  EXPECT_THAT(complaintsIn("at 5 set key of profile core on A to ab 1234"),
              ElementsAre(HasSubstr("the key has 4 digits; ")));
  EXPECT_THAT(
      complaintsIn("at 5 set key of profile core on A to " + std::string(33, 'x') + " " + key128),
      ElementsAre(HasSubstr("f:19:38: the key name has 33 octets")));
  auto swapped = complaintsIn("at 5 set key of profile core on A to ab " + key128 + " " + key128);
  EXPECT_THAT(swapped, ElementsAre(Not(HasSubstr(key128))));
}

TEST(ScenarioDiagnostics, TimesAreNumbersWithinTheRun) {
  EXPECT_THAT(complaintsIn("at soon restart A"),
              ElementsAre(HasSubstr("f:19:4: 'soon' isn't a time in seconds; ")));
  EXPECT_THAT(complaintsIn("at -1 restart A"), SizeIs(1));
  EXPECT_THAT(complaintsIn("at nan restart A"), SizeIs(1));
  EXPECT_THAT(complaintsIn("at 1.2.3 restart A"), SizeIs(1));
  EXPECT_THAT(complaintsIn("at 101 restart A"),
              ElementsAre("f:19:4: the run ends before, at 100; raise 'run until'"));
  EXPECT_THAT(complaintsIn("between 5 and 4 expect A logs X"),
              ElementsAre(HasSubstr("f:19:15: the span ends before it begins; ")));
}

TEST(ScenarioDiagnostics, ATimeFitsWhatIsExpected) {
  EXPECT_THAT(
      complaintsIn("from 1 to 5 expect A logs X"),
      ElementsAre("f:19:20: a line doesn't last; write 'between TIME and TIME expect ...'"));
  EXPECT_THAT(complaintsIn("exactly at 5 expect A logs no X"), SizeIs(1));
  EXPECT_THAT(complaintsIn("exactly at 5 expect A logs 2 X"), SizeIs(1));
  EXPECT_THAT(complaintsIn("at 9 mark m\nat 5 expect A Ethernet1 has rotated 1 time since m"),
              ElementsAre(HasSubstr("f:20:13: the mark 'm' is set later than this; ")));
}

TEST(ScenarioDiagnostics, NumbersHaveTheirRanges) {
  EXPECT_THAT(
      complaintsIn("at 5 set priority of profile core on A to 256"),
      ElementsAre(HasSubstr("a priority is out of range; write a whole number from 0 to 255")));
  EXPECT_THAT(complaintsIn("at 5 lose 0 frames from A Ethernet1"), SizeIs(1));
  EXPECT_THAT(complaintsIn("at 5 lose 1.5 frames from A Ethernet1"), SizeIs(1));
  EXPECT_THAT(complaintsIn("at 5 lose 101 percent from A Ethernet1"), SizeIs(1));
  EXPECT_THAT(complaintsIn("at 5 hardware of A reports packet number 4294967296 on Ethernet1"),
              SizeIs(1));
  EXPECT_THAT(complaintsIn("at 5 hardware of A reports packet number 0x on Ethernet1"), SizeIs(1));
}

TEST(ScenarioDiagnostics, ALineThatEndsEarlyOrLateIsRefused) {
  EXPECT_THAT(complaintsIn("at 5 restart"),
              ElementsAre(HasSubstr("f:19:13: the name of a switch is ")));
  EXPECT_THAT(complaintsIn("at 5 restart A now"),
              ElementsAre(HasSubstr("f:19:16: 'now' is left over; ")));
  EXPECT_THAT(complaintsIn("by 5 A Ethernet1 is open"),
              ElementsAre("f:19:6: 'A' stands where 'expect' should; write 'expect'"));
  EXPECT_THAT(complaintsIn("at 5 mark 'open"),
              ElementsAre(HasSubstr("f:19:11: the quote isn't closed")));
  EXPECT_THAT(complaintsIn("at 5"), SizeIs(1));
  EXPECT_THAT(complaintsIn("at 5 expect"), SizeIs(1));
}

TEST(ScenarioDiagnostics, DuplicatesAreRefused) {
  EXPECT_THAT(complaintsIn("at 1 mark m\nat 2 mark m"),
              ElementsAre(HasSubstr("f:20:11: the mark 'm' is set twice; ")));
  EXPECT_THAT(complaintsIn("run until 5"),
              ElementsAre(HasSubstr("f:19:1: 'run until' stands twice")));
  EXPECT_THAT(complaintsIn("wire A Ethernet1 to B e2"),
              ElementsAre(HasSubstr("f:19:6: A Ethernet1 is on a wire already; ")));
  EXPECT_THAT(complaintsIn("switch A\n  mac 02:00:00:00:00:03\n  config:\n    fips: false"),
              ElementsAre("f:19:8: switch A stands twice; rename it here or in line 1"));
  EXPECT_THAT(complaints("switch A\n  mac 02:00:00:00:00:03\n  mac 02:00:00:00:00:03\n"
                         "  config:\n    fips: false\nrun until 1"),
              ElementsAre(HasSubstr("'mac' stands twice in switch A; ")));
}

TEST(ScenarioDiagnostics, MissingPartsOfAScenarioAreTold) {
  EXPECT_THAT(complaints(""), ElementsAre(HasSubstr("has no switch; "), HasSubstr("has no end; ")));
  EXPECT_THAT(complaints("run until 1\nswitch A"),
              ElementsAre(HasSubstr("f:2:1: switch A lacks an entry; add 'mac "),
                          HasSubstr("f:2:1: switch A lacks an entry; add 'config FILE'")));
  EXPECT_THAT(complaintsIn("wire A e1"), ElementsAre(HasSubstr("a wire needs two ends; ")));
  EXPECT_THAT(
      complaints("run until 1\nswitch A\n  mac 02:00:00:00:00:03\n  config:\n    interfaces: "
                 "{e: {profile: p}}\n    profiles: {p: }\nat 0 cut from A e"),
      ElementsAre("f:7:15: A e is on no wire; add 'wire A e to ...'"));
}

TEST(ScenarioDiagnostics, EntriesOfASwitchAreChecked) {
  EXPECT_THAT(complaints("run until 1\nswitch A\n  mac 02:00\n  colour red\n  config:\n"),
              ElementsAre(HasSubstr("f:3:7: this isn't a MAC address; "),
                          HasSubstr("f:4:3: there is no entry of a switch 'colour'; "),
                          HasSubstr("f:5:1: the configuration is empty; ")));
  EXPECT_THAT(complaintsIn("at 5 restart A\n  at 6 restart A"),
              ElementsAre(HasSubstr("f:20:1: an indented line stands outside a switch; ")));
}

TEST(ScenarioDiagnostics, MistakesInAConfigurationHaveTheirPlacesInTheScenario) {
  auto lines = complaints(
      "run until 9\nswitch A\n  mac 02:00:00:00:00:03\n  config:\n    profiles:\n"
      "\n      core: {rekey-peroid: 5}\nat 5 set priority of profile x on A to 1\n");
  EXPECT_THAT(lines, ElementsAre("f:7:14: unknown word 'rekey-peroid' in profile 'core'; "
                                 "write 'rekey-period'"))
      << "what follows from it isn't told";
}

TEST(ScenarioDiagnostics, AllMistakesComeAtOnce) {
  EXPECT_THAT(complaintsIn("at 5 restrat A\nat x restart A\nat 5 expect A Ethernet1 is opne"),
              ElementsAre(HasSubstr("f:19:"), HasSubstr("f:20:"), HasSubstr("f:21:")));
}

TEST(ScenarioDiagnostics, AFileThatCannotBeReadIsAMistake) {
  EXPECT_THAT(readScenario("/nowhere.scenario").diagnostics, SizeIs(1));
  EXPECT_THAT(readScenario("/").diagnostics, SizeIs(1));
}

}  // namespace
}  // namespace Lab
