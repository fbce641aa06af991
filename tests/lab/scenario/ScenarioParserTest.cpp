#include "lab/scenario/ScenarioParser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/lab/Scene.h"

namespace Lab {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

PortName const a1{"A", "Ethernet1"};
PortName const b1{"B", "Ethernet1"};

TEST(ScenarioParser, ReadsTheSettingsInAnyOrder) {
  auto result = parseScenario("run until 60.5 # a comment\n" +
                                  scene("").replace(scene("").find("run until 100"), 13, "seed 7") +
                                  "frame delay 0.002\ndata every 0.5\ntitle Two, and 'no more'\n",
                              "f");
  ASSERT_TRUE(result.good()) << textOf(result.diagnostics);
  EXPECT_EQ(result.scenario.file, "f");
  EXPECT_EQ(result.scenario.runUntil, 60.5);
  EXPECT_EQ(result.scenario.seed, 7u);
  EXPECT_EQ(result.scenario.frameDelay, 0.002);
  EXPECT_EQ(result.scenario.dataEvery, 0.5);
  EXPECT_THAT(result.scenario.title, HasSubstr("Two"));
}

TEST(ScenarioParser, ReadsASwitchWithMacStartDelaysAndConfiguration) {
  auto result = parseScenario(
      "switch 'core 1'\n  mac 02:00:00:00:00:0a\n  start at 1.5\n  first delays 0, 1 1\n"
      "  config:\n    # a comment\n    profiles:\n\n      core:\n        rekey-period: 9\n"
      "run until 5\n",
      "f");
  ASSERT_TRUE(result.good()) << textOf(result.diagnostics);
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
  ASSERT_TRUE(result.good()) << textOf(result.diagnostics);
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
  EXPECT_EQ(action<Restart>("restart B").deadFor, 0);
  EXPECT_EQ(action<Restart>("restart B after 2.5").deadFor, 2.5);
  EXPECT_TRUE(action<Restart>("restart B after 2.5").keepsState);
  EXPECT_FALSE(action<Restart>("restart B without its state after 2").keepsState);
  EXPECT_EQ(action<HardwareChange>("hardware of A is normal").mood, HardwareMood::normal);
  EXPECT_EQ(action<HardwareChange>("hardware of A is silent").mood, HardwareMood::silent);
  EXPECT_EQ(action<HardwareChange>("hardware of A is slow by 1.5").delay, 1.5);
  EXPECT_EQ(
      action<PacketNumber>("hardware of B reports packet number 0xC0000000 on Ethernet1").number,
      0xC0000000u);
  EXPECT_EQ(action<KeyLost>("hardware of B loses its key on Ethernet1").port.text(), "B Ethernet1");
  EXPECT_EQ(action<KeySpent>("hardware of B has spent its key on Ethernet1").port.text(),
            "B Ethernet1");
  EXPECT_EQ(action<Mark>("mark here").name, "here");
}

TEST(ScenarioParser, ReadsWhatHappensToAProcessAndItsStore) {
  auto const kill = action<Kill>("kill A at commit 3 after 2");
  EXPECT_EQ(kill.switchName, "A");
  EXPECT_EQ(kill.commit, 3u);
  EXPECT_TRUE(kill.isTaken);
  EXPECT_EQ(kill.deadFor, 2);
  EXPECT_FALSE(action<Kill>("kill A before commit 1").isTaken);
  EXPECT_EQ(action<Standstill>("stop B for 2.5").seconds, 2.5);
  EXPECT_EQ(action<ClockRate>("clock of B runs 2 percent fast").rate, 1.02);
  EXPECT_EQ(action<ClockRate>("clock of B runs 50 percent slow").rate, 0.5);
  EXPECT_EQ(action<ClockRate>("clock of B runs right").rate, 1);
  EXPECT_TRUE(action<StoreChange>("store of B refuses").refuses);
  EXPECT_FALSE(action<StoreChange>("store of B is well").refuses);
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
  auto is = [](When const& read, Span span, double from, double to) {
    return read.span == span && read.from == from && read.to == to;
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

TEST(ScenarioParser, EveryShippedScenarioIsRead) {
  int read = 0;
  for (auto const& entry : std::filesystem::directory_iterator(EXAMPLES)) {
    if (entry.path().extension() != ".scenario") continue;
    auto result = readScenario(entry.path().string());
    EXPECT_TRUE(result.good()) << textOf(result.diagnostics);
    EXPECT_THAT(result.scenario.expectations, Not(IsEmpty())) << entry.path();
    EXPECT_FALSE(result.scenario.title.empty()) << entry.path();
    ++read;
  }
  EXPECT_GE(read, 12);
}

}  // namespace
}  // namespace Lab
