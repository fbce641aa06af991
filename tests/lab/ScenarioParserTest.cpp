#include "lab/ScenarioParser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace Lab {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

std::string const key128 = "00112233445566778899aabbccddeeff";

/// Two switches and a wire in lines 1 to 18; what is tested stands in line 19.
std::string scene(std::string const& lines) {
  auto sw = [](std::string const& name, std::string const& mac) {
    return "switch " + name + "\n  mac 02:00:00:00:00:" + mac +
           "\n  config:\n    profiles:\n      core: {key: {ckn: ab, cak: " + key128 +
           "}}\n    interfaces:\n      Ethernet1: {profile: core}\n\n";
  };
  return sw("A", "01") + sw("B", "02") + "wire A Ethernet1 to B Ethernet1\nrun until 100\n" +
         lines + "\n";
}

std::vector<std::string> complaints(std::string const& text) {
  std::vector<std::string> lines;
  for (auto const& mistake : parseScenario(text, "f").mistakes) lines.push_back(mistake.text());
  return lines;
}

std::vector<std::string> complaintsIn(std::string const& line) { return complaints(scene(line)); }

template <class What>
What action(std::string const& line) {
  auto result = parseScenario(scene("at 5 " + line), "f");
  EXPECT_TRUE(result.good()) << textOf(result.mistakes);
  if (result.scenario.actions.size() != 1) throw std::runtime_error("no action");
  auto const& action = result.scenario.actions[0];
  EXPECT_EQ(action.at, 5);
  EXPECT_EQ(action.line, 19);
  return std::get<What>(action.what);
}

template <class What>
What expectation(std::string const& line) {
  auto result = parseScenario(scene("at 1 mark m\nat 5 expect " + line), "f");
  EXPECT_TRUE(result.good()) << textOf(result.mistakes);
  if (result.scenario.expectations.size() != 1) throw std::runtime_error("no expectation");
  EXPECT_EQ(result.scenario.expectations[0].line, 20);
  EXPECT_EQ(result.scenario.expectations[0].text, "at 5 expect " + line);
  return std::get<What>(result.scenario.expectations[0].what);
}

PortName const a1{"A", "Ethernet1"};
PortName const b1{"B", "Ethernet1"};

TEST(ScenarioParser, ReadsTheSettingsInAnyOrder) {
  auto result = parseScenario("run until 60.5 # a comment\n" +
                                  scene("").replace(scene("").find("run until 100"), 13, "seed 7") +
                                  "frame delay 0.002\ntitle Two, and 'no more'\n",
                              "f");
  ASSERT_TRUE(result.good()) << textOf(result.mistakes);
  EXPECT_EQ(result.scenario.file, "f");
  EXPECT_EQ(result.scenario.runUntil, 60.5);
  EXPECT_EQ(result.scenario.seed, 7u);
  EXPECT_EQ(result.scenario.frameDelay, 0.002);
  EXPECT_THAT(result.scenario.title, HasSubstr("Two"));
}

TEST(ScenarioParser, ReadsASwitchWithMacStartDelaysAndConfiguration) {
  auto result = parseScenario(
      "switch 'core 1'\n  mac 02:00:00:00:00:0a\n  start at 1.5\n  first delays 0, 1 1\n"
      "  config:\n    # a comment\n    profiles:\n\n      core:\n        rekey-period: 9\n"
      "run until 5\n",
      "f");
  ASSERT_TRUE(result.good()) << textOf(result.mistakes);
  auto const& spec = result.scenario.switches.at(0);
  EXPECT_EQ(spec.name, "core 1");
  EXPECT_EQ(spec.line, 1);
  EXPECT_EQ(spec.mac.stringValue(), "02:00:00:00:00:0a");
  EXPECT_EQ(spec.start, 1.5);
  EXPECT_THAT(spec.firstDelays, ElementsAre(0u, 1u, 1u));
  EXPECT_EQ(spec.config.profile("core")->rekeyPeriod, 9u);
}

TEST(ScenarioParser, AConfigurationFileLiesBesideTheScenario) {
  auto result =
      parseScenario("switch A\n  mac 02:00:00:00:00:01\n  config switch.yaml\nrun until 5",
                    EXAMPLES "/f.scenario");
  ASSERT_TRUE(result.good()) << textOf(result.mistakes);
  EXPECT_THAT(result.scenario.switches[0].config.profiles, SizeIs(3));
  EXPECT_THAT(complaints("switch A\n  mac 02:00:00:00:00:01\n  config gone.yaml\nrun until 5"),
              ElementsAre(HasSubstr("gone.yaml:1:1: the file can't be read")));
}

TEST(ScenarioParser, ReadsWiresOfTwoEndsAndSegments) {
  auto wires = [](std::string const& lines) {
    return parseScenario(scene(lines), "f").scenario.wires;
  };
  EXPECT_THAT(wires("")[0].ends, ElementsAre(a1, b1));
  EXPECT_FALSE(wires("")[0].delay);
  auto two = wires("wire A e2 to B e2 to B e3 with delay 0.5");
  ASSERT_THAT(two, SizeIs(2));
  EXPECT_THAT(two[1].ends,
              ElementsAre(PortName{"A", "e2"}, PortName{"B", "e2"}, PortName{"B", "e3"}));
  EXPECT_EQ(two[1].delay, 0.5);
}

TEST(ScenarioParser, ReadsLinkChanges) {
  EXPECT_EQ(action<LinkChange>("link down on A Ethernet1").port, a1);
  EXPECT_FALSE(action<LinkChange>("link down on A Ethernet1").up);
  EXPECT_TRUE(action<LinkChange>("link up on B Ethernet1").up);
}

TEST(ScenarioParser, ReadsEveryFaultOfAWire) {
  auto fault = [](std::string const& line) { return action<WireFault>(line); };
  auto lost = fault("lose 3 frames from A Ethernet1");
  EXPECT_EQ(lost.kind, FaultKind::lose);
  EXPECT_EQ(lost.port, a1);
  EXPECT_FALSE(lost.bothWays);
  EXPECT_EQ(lost.share, (Share{3, 0}));
  EXPECT_EQ(fault("lose 12.5 percent both ways at B Ethernet1").share, (Share{std::nullopt, 12.5}));
  EXPECT_TRUE(fault("lose 12.5 percent both ways at B Ethernet1").bothWays);
  EXPECT_EQ(fault("duplicate every frame from A Ethernet1").kind, FaultKind::duplicate);
  EXPECT_EQ(fault("duplicate every frame from A Ethernet1").share, (Share{std::nullopt, 100}));
  EXPECT_EQ(fault("reorder 1 frame from A Ethernet1").kind, FaultKind::reorder);
  EXPECT_EQ(fault("corrupt byte 30 of 2 frames from A Ethernet1").octet, 30u);
  EXPECT_EQ(fault("corrupt byte 30 of 2 frames from A Ethernet1").kind, FaultKind::corrupt);
  EXPECT_EQ(fault("delay frames by 0.25 from A Ethernet1").delay, 0.25);
  EXPECT_EQ(fault("cut both ways at A Ethernet1").kind, FaultKind::cut);
  EXPECT_EQ(fault("repair from A Ethernet1").kind, FaultKind::repair);
}

TEST(ScenarioParser, ReadsChangesOfKeysAndKeepsThemOutOfTheText) {
  auto set = action<KeyChange>("set key of profile core on A to cd " + key128);
  EXPECT_EQ(set.profile.switchName, "A");
  EXPECT_EQ(set.profile.profile, "core");
  EXPECT_FALSE(set.fallback);
  EXPECT_EQ(set.key, (Macsecd::KeyConfig{"cd", Vesk::String8(key128)}));
  EXPECT_TRUE(action<KeyChange>("set fallback key of profile core on A to x " + key128).fallback);
  EXPECT_FALSE(action<KeyChange>("remove key of profile core on B").key);
  EXPECT_TRUE(action<KeyChange>("remove fallback key of profile core on B").fallback);
  auto text = parseScenario(scene("at 5 set key of profile core on A to cd " + key128), "f");
  EXPECT_EQ(text.scenario.actions[0].text, "at 5 set key of profile core on A to cd (key)");
}

TEST(ScenarioParser, ReadsChangesOfAProfile) {
  EXPECT_EQ(action<PriorityChange>("set priority of profile core on A to 255").priority, 255);
  EXPECT_EQ(action<RekeyPeriodChange>("set rekey period of profile core on A to 30").seconds, 30u);
  EXPECT_EQ(action<SuiteChange>("set cipher suite of profile core on A to gcm-aes-xpn-256").suite,
            Macsecd::Suite::gcmAesXpn256);
}

TEST(ScenarioParser, ReadsShutdownRestartHardwareAndMarks) {
  EXPECT_TRUE(action<ShutdownChange>("shutdown A").shutdown);
  EXPECT_FALSE(action<ShutdownChange>("no shutdown A").shutdown);
  EXPECT_EQ(action<Restart>("restart B").switchName, "B");
  EXPECT_EQ(action<HardwareChange>("hardware of A is normal").mood, HardwareMood::normal);
  EXPECT_EQ(action<HardwareChange>("hardware of A is silent").mood, HardwareMood::silent);
  EXPECT_EQ(action<HardwareChange>("hardware of A is slow by 1.5").delay, 1.5);
  EXPECT_EQ(
      action<PacketNumber>("hardware of B reports packet number 0xC0000000 on Ethernet1").number,
      0xC0000000u);
  EXPECT_EQ(action<Mark>("mark here").name, "here");
}

TEST(ScenarioParser, ActionsAreOrderedByTimeThenByLine) {
  auto result = parseScenario(scene("at 9 restart A\nat 3 shutdown A\nat 3 restart B"), "f");
  ASSERT_THAT(result.scenario.actions, SizeIs(3));
  EXPECT_EQ(result.scenario.actions[0].text, "at 3 shutdown A");
  EXPECT_EQ(result.scenario.actions[1].text, "at 3 restart B");
}

TEST(ScenarioParser, ReadsEveryWayToGiveATime) {
  auto when = [](std::string const& span) {
    return parseScenario(scene(span + " expect A logs no X"), "f").scenario.expectations.at(0).when;
  };
  auto is = [](When const& when, Span span, double from, double to) {
    return when.span == span && when.from == from && when.to == to;
  };
  EXPECT_TRUE(is(when("at 2.5"), Span::at, 2.5, 2.5));
  EXPECT_TRUE(is(when("by 3"), Span::by, 0, 3));
  EXPECT_TRUE(is(when("between 1 and 2"), Span::between, 1, 2));
  EXPECT_TRUE(is(when("from 1 to 2"), Span::throughout, 1, 2));
  auto exact = parseScenario(scene("exactly at 7.001 expect A Ethernet1 is open"), "f");
  EXPECT_TRUE(is(exact.scenario.expectations.at(0).when, Span::exactly, 7.001, 7.001));
}

TEST(ScenarioParser, ReadsExpectationsOfThePort) {
  EXPECT_EQ(expectation<PortIs>("A Ethernet1 is open").state, PortState::open);
  EXPECT_EQ(expectation<PortIs>("A Ethernet1 is closed").state, PortState::closed);
  EXPECT_EQ(expectation<PortIs>("A Ethernet1 is absent").state, PortState::absent);
  EXPECT_EQ(expectation<PortIs>("A Ethernet1 is not open").state, PortState::notOpen);
  EXPECT_EQ(expectation<UsesKey>("A Ethernet1 uses key ab").ckn, "ab");
  EXPECT_FALSE(expectation<UsesKey>("A Ethernet1 uses no key").ckn);
  EXPECT_TRUE(expectation<HasForwardingEntry>("A Ethernet1 has forwarding entry unauthorized")
                  .unauthorized);
  EXPECT_FALSE(expectation<HasForwardingEntry>("A Ethernet1 has no forwarding entry").unauthorized);
}

TEST(ScenarioParser, ReadsExpectationsOfKeyServerAndPeers) {
  EXPECT_EQ(expectation<HasKeyServer>("A Ethernet1 has key server B").switchName, "B");
  EXPECT_EQ(expectation<HasKeyServer>("A Ethernet1 is key server under ab").switchName, "A");
  EXPECT_EQ(expectation<HasKeyServer>("A Ethernet1 is key server under ab").under, "ab");
  EXPECT_FALSE(expectation<HasKeyServer>("A Ethernet1 has no key server").switchName);
  EXPECT_EQ(expectation<HasLivePeers>("A Ethernet1 has 2 live peers under ab").count, 2u);
  EXPECT_EQ(expectation<HasLivePeers>("A Ethernet1 has 2 live peers under ab").under, "ab");
  EXPECT_EQ(expectation<HasLivePeers>("A Ethernet1 has no live peer").count, 0u);
  auto named = expectation<HasLivePeers>("A Ethernet1 has live peers A and B under ab");
  EXPECT_THAT(named.switches, ElementsAre("A", "B"));
  EXPECT_EQ(named.count, 2u);
  EXPECT_EQ(named.under, "ab");
}

TEST(ScenarioParser, ReadsExpectationsOfTheSak) {
  EXPECT_TRUE(expectation<HasSakTransmit>("A Ethernet1 has sakTransmit").set);
  EXPECT_FALSE(expectation<HasSakTransmit>("A Ethernet1 has no sakTransmit").set);
  EXPECT_TRUE(expectation<HasSak>("A Ethernet1 has a SAK").any);
  EXPECT_FALSE(expectation<HasSak>("A Ethernet1 has no SAK").any);
  auto same = expectation<SameSak>("A Ethernet1 has the same SAK as B Ethernet1");
  EXPECT_TRUE(same.same);
  EXPECT_EQ(std::get<PortName>(same.as), b1);
  auto other = expectation<SameSak>("A Ethernet1 has another SAK than at m");
  EXPECT_FALSE(other.same);
  EXPECT_EQ(std::get<Mark>(other.as).name, "m");
  EXPECT_EQ(expectation<HasRotated>("A Ethernet1 has rotated 3 times since m").since->name, "m");
  EXPECT_EQ(expectation<HasRotated>("A Ethernet1 has rotated 1 time").times, 1u);
}

TEST(ScenarioParser, ReadsSyslogLinesThatMustOrMustNotCome) {
  auto logs = expectation<Logs>("A logs MKA_STATE_CHG with ab * 'Ethernet 1'");
  EXPECT_EQ(logs.name, "MKA_STATE_CHG");
  EXPECT_THAT(logs.arguments, ElementsAre("ab", std::nullopt, "Ethernet 1"));
  EXPECT_EQ(logs.min, 1u);
  EXPECT_FALSE(logs.max);
  EXPECT_EQ(expectation<Logs>("A logs no X").max, 0u);
  EXPECT_EQ(expectation<Logs>("A logs 3 X").min, 3u);
  EXPECT_EQ(expectation<Logs>("A logs 3 X").max, 3u);
}

TEST(ScenarioParser, AWordThatIsNotKnownIsAnsweredWithTheNearestOne) {
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

TEST(ScenarioParser, ANameThatNothingHasIsRefusedAtItsPlace) {
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

TEST(ScenarioParser, AKeyOfAnEarlierLineIsKnown) {
  EXPECT_THAT(complaintsIn("at 5 set key of profile core on A to cc " + key128 +
                           "\nat 9 expect A Ethernet1 uses key cc"),
              IsEmpty());
}

TEST(ScenarioParser, ABadKeyIsRefusedWithoutBeingShown) {
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

TEST(ScenarioParser, TimesAreNumbersWithinTheRun) {
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

TEST(ScenarioParser, ATimeFitsWhatIsExpected) {
  EXPECT_THAT(
      complaintsIn("from 1 to 5 expect A logs X"),
      ElementsAre("f:19:20: a line doesn't last; write 'between TIME and TIME expect ...'"));
  EXPECT_THAT(complaintsIn("exactly at 5 expect A logs no X"), SizeIs(1));
  EXPECT_THAT(complaintsIn("exactly at 5 expect A logs 2 X"), SizeIs(1));
  EXPECT_THAT(complaintsIn("at 9 mark m\nat 5 expect A Ethernet1 has rotated 1 time since m"),
              ElementsAre(HasSubstr("f:20:13: the mark 'm' is set later than this; ")));
}

TEST(ScenarioParser, NumbersHaveTheirRanges) {
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

TEST(ScenarioParser, ALineThatEndsEarlyOrLateIsRefused) {
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

TEST(ScenarioParser, DuplicatesAreRefused) {
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

TEST(ScenarioParser, MissingPartsOfAScenarioAreTold) {
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

TEST(ScenarioParser, EntriesOfASwitchAreChecked) {
  EXPECT_THAT(complaints("run until 1\nswitch A\n  mac 02:00\n  colour red\n  config:\n"),
              ElementsAre(HasSubstr("f:3:7: this isn't a MAC address; "),
                          HasSubstr("f:4:3: there is no entry of a switch 'colour'; "),
                          HasSubstr("f:5:1: the configuration is empty; ")));
  EXPECT_THAT(complaintsIn("at 5 restart A\n  at 6 restart A"),
              ElementsAre(HasSubstr("f:20:1: an indented line stands outside a switch; ")));
}

TEST(ScenarioParser, MistakesInAConfigurationHaveTheirPlacesInTheScenario) {
  auto lines = complaints(
      "run until 9\nswitch A\n  mac 02:00:00:00:00:03\n  config:\n    profiles:\n"
      "\n      core: {rekey-peroid: 5}\nat 5 set priority of profile x on A to 1\n");
  EXPECT_THAT(lines, ElementsAre("f:7:14: unknown word 'rekey-peroid' in profile 'core'; "
                                 "write 'rekey-period'"))
      << "what follows from it isn't told";
}

TEST(ScenarioParser, AllMistakesComeAtOnce) {
  EXPECT_THAT(complaintsIn("at 5 restrat A\nat x restart A\nat 5 expect A Ethernet1 is opne"),
              ElementsAre(HasSubstr("f:19:"), HasSubstr("f:20:"), HasSubstr("f:21:")));
}

TEST(ScenarioParser, AFileThatCannotBeReadIsAMistake) {
  EXPECT_THAT(readScenario("/nowhere.scenario").mistakes, SizeIs(1));
  EXPECT_THAT(readScenario("/").mistakes, SizeIs(1));
}

TEST(ScenarioParser, EveryShippedScenarioIsRead) {
  int read = 0;
  for (auto const& entry : std::filesystem::directory_iterator(EXAMPLES)) {
    if (entry.path().extension() != ".scenario") continue;
    auto result = readScenario(entry.path().string());
    EXPECT_TRUE(result.good()) << textOf(result.mistakes);
    EXPECT_THAT(result.scenario.expectations, Not(IsEmpty())) << entry.path();
    EXPECT_FALSE(result.scenario.title.empty()) << entry.path();
    ++read;
  }
  EXPECT_GE(read, 12);
}

}  // namespace
}  // namespace Lab
