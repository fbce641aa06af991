#include "lab/world/Simulation.h"

#include <gmock/gmock.h>

#include <sstream>

#include "lab/report/Events.h"
#include "tests/lab/Played.h"

namespace Lab {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

TEST(Simulation, StartsASwitchAtItsTimeAndNotBefore) {
  std::string text = pair("");
  text.replace(text.find("  first delays 1"), 0, "  start at 2.5\n");
  Played played(text);
  EXPECT_THAT(played.times<SyslogLine>("B").front(), 2.5);
  EXPECT_EQ(played.times<FramePassed>("B").front(), 3.5);
}

TEST(Simulation, CarriesOutEveryActionOnASwitchThatHasNotStarted) {
  std::string const session = " of session 0d and master key " + std::string(128, '4');
  std::vector<std::string> const actions = {
      "link down on B Ethernet1",
      "link up on B Ethernet1",
      "lose 1 frame from B Ethernet1",
      "set key of profile core on B to ab " + key128,
      "set fallback key of profile core on B to fa11 " + key128,
      "remove fallback key of profile core on B",
      "set priority of profile core on B to 20",
      "set rekey period of profile core on B to 0",
      "set cipher suite of profile core on B to gcm-aes-xpn-128",
      "set profile of Ethernet1 on B to core",
      "set delay protection of B to off",
      "set FIPS of B to off",
      "FIPS provider of B is there",
      "clear counters of B",
      "publish 802.1X key on B Ethernet1" + session,
      "withdraw 802.1X key on B Ethernet1",
      "restart B",
      "restart B without its state",
      "kill B at commit 1",
      "stop B for 1",
      "store of B refuses",
      "store of B is well",
      "hardware of B is slow by 0.1",
      "hardware of B is normal",
      "hardware of B reports packet number 4711 on Ethernet1",
      "hardware of B reports packet number 4711 on Ethernet1 for its next key",
      "hardware of B has spent its key on Ethernet1",
      "send a frame with eapolErr to B Ethernet1",
      "replay first frame to B Ethernet1",
      "delete interface Ethernet1 on B",
      "make interface Ethernet1 on B",
  };
  std::string lines = "at 25 expect B Ethernet1 is open\n";
  for (auto const& action : actions) lines += "at 1 " + action + "\n";
  std::string text = pair(lines);
  text.replace(text.find("  first delays 1"), 0, "  start at 2.5\n");
  EXPECT_THAT(Played(text).failures(), IsEmpty());
}

TEST(Simulation, DeliversAFrameAfterTheTimersOfItsInstant) {
  // B hears A's MKPDU of 1.5 at 2, the very instant at which its own timer is due.
  std::string text = pair("frame delay 0.5", "3");
  text.replace(text.find("first delays 0"), 14, "first delays 0\n  start at 1.5");
  text.replace(text.find("first delays 1"), 14, "first delays 0");
  Played played(text);
  auto const frames = played.all<FramePassed>("B");
  ASSERT_THAT(frames, SizeIs(3));
  EXPECT_THAT(played.times<FramePassed>("B"), ElementsAre(0, 2, 2));
  EXPECT_EQ(frames[1].way, FrameWay::out);
  EXPECT_THAT(frames[1].sets, testing::Not(testing::Contains("potential-peers")));
  EXPECT_EQ(frames[2].way, FrameWay::in);
}

TEST(Simulation, DrawsTheFirstDelaysFromTheScenarioAndTheRestFromTheSeed) {
  Played played(pair("", "5"));
  EXPECT_EQ(played.times<FramePassed>("A").front(), 0);
  EXPECT_EQ(played.times<FramePassed>("B")[1], 1);
  auto sent = [](uint32_t seed) { return Played(scene(""), seed).times<FramePassed>("A"); };
  EXPECT_EQ(sent(1), sent(1));
}

TEST(Simulation, LosesFramesToAndFromALinkThatIsDown) {
  Played played(pair("at 10.5 link down on A Ethernet1", "20"));
  EXPECT_LT(played.times<FramePassed>("A").back(), 10.5);
  EXPECT_GT(played.times<FramePassed>("B").back(), 18);
  for (double time : played.times<FramePassed>("B")) {
    EXPECT_TRUE(time < 10.6 || time == std::round(time)) << "received at " << time;
  }
}

TEST(Simulation, RefusesCorruptedFramesByTheirVerdict) {
  Played played(pair("at 10 corrupt byte 40 of 2 frames from A Ethernet1", "20"));
  EXPECT_EQ(played.received("B", "icvValidationErr"), 2u);
  EXPECT_EQ(played.received("A", "icvValidationErr"), 0u);
  EXPECT_GT(played.received("B", "accepted"), 4u);
}

TEST(Simulation, SharesASegmentAmongAllItsPorts) {
  std::string text = pair("", "20");
  text = text.substr(0, text.find("wire ")) +
         "switch C\n  mac 02:00:00:00:00:03\n  first delays 1\n  config:\n    profiles:\n"
         "      core: {key: {ckn: ab, cak: " +
         key128 +
         "}, key-server-priority: 30}\n"
         "    interfaces:\n      Ethernet1: {profile: core}\n"
         "wire A Ethernet1 to B Ethernet1 to C Ethernet1\nrun until 20\n"
         "at 10 expect A Ethernet1 has live peers B and C\n"
         "at 10 expect C Ethernet1 has live peers A and B\n";
  EXPECT_THAT(Played(text).failures(), IsEmpty());
}

TEST(Simulation, KeepsThePortOpenThroughARestartOfTheStateMachines) {
  Played played(pair("at 15 restart A\nat 20 restart B"));
  EXPECT_THAT(played.states("A"), ElementsAre("closed", "open"));
  EXPECT_THAT(played.states("B"), ElementsAre("closed", "open"));
}

TEST(Simulation, LetsSwitchesAgreeInEveryFormOfTheIcvIndicator) {
  for (std::string const form : {"of 4", "of 16", "left out"}) {
    EXPECT_THAT(
        Played(pair("icv indicator " + form + "\nexactly at 8.001 expect B Ethernet1 is open"))
            .failures(),
        IsEmpty())
        << form;
  }
}

TEST(Simulation, TellsRequestsToTheHardwareAndItsAnswers) {
  Played played(pair("at 0 hardware of B is slow by 3", "20"));
  EXPECT_THAT(played.times<SaAsked>("B"), ElementsAre(8.001, 8.001));
  EXPECT_THAT(played.times<SaInstalled>("B"), ElementsAre(11.001, 11.001));
  auto const asked = played.all<SaAsked>("B");
  EXPECT_FALSE(asked[0].transmit);
  EXPECT_TRUE(asked[1].transmit);
  EXPECT_EQ(asked[0].key, asked[1].key);
  EXPECT_EQ(asked[0].key->number, 1u);
}

std::string eventOf(TreeWatch::What what, double time = 7.0010000001) {
  std::ostringstream out;
  std::string const name = "A";
  Events(out).happened({time, name, std::move(what)});
  return out.str();
}

TEST(Events, AreOneJsonObjectPerLine) {
  EXPECT_EQ(
      eventOf(SyslogLine{"NAME", 5, {"a", "b\"c"}, "text"}),
      R"({"time":"1970-01-01T00:00:07.001000Z","monotonic":7.001,"switch":"A","event":"syslog","name":"NAME","severity":5,)"
      R"("arguments":["a","b\"c"],"text":"text"})"
      "\n");
  EXPECT_EQ(
      eventOf(ForwardingChanged{"e1", true}),
      R"({"time":"1970-01-01T00:00:07.001000Z","monotonic":7.001,"switch":"A","interface":"e1","event":"forwarding",)"
      R"("entry":"unauthorized"})"
      "\n");
  EXPECT_EQ(
      eventOf(ForwardingChanged{"e1", false}),
      R"({"time":"1970-01-01T00:00:07.001000Z","monotonic":7.001,"switch":"A","interface":"e1","event":"forwarding","entry":null})"
      "\n");
  EXPECT_EQ(
      eventOf(PortEvent{EventKind::state, "e1", 7, "open"}),
      R"({"time":"1970-01-01T00:00:07.001000Z","monotonic":7.001,"switch":"A","interface":"e1","event":"state","state":"open"})"
      "\n");
  EXPECT_EQ(
      eventOf(PortEvent{EventKind::key, "e1", 7}),
      R"({"time":"1970-01-01T00:00:07.001000Z","monotonic":7.001,"switch":"A","interface":"e1","event":"key","ckn":null,"role":null})"
      "\n");
}

TEST(Events, OfKeysNameThemAndAreNullWhenThereIsNone) {
  EXPECT_EQ(
      eventOf(SaAsked{"e1", true, 2, KeyName{"a1", 7}}),
      R"({"time":"1970-01-01T00:00:07.001000Z","monotonic":7.001,"switch":"A","interface":"e1","event":"sa-asked","direction":"tx",)"
      R"("an":2,"key-id":"a1","key-number":7})"
      "\n");
  EXPECT_EQ(
      eventOf(SaInstalled{"e1", false, 2, std::nullopt, 0}),
      R"({"time":"1970-01-01T00:00:07.001000Z","monotonic":7.001,"switch":"A","interface":"e1","event":"sa-installed",)"
      R"("direction":"rx","an":2,"key-id":null,"key-number":null,"packet-number":0})"
      "\n");
}

TEST(Events, OfActorsAndFramesNameTheirKey) {
  PortEvent keyServer{EventKind::keyServer, "e1", 7};
  keyServer.key = "ab";
  keyServer.sci = "02:00:00:00:00:01/1";
  EXPECT_EQ(
      eventOf(keyServer),
      R"({"time":"1970-01-01T00:00:07.001000Z","monotonic":7.001,"switch":"A","interface":"e1","event":"key-server","ckn":"ab",)"
      R"("sci":"02:00:00:00:00:01/1","is-key-server":false})"
      "\n");
  EXPECT_EQ(
      eventOf(PeersChanged{"e1", "ab", {"a1"}, {}}),
      R"({"time":"1970-01-01T00:00:07.001000Z","monotonic":7.001,"switch":"A","interface":"e1","event":"peers","ckn":"ab",)"
      R"("live":["a1"],"potential":[]})"
      "\n");
  FramePassed frame{"e1",         FrameWay::in, std::nullopt, std::nullopt,
                    std::nullopt, 60,           {},           "eapolErr"};
  EXPECT_EQ(
      eventOf(frame),
      R"({"time":"1970-01-01T00:00:07.001000Z","monotonic":7.001,"switch":"A","interface":"e1","event":"frame","way":"in","ckn":null,)"
      R"("member-id":null,"message-number":null,"length":60,"sets":[],"verdict":"eapolErr"})"
      "\n");
}

TEST(Simulation, HasAProcessThatStartsInstallWhatIsMissing) {
  Played played(
      pair("at 15 restart A after 3\nat 16 delete interface Ethernet1 on A\n"
           "at 17 make interface Ethernet1 on A\n",
           "18.5"));
  Switch const& a = played.simulation().switchOf("A");
  auto const installed = a.hardware().slice()->status(Lumo::IntfId("Ethernet1"));
  ASSERT_TRUE(installed);
  EXPECT_TRUE(installed->txSaStatus());
  EXPECT_TRUE(installed->rxSaStatus(Macsec::AssociationNumber(0)));
}

}  // namespace
}  // namespace Lab
