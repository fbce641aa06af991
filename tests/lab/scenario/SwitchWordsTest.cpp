#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/lab/Scene.h"

// The words of a scenario about whole switches: their configuration, 802.1X, FIPS mode, processes.

namespace Lab {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

std::string const msk(128, '4');
std::string const published = " of session 0d80 and master key " + msk;

Lumo::EthAddr addr(uint8_t last) { return Lumo::EthAddr({2, 0, 0, 0, 0, last}); }

TEST(SwitchWords, PublishA8021XKeyOnBothEndsOfAWireWithTheTypesOfItsSides) {
  auto const change =
      action<Dot1xKeyChange>("publish 802.1X key on both ends at B Ethernet1" + published);
  ASSERT_EQ(change.ends.size(), 2u);
  EXPECT_EQ(change.ends[0].port, (PortName{"B", "Ethernet1"}));
  EXPECT_EQ(change.ends[0].type, 0);
  EXPECT_EQ(change.ends[1].port, (PortName{"A", "Ethernet1"}));
  EXPECT_EQ(change.ends[1].type, 1);
  EXPECT_EQ(change.key->firstAddr, addr(2));
  EXPECT_EQ(change.key->secondAddr, addr(1));
  EXPECT_EQ(change.key->sessionId, "0d80");
  EXPECT_EQ(change.key->masterSessionKey, msk);
}

TEST(SwitchWords, PublishAKeyOnOneEndWithItsOwnTypeAndAddresses) {
  auto const plain = action<Dot1xKeyChange>("publish 802.1X key on A Ethernet1" + published);
  ASSERT_EQ(plain.ends.size(), 1u);
  EXPECT_EQ(plain.ends[0].type, 0);
  EXPECT_EQ(plain.key->secondAddr, addr(2));
  auto const own = action<Dot1xKeyChange>(
      "publish 802.1X key on A Ethernet1 of type 1 between 02:00:00:00:00:08 and "
      "02:00:00:00:00:09" +
      published);
  EXPECT_EQ(own.ends[0].type, 1);
  EXPECT_EQ(own.key->firstAddr, addr(8));
  EXPECT_EQ(own.key->secondAddr, addr(9));
  EXPECT_FALSE(action<Dot1xKeyChange>("withdraw 802.1X key on A Ethernet1").key);
  EXPECT_EQ(action<Dot1xKeyChange>("withdraw 802.1X key on both ends at A Ethernet1").ends.size(),
            2u);
}

TEST(SwitchWords, KeepAMasterKeyOutOfTheTextOfItsAction) {
  auto const result =
      parseScenario(scene("at 5 publish 802.1X key on A Ethernet1" + published), "f");
  EXPECT_EQ(result.scenario.actions.at(0).text,
            "at 5 publish 802.1X key on A Ethernet1 of session 0d80 and master key (key)");
}

TEST(SwitchWords, RefuseAKeyThatNoModulePublishesWithoutShowingIt) {
  auto complaint = [](std::string const& behind) {
    return complaintsIn("at 5 publish 802.1X key on " + behind);
  };
  EXPECT_THAT(complaint("A Ethernet1 of type 2" + published),
              ElementsAre("f:19:48: type 2 stands for a configured key; write another type, such "
                          "as 1"));
  EXPECT_THAT(complaint("A Ethernet1 of type 256" + published),
              ElementsAre(HasSubstr("from 0 to 255")));
  EXPECT_THAT(complaint("A Ethernet1 of session 0d8 and master key " + msk),
              ElementsAre("f:19:51: this isn't the identifier of a session; write an even number "
                          "of hexadecimal digits"));
  auto const odd = complaint("A Ethernet1 of session 0d and master key " + msk + "4");
  EXPECT_THAT(odd, ElementsAre(HasSubstr("f:19:69: this isn't a master session key; ")));
  EXPECT_THAT(odd[0], Not(HasSubstr("444444")));
  EXPECT_THAT(complaint("A Ethernet1 between 02:00 and 02:00:00:00:00:09" + published),
              ElementsAre(HasSubstr("f:19:48: this isn't a MAC address; ")));
  EXPECT_THAT(complaint("both ends at A Ethernet2" + published),
              ElementsAre(HasSubstr("there is no interface of A 'Ethernet2'; ")));
  EXPECT_THAT(complaint("A Ethernet1"), ElementsAre(HasSubstr("write 'of session'")));
}

TEST(SwitchWords, AskForAddressesWhereAWireHasNoTwoEnds) {
  std::string const third =
      "switch C\n  mac 02:00:00:00:00:03\n  config:\n    interfaces: {e: {profile: p}}\n"
      "    profiles: {p: {dot1x: true}}\n";
  std::string const segment = third + "wire A e to B e to C e\n";
  EXPECT_THAT(
      complaintsIn(segment + "at 5 publish 802.1X key on both ends at C e" + published),
      ElementsAre("f:25:41: a segment of several ports has no two ends; name one port after "
                  "the other: on A Ethernet1"));
  EXPECT_THAT(complaintsIn(third + "at 5 publish 802.1X key on C e" + published),
              ElementsAre("f:24:28: C e has no other end of a wire; name both ends of the link: "
                          "between 02:00:00:00:00:01 and 02:00:00:00:00:02"));
  EXPECT_THAT(complaintsIn(segment +
                           "at 5 publish 802.1X key on C e between 02:00:00:00:00:01 and "
                           "02:00:00:00:00:03" +
                           published),
              IsEmpty());
}

TEST(SwitchWords, LetADerivedNameBeExpectedOnceKeysArePublished) {
  std::string const uses = "at 9 expect A Ethernet1 uses key f2f3494f070909bce38f4c3616ca1724";
  EXPECT_THAT(complaintsIn(uses), ElementsAre(HasSubstr("there is no key up to this line ")));
  std::string const publish = "at 5 publish 802.1X key on A Ethernet1" + published + "\n";
  EXPECT_THAT(complaintsIn(publish + uses), IsEmpty());
  EXPECT_THAT(complaintsIn(publish + "at 9 expect A Ethernet1 uses key f2f3"),
              ElementsAre(HasSubstr("there is no key up to this line 'f2f3'; ")));
}

TEST(SwitchWords, TurnTheSettingsOfASwitchOnAndOff) {
  EXPECT_TRUE(action<DelayProtectionChange>("set delay protection of A to on").on);
  EXPECT_FALSE(action<DelayProtectionChange>("set delay protection of A to off").on);
  EXPECT_TRUE(action<FipsChange>("set FIPS of B to on").on);
  EXPECT_EQ(action<FipsChange>("set FIPS of B to off").switchName, "B");
  EXPECT_FALSE(action<FipsProviderChange>("FIPS provider of A is missing").isThere);
  EXPECT_TRUE(action<FipsProviderChange>("FIPS provider of A is there").isThere);
  EXPECT_EQ(action<CountersCleared>("clear counters of A").switchName, "A");
  EXPECT_THAT(complaintsIn("at 5 set FIPS of A to no"),
              ElementsAre("f:19:23: there is no state 'no'; write 'on'"));
  EXPECT_THAT(complaintsIn("at 5 FIPS provider of A is broken"),
              ElementsAre(HasSubstr("f:19:25: there is no state 'is'; ")));
  EXPECT_THAT(complaintsIn("at 5 set delay protection of C to on"),
              ElementsAre(HasSubstr("there is no switch 'C'; ")));
  EXPECT_THAT(complaintsIn("at 5 clear counters of"),
              ElementsAre(HasSubstr("the name of a switch is missing")));
}

TEST(SwitchWords, SayThatAMachineHasNoFipsProviderFromTheStart) {
  std::string text = scene("");
  text.replace(text.find("  config:"), 0, "  FIPS provider is missing\n");
  auto const result = parseScenario(text, "f");
  EXPECT_TRUE(result.good()) << textOf(result.diagnostics);
  EXPECT_FALSE(result.scenario.switches[0].hasFipsProvider);
  EXPECT_TRUE(result.scenario.switches[1].hasFipsProvider);
  text.replace(text.find("is missing"), 10, "is there..");
  EXPECT_THAT(complaints(text), ElementsAre(HasSubstr("f:3:17: ")));
}

TEST(SwitchWords, MoveAnInterfaceToAnotherProfile) {
  auto const change = action<ProfileChange>("set profile of Ethernet1 on A to core");
  EXPECT_EQ(change.port, (PortName{"A", "Ethernet1"}));
  EXPECT_EQ(change.profile, "core");
  EXPECT_THAT(complaintsIn("at 5 set profile of Ethernet2 on A to core"),
              ElementsAre("f:19:21: there is no interface of A 'Ethernet2'; write 'Ethernet1'"));
  EXPECT_THAT(complaintsIn("at 5 set profile of Ethernet1 on A to cor"),
              ElementsAre("f:19:39: there is no profile of A 'cor'; write 'core'"));
  EXPECT_THAT(complaintsIn("at 5 set profile of Ethernet1 on A to"),
              ElementsAre(HasSubstr("the name of a profile is missing")));
}

TEST(SwitchWords, ReloadAFileWhoseMistakesAreNoneOfTheScenario) {
  auto const bad = action<Reload>("reload A from " EXAMPLES "/reload-bad.yaml");
  EXPECT_EQ(bad.switchName, "A");
  EXPECT_EQ(bad.read.diagnostics.size(), 3u);
  EXPECT_EQ(bad.read.diagnostics[0].file, EXAMPLES "/reload-bad.yaml");
  EXPECT_TRUE(action<Reload>("reload A from " EXAMPLES "/reload-repaired.yaml").read.good());
  EXPECT_THAT(complaintsIn("at 5 reload A from gone.yaml"),
              ElementsAre("f:19:20: the file can't be read: No such file or directory; name a file "
                          "beside the scenario"));
  EXPECT_THAT(complaintsIn("at 5 reload A from " EXAMPLES),
              ElementsAre(HasSubstr("f:19:20: the file can't be read: ")));
}

TEST(SwitchWords, KnowWhatAReloadedFileNamesFromItsLineOn) {
  std::string const reload = "at 5 reload A from " EXAMPLES "/profile-move.yaml\n";
  std::string const uses = "at 9 set profile of Ethernet3 on A to edge";
  EXPECT_THAT(complaintsIn(reload + uses), IsEmpty());
  EXPECT_THAT(complaintsIn(uses).size(), 1u);
  EXPECT_THAT(complaintsIn(reload + "at 9 expect A Ethernet3 uses key c0de0002"), IsEmpty());
  EXPECT_THAT(complaintsIn(reload + "at 9 set profile of Ethernet1 on B to edge").size(), 1u);
  auto const result = parseScenario(scene(reload), "f");
  EXPECT_EQ(result.scenario.switches[0].laterInterfaces.size(), 2u);
  EXPECT_THAT(result.scenario.switches[1].laterInterfaces, IsEmpty());
}

TEST(SwitchWords, ExpectProcessesAndTheirExits) {
  EXPECT_TRUE(expectation<IsRunning>("A is running").running);
  EXPECT_FALSE(expectation<IsRunning>("A is not running").running);
  auto const exited = expectation<HasExited>("A has exited 2 times with status 0 since m");
  EXPECT_EQ(exited.times, 2u);
  EXPECT_EQ(exited.status, 0);
  EXPECT_EQ(exited.since->name, "m");
  EXPECT_FALSE(expectation<HasExited>("A has exited 1 time").status);
  EXPECT_EQ(expectation<HasExited>("A has not exited since m").times, 0u);
  EXPECT_THAT(complaintsIn("at 5 expect A has exited twice"), ElementsAre(HasSubstr("'twice'")));
  EXPECT_THAT(complaintsIn("at 9 mark m\nat 5 expect A has not exited since m"),
              ElementsAre(HasSubstr("f:20:13: the mark 'm' is set later than this; ")));
}

TEST(SwitchWords, ExpectModesPeriodsAndWrites) {
  EXPECT_EQ(expectation<HasFipsMode>("A has FIPS mode on").mode, FipsMode::on);
  EXPECT_EQ(expectation<HasFipsMode>("A has FIPS mode off").mode, FipsMode::off);
  EXPECT_EQ(expectation<HasFipsMode>("A has FIPS mode unset").mode, FipsMode::unset);
  EXPECT_TRUE(expectation<HasDelayProtection>("A has delay protection").on);
  EXPECT_FALSE(expectation<HasDelayProtection>("A has no delay protection").on);
  EXPECT_EQ(expectation<HasMkpduPeriod>("A has MKPDU period 0.5").seconds, 0.5);
  EXPECT_EQ(expectation<HasMkpduThreshold>("A has MKPDU threshold 2").threshold, 2u);
  EXPECT_FALSE(expectation<HasWrittenNothing>("A has written nothing since m").configuration);
  EXPECT_TRUE(expectation<HasWrittenNothing>("A has written nothing to its configuration since m")
                  .configuration);
  EXPECT_THAT(complaintsIn("at 5 expect A has FIPS mode maybe"),
              ElementsAre(HasSubstr("there is no FIPS mode 'maybe'; ")));
  EXPECT_THAT(complaintsIn("at 5 expect A has written nothing"), ElementsAre(HasSubstr("'since'")));
  EXPECT_THAT(complaintsIn("at 5 expect A has colour"),
              ElementsAre(HasSubstr("there is no thing that a switch has 'colour'; ")));
}

TEST(SwitchWords, ExpectMistakesOfAReload) {
  EXPECT_EQ(expectation<HasReloadDiagnostics>("A has 3 mistakes in its reload").count, 3u);
  EXPECT_EQ(expectation<HasReloadDiagnostics>("A has 1 mistake in its reload").count, 1u);
  EXPECT_EQ(expectation<HasReloadDiagnostics>("A has no mistake in its reload").count, 0u);
  auto const one = expectation<HasReloadDiagnostic>(
      "A has a mistake in its reload at line 6 column 5 saying 'unknown word'");
  EXPECT_EQ(one.line, 6);
  EXPECT_EQ(one.column, 5);
  EXPECT_EQ(one.says, "unknown word");
  EXPECT_THAT(
      expectation<HasReloadDiagnostic>("A has a mistake in its reload at line 6 column 5").says,
      IsEmpty());
  EXPECT_THAT(complaintsIn("at 5 expect A has a mistake in its reload at line 0 column 5"),
              ElementsAre(HasSubstr("a line is out of range; ")));
}

TEST(SwitchWords, ExpectKeysAndPacketNumbersOfPorts) {
  EXPECT_EQ(expectation<UsesDerivedKey>("A Ethernet1 uses a key from 802.1X").port.switchName, "A");
  EXPECT_TRUE(expectation<HasPrimaryKey>("A Ethernet1 has a primary key").any);
  EXPECT_FALSE(expectation<HasPrimaryKey>("A Ethernet1 has no primary key").any);
  auto const number =
      expectation<HasPeerPacketNumber>("A Ethernet1 has packet number 4711 from its peer for AN 3");
  EXPECT_EQ(number.number, 4711u);
  EXPECT_EQ(number.an, 3);
  EXPECT_FALSE(
      expectation<HasPeerPacketNumber>("A Ethernet1 has packet number 0 from its peer").an);
  EXPECT_THAT(complaintsIn("at 5 expect A Ethernet1 has packet number 1 from its peer for AN 4"),
              ElementsAre(HasSubstr("an association number is out of range; ")));
  EXPECT_TRUE(
      action<PacketNumber>("hardware of A reports packet number 9 on Ethernet1 for its next key")
          .ofNextKey);
  EXPECT_FALSE(
      action<PacketNumber>("hardware of A reports packet number 9 on Ethernet1").ofNextKey);
}

}  // namespace
}  // namespace Lab
