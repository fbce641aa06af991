#include <gmock/gmock.h>

#include "tests/lab/Played.h"

// What the port doctors of whole switches do, and leave alone.

namespace Lab {
namespace {

using testing::IsEmpty;

std::string sw(std::string const& name, std::string const& head, std::string const& profile) {
  return "switch " + name + "\n" + head + "  config:\n    profiles:\n      core: {" + profile +
         "}\n    interfaces:\n      e1: {profile: core}\n";
}

std::string const kKey = "key: {ckn: ab, cak: " + key128 + "}";
std::string const kOther = "{ckn: cd, cak: ffeeddccbbaa99887766554433221100}";

std::string twoWith(std::string const& profileOfA, std::string const& profileOfB,
                    std::string const& lines) {
  return sw("A", "  mac 02:00:00:00:00:01\n  first delays 0 0\n", profileOfA) +
         sw("B", "  mac 02:00:00:00:00:02\n  start at 0.3\n  first delays 1 1\n", profileOfB) +
         "wire A e1 to B e1\nrun until 90\n" + lines;
}

// The follower has lost its principal actor, and both ends go on under the key that they have.
TEST(ThePortDoctor, LeavesAFollowerAloneThatHasLostItsPrincipalWhileTrafficPasses) {
  Played const played(twoWith(kKey + ", key-server-priority: 10",
                              kKey + ", key-server-priority: 20",
                              "at 30.5 lose 3 frames from A e1\n"
                              "at 38 expect B e1 uses no key\n"
                              "from 20 to 90 expect B e1 is open\n"
                              "at 90 expect B e1 has rotated 0 times\n"));
  EXPECT_THAT(played.failures(), IsEmpty());
}

// The primary key of A is the fallback key of B, which leads, and waits for its own primary one.
TEST(ThePortDoctor, WaitsWhileTheOtherEndWaitsWithItsFallbackKey) {
  Played const played(twoWith(kKey + ", key-server-priority: 20",
                              "key: " + kOther + ", fallback-" + kKey + ", key-server-priority: 10",
                              "by 90 expect A logs no MACSECD_PORT_BOUND_ANEW\n"
                              "by 90 expect B logs no MACSECD_PORT_BOUND_ANEW\n"
                              "by 45 expect A e1 is open\n"));
  EXPECT_THAT(played.failures(), IsEmpty());
}

// The port forgets the peer for which it has its SSCI before it forgets its key.
TEST(ThePortDoctor, LetsNoKeyBeSentWithUnderTheSsciOfAnotherPeerAsItBindsThePortAnew) {
  std::string const remake =
      "at 30 delete interface e1 on B\n"
      "at 31.5 make interface e1 on B with address 02:00:00:00:00:09\n";
  std::string text = twoWith(kKey + ", key-server-priority: 20", kKey + ", key-server-priority: 10",
                             remake +
                                 "by 90 expect A logs 1 MACSECD_PORT_BOUND_ANEW\n"
                                 "at 90 expect A e1 is open\n"
                                 "at 90 expect A e1 has the same SAK as B e1\n");
  text.replace(text.find("00:01"), 5, "00:05");
  Played played(text);
  EXPECT_THAT(played.failures(), IsEmpty());
  EXPECT_THAT(played.simulation().nonceRepeats(), IsEmpty());
}

// The hardware of the key server answers later than its peer's: the peer has the new key first.
std::string changeWithSlowHardware(std::string const& lines) {
  return twoWith(kKey + ", key-server-priority: 10, rekey-period: 40",
                 kKey + ", key-server-priority: 20",
                 "data every 0.1\nat 30 hardware of A is slow by 5\n"
                 "from 20 to 90 expect A e1 is open\n"
                 "from 20 to 90 expect B e1 is open\n" +
                     lines);
}

TEST(ThePortDoctor, HasAKeyServerGoOverThatHasMissedItsMoment) {
  Played played(
      changeWithSlowHardware("by 70 expect A logs 1 MACSECD_GOES_OVER_LATE with e1\n"
                             "by 70 expect B e1 has rotated 1 times\n"));
  EXPECT_THAT(played.failures(), IsEmpty());
}

TEST(ThePortDoctor, IsNeededForThat) {
  Played const played(
      changeWithSlowHardware("port doctor off\n"
                             "from 20 to 90 expect B e1 has rotated 0 times\n"));
  EXPECT_THAT(played.failures(), IsEmpty());
}

TEST(ThePortDoctor, LeavesAKeyServerAloneThatWaitsForItsPeer) {
  Played const played(twoWith(kKey + ", key-server-priority: 10, rekey-period: 40",
                              kKey + ", key-server-priority: 20",
                              "at 30 hardware of B is slow by 9\n"
                              "by 90 expect A logs no MACSECD_GOES_OVER_LATE\n"
                              "from 20 to 90 expect A e1 is open\n"));
  EXPECT_THAT(played.failures(), IsEmpty());
}

// Both take a new primary key, and before the key server has given a SAK of it the other one comes
// to lead: its actor has succeeded already, and nothing has it elect.
std::string leadAtTheWrongMoment(std::string const& lines) {
  std::string const fallback = ", fallback-" + kKey;
  std::string const key = " to c0de0066 00000000000000001234567800000066\n";
  return twoWith("key: " + kOther + fallback + ", key-server-priority: 10",
                 "key: {ckn: 0e, cak: " + key128 + "}" + fallback + ", key-server-priority: 20",
                 "data every 0.1\n"
                 "at 47 set key of profile core on A" +
                     key + "at 49 set key of profile core on B" + key +
                     "at 54 set priority of profile core on B to 8\n"
                     "from 46 to 90 expect A e1 is open\n"
                     "from 46 to 90 expect B e1 is open\n" +
                     lines);
}

TEST(ThePortDoctor, HasAPortElectAgainThatLeadsUnderItsPrimaryKeyAndUsesTheFallbackKey) {
  Played played(
      leadAtTheWrongMoment("between 60 and 64 expect B logs 1 MACSECD_ELECTS_AGAIN with e1\n"
                           "from 72 to 90 expect A e1 uses key c0de0066\n"
                           "from 72 to 90 expect B e1 uses key c0de0066\n"
                           "at 90 expect A logs no MACSECD_ELECTS_AGAIN\n"));
  EXPECT_THAT(played.failures(), IsEmpty());
  EXPECT_EQ(played.simulation().nonceRepeats().size(), 0u);
}

TEST(ThePortDoctor, IsNeededForThatToo) {
  Played const played(
      leadAtTheWrongMoment("port doctor off\n"
                           "from 70 to 90 expect A e1 uses key ab\n"
                           "from 70 to 90 expect B e1 uses key ab\n"));
  EXPECT_THAT(played.failures(), IsEmpty());
}

TEST(ThePortDoctor, LeavesAPortAloneWhoseFallbackKeyLeadsSinceThePrimaryKeysDiffer) {
  std::string const fallback = ", fallback-" + kKey;
  Played const played(twoWith("key: " + kOther + fallback,
                              "key: {ckn: 0e, cak: " + key128 + "}" + fallback,
                              "from 45 to 90 expect A e1 uses key ab\n"
                              "from 45 to 90 expect B e1 uses key ab\n"
                              "by 90 expect A logs no MACSECD_ELECTS_AGAIN\n"
                              "by 90 expect B logs no MACSECD_ELECTS_AGAIN\n"));
  EXPECT_THAT(played.failures(), IsEmpty());
}

}  // namespace
}  // namespace Lab
