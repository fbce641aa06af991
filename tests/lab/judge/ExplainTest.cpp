#include "host/explain/Explain.h"

#include <gmock/gmock.h>

#include "tests/lab/Played.h"

// Each cause is brought about, and named: first, and with nothing beside it that doesn't hold.

namespace Lab {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr char const* kOtherKey = "ffeeddccbbaa99887766554433221100";

std::vector<std::string> playPair(std::string const& lines, std::string const& until = "60") {
  return Played(pair(lines, until)).failures();
}

/// A switch on a wire or segment, with these members of its profile.
std::string oneSwitch(std::string const& name, std::string const& mac, std::string const& profile) {
  return "switch " + name + "\n  mac 02:00:00:00:00:" + mac +
         "\n  first delays 0 0\n  config:\n    profiles:\n      core: {" + profile +
         "}\n    interfaces:\n      Ethernet1: {profile: core}\n";
}
std::string const kKey = "key: {ckn: ab, cak: " + key128 + "}";
std::string const kWire = "wire A Ethernet1 to B Ethernet1\nrun until 60\n";

TEST(Explain, SaysNothingAgainstASecuredPort) {
  EXPECT_THAT(playPair("at 20 expect A Ethernet1 explains nothing\n"
                       "at 20 expect B Ethernet1 explains nothing\n"),
              IsEmpty());
}

TEST(Explain, NamesALinkThatIsDown) {
  EXPECT_THAT(playPair("at 20 link down on A Ethernet1\n"
                       "at 21 expect A Ethernet1 explains no-link\n"),
              IsEmpty());
}

TEST(Explain, NamesASwitchWhoseMacsecIsOff) {
  EXPECT_THAT(playPair("at 20 shutdown A\nat 21 expect A Ethernet1 explains shut-down\n"),
              IsEmpty());
}

TEST(Explain, NamesAProfileWithoutAKey) {
  EXPECT_THAT(playPair("at 20 remove key of profile core on A\n"
                       "at 21 expect A Ethernet1 explains no-key\n"),
              IsEmpty());
}

TEST(Explain, NamesASilentOtherEnd) {
  EXPECT_THAT(playPair("at 0 cut both ways at A Ethernet1\n"
                       "at 21 expect A Ethernet1 explains no-frames\n"
                       "at 21 expect B Ethernet1 explains no-frames\n"),
              IsEmpty());
}

TEST(Explain, NamesAnOtherEndThatDoesNotHearThisOne) {
  EXPECT_THAT(playPair("at 0 cut from A Ethernet1\n"
                       "at 21 expect A Ethernet1 explains one-way\n"
                       "at 21 expect B Ethernet1 explains no-frames\n"),
              IsEmpty());
}

TEST(Explain, NamesAKeyNameThatNobodyHasHere) {
  EXPECT_THAT(playPair(std::string("at 0.5 set key of profile core on B to cd ") + kOtherKey +
                       "\nat 21 expect A Ethernet1 explains unknown-ckn\n"),
              IsEmpty());
}

TEST(Explain, NamesAWrongKeyUnderTheRightName) {
  EXPECT_THAT(playPair(std::string("at 0.5 set key of profile core on B to ab ") + kOtherKey +
                       "\nat 21 expect A Ethernet1 explains wrong-cak\n"
                       "at 21 expect B Ethernet1 explains wrong-cak\n"),
              IsEmpty());
}

TEST(Explain, NamesMalformedFramesOnAPortThatHasNoPeer) {
  EXPECT_THAT(playPair("at 20 cut both ways at A Ethernet1\n"
                       "at 40.25 send a frame with sakUseSetErr to A Ethernet1\n"
                       "at 41 expect A Ethernet1 explains malformed-frames\n"),
              IsEmpty());
}

TEST(Explain, NamesTwoEndsWithOneSci) {
  auto const text = oneSwitch("A", "01", kKey) + oneSwitch("B", "01", kKey) + kWire +
                    "at 21 expect A Ethernet1 explains duplicate-sci\n";
  EXPECT_THAT(Played(text).failures(), IsEmpty());
}

TEST(Explain, NamesALinkWhoseEndsHaveOneAddressAndSoNoKeyServer) {
  auto text = oneSwitch("A", "01", kKey) + oneSwitch("B", "01", kKey) + kWire +
              "at 21 expect A Ethernet1 explains same-address no-key-server\n";
  auto const port = text.rfind("{profile: core}");
  text.replace(port, 15, "{profile: core, port-number: 2}");
  EXPECT_THAT(Played(text).failures(), IsEmpty());
}

TEST(Explain, NamesHardwareThatInstallsNothing) {
  EXPECT_THAT(playPair("at 0 hardware of B is silent\n"
                       "at 21 expect B Ethernet1 explains sak-not-installed\n"
                       "at 21 expect A Ethernet1 explains peer-not-receiving\n"),
              IsEmpty());
}

TEST(Explain, NamesAThirdMember) {
  auto const text = oneSwitch("A", "01", kKey) + oneSwitch("B", "02", kKey) +
                    oneSwitch("C", "03", kKey) +
                    "wire A Ethernet1 to B Ethernet1 to C Ethernet1\nrun until 60\n"
                    "at 21 expect A Ethernet1 explains too-many-members\n";
  EXPECT_THAT(Played(text).failures(), IsEmpty());
}

TEST(Explain, NamesAFallbackKeyThatWaitsAndOneThatIsInUse) {
  auto const fallback = ", fallback-key: {ckn: fa, cak: " + key128 + "}";
  auto const text =
      oneSwitch("A", "01", kKey + fallback) +
      oneSwitch("B", "02", std::string("key: {ckn: cd, cak: ") + kOtherKey + "}" + fallback) +
      kWire +
      "at 21 expect A Ethernet1 explains unknown-ckn not-principal\n"
      "at 58 expect A Ethernet1 is open\n"
      "at 58 expect A Ethernet1 explains unknown-ckn fallback-in-use\n";
  EXPECT_THAT(Played(text).failures(), IsEmpty());
}

TEST(Explain, NamesAnAuthenticationThatGivesNoKey) {
  auto const text = oneSwitch("A", "01", "dot1x: true") + oneSwitch("B", "02", "dot1x: true") +
                    kWire +
                    "at 21 expect A Ethernet1 explains waiting-for-802.1x\n"
                    "at 30 publish 802.1X key on A Ethernet1 between 02:00:00:00:00:01 and "
                    "02:00:00:00:00:01 of session 0d and master key " +
                    std::string(128, '4') + "\nat 31 expect A Ethernet1 explains same-address\n";
  EXPECT_THAT(Played(text).failures(), IsEmpty());
}

TEST(Explain, NamesTheFipsModeThatAProcessDoesNotRunIn) {
  EXPECT_THAT(playPair("at 20 FIPS provider of A is missing\nat 21 set FIPS of A to on\n"
                       "at 22.5 expect A Ethernet1 explains fips\n"),
              IsEmpty());
}

TEST(Explain, TellsTheCauseAndTheRemedyInWords) {
  Played played(pair(std::string("at 0.5 set key of profile core on B to cd ") + kOtherKey, "20"));
  auto& a = played.simulation().switchOf("A");
  Vesk::WorldScope const scope(a.world());
  auto const told = Macsecd::explain(a.host(), Lumo::IntfId("Ethernet1"));
  EXPECT_FALSE(told.secured);
  ASSERT_TRUE(told.has(Macsecd::CauseKind::unknownName));
  EXPECT_EQ(told.causes.front().what, "frames come in under the key name cd; this end has ab");
  EXPECT_EQ(told.causes.front().remedy, "give both ends the same key name (ckn)");
}

TEST(Explain, IsExpectedWordByWord) {
  EXPECT_THAT(playPair("at 20 expect A Ethernet1 explains no-link no-frames"),
              ElementsAre(HasSubstr("but A Ethernet1 explains nothing")));
  EXPECT_THAT(complaintsIn("at 20 expect A Ethernet1 explains nolink"),
              ElementsAre(HasSubstr("there is no cause 'nolink'; write 'no-link'")));
}

}  // namespace
}  // namespace Lab
