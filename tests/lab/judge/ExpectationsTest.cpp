#include "lab/judge/Expectations.h"

#include <gmock/gmock.h>

#include "tests/lab/Played.h"

namespace Lab {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// What fails of one line in line 19 of two switches that open at 7.001 and 8.001.
std::vector<std::string> failing(std::string const& line) { return Played(pair(line)).failures(); }

struct Case {
  char const* line;
  char const* failure;  ///< behind "f:19: "
};

// One failure for each line, which names the place and ends as told.
void expectFailures(std::vector<Case> const& cases) {
  for (auto const& [line, failure] : cases) {
    auto const failures = failing(line);
    ASSERT_EQ(failures.size(), 1u) << line;
    EXPECT_THAT(failures[0], testing::StartsWith("f:19: at ")) << line;
    EXPECT_THAT(failures[0], testing::EndsWith(failure)) << line;
  }
}

TEST(Expectations, ThatFailNameTheTimeTheSwitchWhatWasExpectedAndWhatIs) {
  expectFailures({
      Case{"at 7 expect A Ethernet1 is open",
           "at 7.000 on A: expected that A Ethernet1 is open, but A Ethernet1 is closed"},
      Case{"by 8 expect B Ethernet1 is open",
           "at 8.000 on B: expected that B Ethernet1 is open, but B Ethernet1 is closed"},
      Case{"between 2 and 7 expect A Ethernet1 is open",
           "at 7.000 on A: expected that A Ethernet1 is open, but A Ethernet1 is closed"},
      Case{"from 5 to 9 expect A Ethernet1 is closed",
           "at 7.001 on A: expected that A Ethernet1 is closed, but A Ethernet1 is open"},
      Case{"exactly at 8 expect A Ethernet1 is open",
           "at 7.001 on A: expected that A Ethernet1 is open, but A Ethernet1 is open already"},
      Case{"exactly at 6 expect A Ethernet1 is open",
           "at 6.000 on A: expected that A Ethernet1 is open, but A Ethernet1 is closed"},
      Case{"at 9 expect A Ethernet1 is absent",
           "at 9.000 on A: expected that A Ethernet1 is absent, but A Ethernet1 is open"},
      Case{"at 9 expect A Ethernet1 is not open",
           "at 9.000 on A: expected that A Ethernet1 is not open, but A Ethernet1 is open"},
      Case{"at 0.5 expect A Ethernet1 uses key ab",
           "at 0.500 on A: expected that A Ethernet1 uses key ab, "
           "but A Ethernet1 uses no key"},
      Case{"at 9 expect A Ethernet1 uses no key",
           "at 9.000 on A: expected that A Ethernet1 uses no key, "
           "but A Ethernet1 uses key ab"},
  });
}

TEST(Expectations, OfActorsTellWhatTheActorsHave) {
  expectFailures({
      Case{"at 9 expect A Ethernet1 has key server B",
           "at 9.000 on A: expected that A Ethernet1 has key server B, "
           "but A Ethernet1 is key server"},
      Case{"at 9 expect B Ethernet1 is key server",
           "at 9.000 on B: expected that B Ethernet1 is key server, "
           "but B Ethernet1 has key server A"},
      Case{"at 9 expect A Ethernet1 has no live peer",
           "at 9.000 on A: expected that A Ethernet1 has no live peer, "
           "but A Ethernet1 has live peers B"},
      Case{"at 0.5 expect A Ethernet1 has live peer B under ab",
           "at 0.500 on A: expected that A Ethernet1 has live peer B under ab, "
           "but A Ethernet1 has no live peer"},
      Case{"at 7 expect A Ethernet1 has no forwarding entry",
           "at 7.000 on A: expected that A Ethernet1 has no forwarding entry, "
           "but A Ethernet1 has forwarding entry unauthorized"},
      Case{"at 9 expect A Ethernet1 has sakTransmit",
           "at 9.000 on A: expected that A Ethernet1 has sakTransmit, "
           "but A Ethernet1 has no sakTransmit"},
      Case{"at 7 expect A Ethernet1 has a SAK",
           "at 7.000 on A: expected that A Ethernet1 has a SAK, but A Ethernet1 has no SAK"},
      Case{"at 7.5 expect A Ethernet1 has the same SAK as B Ethernet1",
           "but A Ethernet1 sends with SAK 31ca6983:1, B Ethernet1 sends with no SAK"},
      Case{"at 9 expect A Ethernet1 has another SAK than B Ethernet1",
           "but A Ethernet1 sends with SAK 31ca6983:1, B Ethernet1 sends with SAK 31ca6983:1"},
      Case{"at 9 expect A Ethernet1 has rotated 2 times",
           "at 9.000 on A: expected that A Ethernet1 has rotated 2 times, "
           "but A Ethernet1 has rotated 0 times"},
  });
}

TEST(Expectations, OfSyslogLinesTellWhichLinesCame) {
  expectFailures({
      Case{"at 7 expect A logs MKA_SAK_CREATED",
           "at 7.000 on A: expected that A logs MKA_SAK_CREATED, but no such line came"},
      Case{"exactly at 8 expect A logs MKA_SAK_CREATED",
           "at 8.000 on A: expected that A logs MKA_SAK_CREATED, "
           "but the first one came at 7.001"},
      Case{"by 20 expect A logs 2 MKA_SAK_CREATED",
           "at 20.000 on A: expected that A logs 2 MKA_SAK_CREATED, "
           "but 1 such line came"},
      Case{"by 20 expect A logs no MKA_KEY_IN_USE with ab Ethernet1",
           "at 1.001 on A: expected that A logs no MKA_KEY_IN_USE with ab Ethernet1, "
           "but 1 such line came: \"Configured key ab currently in use on interface "
           "Ethernet1\""},
  });
}

TEST(Expectations, ThatHoldAreSilent) {
  EXPECT_THAT(failing("exactly at 7.001 expect A Ethernet1 is open\n"
                      "from 0 to 7 expect A Ethernet1 is closed\n"
                      "from 7.001 to 30 expect A Ethernet1 is open\n"
                      "at 7.001 expect A logs MKA_SAK_CREATED with * 1 Ethernet1\n"
                      "between 7.001 and 7.001 expect A logs 1 MKA_SAK_CREATED\n"
                      "by 30 expect B logs no MKA_SAK_CREATED\n"
                      "by 30 expect A logs no MKA_KEY_IN_USE with cd\n"
                      "at 9.001 expect A Ethernet1 has sakTransmit\n"
                      "at 9 expect A Ethernet1 has live peer B\n"
                      "at 9 expect A Ethernet1 has 1 live peer under ab\n"
                      "at 9 expect B Ethernet1 has key server A under ab"),
              IsEmpty());
}

TEST(Expectations, OfASpanSeeAPortThatClosesAndOpensWithinOneInstant) {
  // A restart by shutdown and back within one instant closes the port for no time at all.
  EXPECT_THAT(failing("at 20 shutdown A\nat 20 no shutdown A\n"
                      "from 10 to 30 expect A Ethernet1 is open"),
              ElementsAre("f:21: at 20.000 on A: expected that A Ethernet1 is open, "
                          "but A Ethernet1 is closed"));
}

TEST(Expectations, CompareTheSakWithTheOneAtAMark) {
  EXPECT_THAT(failing("at 5 mark early\nat 10 mark late\n"
                      "at 20 set rekey period of profile core on A to 5\n"
                      "at 15 expect A Ethernet1 has the same SAK as at late\n"
                      "at 30 expect A Ethernet1 has another SAK than at late\n"
                      "at 30 expect A Ethernet1 has rotated 1 time since late"),
              IsEmpty());
  EXPECT_THAT(failing("at 5 mark early\nat 15 expect A Ethernet1 has another SAK than at early"),
              ElementsAre(testing::EndsWith("sends with SAK 31ca6983:1, sent then with no SAK")));
}

}  // namespace
}  // namespace Lab
