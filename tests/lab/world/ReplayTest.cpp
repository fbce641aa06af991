#include <gmock/gmock.h>

#include "lab/world/PortView.h"
#include "tests/lab/Played.h"

// A station on the wire that has recorded everything, without a key of its own.

namespace Lab {
namespace {

using ::testing::IsEmpty;

// Every second one without the guard, where the hardware alone stands against the station.
class AStationThatHasRecordedEverything : public ::testing::TestWithParam<bool> {
 protected:
  std::string attacked(std::string const& lines, std::string const& until = "120") const {
    return pair(std::string("replay guard ") + (GetParam() ? "on" : "off") + "\n" + lines, until);
  }
};
INSTANTIATE_TEST_SUITE_P(WithAndWithoutTheGuard, AStationThatHasRecordedEverything,
                         ::testing::Bool(),
                         [](auto const& p) { return p.param ? "Guarded" : "Unguarded"; });

// Two keys later.
constexpr char kRekeys[] =
    "at 0 set rekey period of profile core on A to 15\n"
    "at 45 set rekey period of profile core on A to 0\n";
constexpr char kBringsTheFirstKeyBack[] =
    "replay first frame with dist-sak from A Ethernet1 to B Ethernet1\n";

std::string at(double time, std::string const& what) {
  return "at " + std::to_string(time) + " " + what;
}

// No nonce is repeated in any of these: the simulation would end the process.
void expectOneKeyAndOpenPorts(Played& played) {
  EXPECT_THAT(played.failures(), IsEmpty());
  std::vector<std::string> keys;
  for (auto const& one : played.simulation().switches()) {
    Lumo::IntfId const intf("Ethernet1");
    EXPECT_TRUE(one->host().isOpen(intf)) << one->name();
    PortView const port(*one->host().status(), intf);
    keys.push_back(std::string(port.txSak().keyMsgId().view()) + ":" +
                   std::to_string(port.txSak().keyNum()));
    auto const installed = one->hardware().slice()->status(intf)->txSaStatus();
    ASSERT_TRUE(installed) << one->name() << " doesn't send";
    EXPECT_EQ(installed->keyNum(), port.txSak().keyNum()) << one->name();
  }
  EXPECT_EQ(keys[0], keys[1]);
}

TEST_P(AStationThatHasRecordedEverything, BringsNoFormerKeyBackAfterTwoRekeys) {
  Played played(attacked(std::string(kRekeys) + at(60, kBringsTheFirstKeyBack)));
  if (!GetParam()) {
    // The engine alone takes the key in; that the nonces stay apart is the hardware's doing.
    EXPECT_THAT(played.simulation().nonceRepeats(), IsEmpty());
    return;
  }
  expectOneKeyAndOpenPorts(played);
  EXPECT_EQ(played.received("B", "livenessErr") + played.received("B", "replayErr"), 1u);
}

TEST_P(AStationThatHasRecordedEverything, BringsNoFormerKeyBackOverARestart) {
  Played played(attacked(std::string(kRekeys) + "at 60 restart B\n" +
                         at(60, kBringsTheFirstKeyBack) + at(61, kBringsTheFirstKeyBack)));
  EXPECT_THAT(played.simulation().nonceRepeats(), IsEmpty());
  if (GetParam()) expectOneKeyAndOpenPorts(played);
}

TEST_P(AStationThatHasRecordedEverything, BringsNoFormerKeyBackOverAnInterfaceMadeAnew) {
  Played played(attacked(std::string(kRekeys) +
                         "at 60 delete interface Ethernet1 on B\n"
                         "at 61 make interface Ethernet1 on B\n" +
                         at(61.5, kBringsTheFirstKeyBack) + at(64, kBringsTheFirstKeyBack)));
  EXPECT_THAT(played.simulation().nonceRepeats(), IsEmpty());
  if (GetParam()) expectOneKeyAndOpenPorts(played);
}

TEST_P(AStationThatHasRecordedEverything, DoesNoHarmByPlayingTheWholeLinkAgain) {
  Played played(attacked(std::string(kRekeys) + "at 60 replay every frame to B Ethernet1\n" +
                         "at 60 replay every frame to A Ethernet1\n"));
  EXPECT_THAT(played.simulation().nonceRepeats(), IsEmpty());
  if (GetParam()) expectOneKeyAndOpenPorts(played);
}

std::string withFallback(std::string const& lines) {
  auto sw = [](std::string const& name, std::string const& mac, std::string const& priority) {
    return "switch " + name + "\n  mac 02:00:00:00:00:" + mac +
           "\n  config:\n    profiles:\n      core: {key: {ckn: ab, cak: " + key128 +
           "}, fallback-key: {ckn: fa11, cak: fedcba9876543210fedcba9876543210}," +
           " key-server-priority: " + priority +
           "}\n    interfaces:\n      Ethernet1: {profile: core}\n";
  };
  return sw("A", "01", "10") + sw("B", "02", "20") +
         "wire A Ethernet1 to B Ethernet1\nrun until 200\n" + lines + "\n";
}

// The primary key is wrong for a while, so that a SAK was distributed under the fallback key.
TEST(AStationOnTheWire, BringsNoRetiredSakOfTheFallbackKeyBack) {
  Played played(withFallback(
      "at 0 set key of profile core on B to ab 99999999999999999999999999999999\n"
      "at 60 set key of profile core on B to ab " +
      key128 +
      "\n"
      "at 150 replay first frame with dist-sak under fa11 from A Ethernet1 to B Ethernet1\n"
      "at 152 replay every frame with dist-sak under fa11 from A Ethernet1 to B Ethernet1\n"
      "at 149 expect B Ethernet1 uses key ab\n"
      "from 149 to 200 expect B Ethernet1 is open\n"));
  expectOneKeyAndOpenPorts(played);
  EXPECT_GT(played.received("B", "livenessErr") + played.received("B", "replayErr"), 1u);
}

// In the seconds in which the key server repeats its first SAK.
TEST_P(AStationThatHasRecordedEverything, IsntNeededForAnInterfaceThatIsMadeAnewUnderItsFirstKey) {
  for (double when = 6; when < 11; when += 0.5) {
    Played played(attacked(at(when, "delete interface Ethernet1 on B\n") +
                               at(when + 0.2, "make interface Ethernet1 on B\n"),
                           "60"));
    SCOPED_TRACE(when);
    expectOneKeyAndOpenPorts(played);
  }
}

// Its own hardware can't know that: the other end has sent with the SSCI that becomes this one's.
TEST(AnAddressThatChangesUnderTheFirstKey, GetsANewKeyBeforeAnythingIsSent) {
  for (double when = 6; when < 11; when += 0.5) {
    // The order of the SCIs changes, and with it the SSCIs.
    Played played(
        pair(at(when, "delete interface Ethernet1 on B\n") +
                 at(when + 0.2, "make interface Ethernet1 on B with address 00:00:00:00:00:01\n"),
             "60"));
    SCOPED_TRACE(when);
    expectOneKeyAndOpenPorts(played);
  }
}

TEST(AStationOnTheWire, FillsNoListOfPeersWithMembersOfLongAgo) {
  std::string flaps;
  for (int i = 0; i < 50; ++i) {
    flaps += at(10 + i, "link down on A Ethernet1\n") + at(10.5 + i, "link up on A Ethernet1\n");
  }
  Played played(pair(flaps + "at 75 replay every frame before 70 to B Ethernet1\n"
                             "at 75.1 replay every frame before 70 to A Ethernet1\n"
                             "from 76 to 100 expect A Ethernet1 is open\n"
                             "from 76 to 100 expect B Ethernet1 is open\n",
                     "100"));
  EXPECT_THAT(played.failures(), IsEmpty());
  for (auto const& one : played.simulation().switches()) {
    for (Macsec::MkaActorStatus& actor :
         one->host().status()->portStatus(Lumo::IntfId("Ethernet1"))->actorStatus()) {
      EXPECT_TRUE(actor.potentialPeer().empty()) << one->name();
    }
  }
}

std::string three(std::string const& lines) {
  auto sw = [](std::string const& name, std::string const& mac, std::string const& rest) {
    return "switch " + name + "\n  mac 02:00:00:00:00:" + mac + "\n" + rest +
           "  config:\n    profiles:\n      core: {key: {ckn: ab, cak: " + key128 +
           "}}\n    interfaces:\n      Ethernet1: {profile: core}\n";
  };
  return sw("A", "01", "") + sw("B", "02", "") + sw("C", "03", "  start at 30\n") +
         "wire A Ethernet1 to B Ethernet1 to C Ethernet1\nrun until 120\n" + lines + "\n";
}

TEST(AThirdMember, ClosesTheLinkUntilItHasGoneAndANewKeyIsThere) {
  Played played(three("at 29 mark alone\nat 60 link down on C Ethernet1\n"));
  for (char const* name : {"A", "B", "C"}) {
    bool isClosed = name == std::string("C");
    EXPECT_FALSE(isClosed &&
                 played.simulation().switchOf(name).host().isOpen(Lumo::IntfId("Ethernet1")));
  }
  auto const installed = [&](char const* name) { return played.all<SaInstalled>(name); };
  for (char const* name : {"A", "B"}) {
    auto const& host = played.simulation().switchOf(name).host();
    EXPECT_TRUE(host.isOpen(Lumo::IntfId("Ethernet1"))) << name;
    size_t logged = 0;
    for (auto const& line : played.all<SyslogLine>(name)) {
      logged += line.name == "MACSECD_TOO_MANY_MEMBERS";
      EXPECT_NE(line.name, "MACSECD_PORT_BOUND_ANEW");
    }
    EXPECT_EQ(logged, 1u) << name;
    EXPECT_GE(installed(name).size(), 4u);
  }
}

}  // namespace
}  // namespace Lab
