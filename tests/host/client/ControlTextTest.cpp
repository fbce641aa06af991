#include "host/client/ControlText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Macsecd {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr char const* kStatus = R"({"version":2,"ok":true,"result":[
  {"interface":"Ethernet1","profile":"core","link":"up","state":"open","cipher-suite":"gcm-aes-xpn-128",
   "sci":"02:00:00:00:00:01/1","ssci":"00000002","sak":"5e6f7081:2","an":1,
   "key-age":{"seconds":200.5,"at-least":false},"device":"Ethernet1-sec",
   "tx-packet-number":4294967398,"rx-packet-number":8,"keys":[
    {"ckn":"c0de0001","role":"primary","principal":true,"agrees":true,
     "key-server":"02:00:00:00:00:01/1","is-key-server":true,"peers":[
      {"member-id":"aabb","sci":"02:00:00:00:00:02/1","live":true,"priority":16,
       "message-number":7,"seconds-since-heard":1.25}]},
    {"ckn":"c0defa11","role":"fallback","principal":false,"agrees":false,
     "key-server":null,"is-key-server":false,"peers":[]}]},
  {"interface":"Ethernet2","profile":"core","link":"absent","state":"absent","cipher-suite":null,
   "sci":null,"ssci":null,"sak":null,"an":null,"key-age":null,"device":null,
   "tx-packet-number":null,"rx-packet-number":null,"keys":[]}]})";

TEST(ControlText, HasALineForEachPort) {
  EXPECT_EQ(readingOf(ControlView::status, kStatus).text,
            "Interface  State   Key       Role     Key server   SAK         AN  Age       Peers  "
            "Sent        Received\n"
            "Ethernet1  open    c0de0001  primary  this switch  5e6f7081:2  1   3 m 20 s  1      "
            "4294967397  7\n"
            "Ethernet2  absent  -         -        -            -           -   -         -      "
            "-           -\n");
}

TEST(ControlText, SaysThatNoInterfaceIsConfigured) {
  using enum ControlView;
  for (ControlView const view : {status, peers, keys, counters, explain}) {
    auto const reading = readingOf(view, R"({"version":2,"ok":true,"result":[]})");
    EXPECT_EQ(reading.text, "no interface is configured\n");
    EXPECT_TRUE(reading.isGood);
  }
}

TEST(ControlText, ShowsTheLossOfAllPeersOnAPortThatIsStillOpen) {
  std::string status = kStatus;
  status.replace(status.find("\"principal\":true"), 16, "\"principal\":false");
  EXPECT_THAT(readingOf(ControlView::status, status).text,
              HasSubstr("Ethernet1  open    -    -     -           5e6f7081:2  1   3 m 20 s  0  "));
}

TEST(ControlText, HasALineForEachKeyAndPeer) {
  EXPECT_EQ(readingOf(ControlView::keys, kStatus).text,
            "Interface  Key       Role      In use  Agrees  Key server   Peers\n"
            "Ethernet1  c0de0001  primary   yes     yes     this switch  1\n"
            "Ethernet1  c0defa11  fallback  no      no      -            0\n");
  EXPECT_EQ(
      readingOf(ControlView::peers, kStatus).text,
      "Interface  Key       Peer                 State  Priority  Message  Heard      Member\n"
      "Ethernet1  c0de0001  02:00:00:00:00:02/1  live   16        7        1.2 s ago  aabb\n");
}

TEST(ControlText, ShowsAllOfAPort) {
  EXPECT_THAT(readingOf(ControlView::ports, kStatus).text,
              StartsWith("Ethernet1\n"
                         "  state             open\n"
                         "  link              up\n"
                         "  profile           core\n"
                         "  cipher-suite      gcm-aes-xpn-128\n"));
}

TEST(ControlText, TellsTheAgeOfAKeyInTwoUnitsAndWhetherItMayBeOlder) {
  auto const ageIn = [](std::string const& age) {
    std::string status = kStatus;
    status.replace(status.find("{\"seconds\":200.5"), 34, age);
    return readingOf(ControlView::status, status).text;
  };
  EXPECT_THAT(ageIn(R"({"seconds":59.9,"at-least":false})"), HasSubstr("  59 s  "));
  EXPECT_THAT(ageIn(R"({"seconds":7325,"at-least":false})"), HasSubstr("  2 h 2 m  "));
  EXPECT_THAT(ageIn(R"({"seconds":8,"at-least":true})"), HasSubstr("  > 8 s  "));
}

TEST(ControlText, TellsCountersAndExplanations) {
  EXPECT_EQ(readingOf(ControlView::counters,
                      R"({"ok":true,"result":[{"interface":"Ethernet1","counters":[
                        {"frames":"tx success","since-clear":3,"total":40}]}]})")
                .text,
            "Interface  Frames      Since clear  Total\n"
            "Ethernet1  tx success  3            40\n");
  EXPECT_EQ(readingOf(ControlView::counters,
                      R"({"ok":true,"result":[{"interface":"Ethernet1","counters":[
                        {"frames":"tx success","since-clear":3}]}]})")
                .text,
            "Interface  Frames      Since clear\n"
            "Ethernet1  tx success  3\n");
  EXPECT_EQ(readingOf(ControlView::explain,
                      R"({"ok":true,"result":[{"interface":"Ethernet1","secured":false,"causes":[
                        {"cause":"no-link","what":"the link is down","remedy":"check it"}]}]})")
                .text,
            "Ethernet1 is not secured\n  no-link: the link is down\n    check it\n");
  EXPECT_EQ(readingOf(ControlView::explain,
                      R"({"ok":true,"result":[{"interface":"Ethernet1","secured":true,"causes":[],
                        "stages":{"key":"tx-up","guard":"armed","members":[
                        {"ckn":"c0de","member":"5e6f","stage":"live"}]}}]})")
                .text,
            "Ethernet1 is secured\n  stages: key tx-up, guard armed, member 5e6f live\n");
  EXPECT_EQ(readingOf(ControlView::explain,
                      R"({"ok":true,"result":[{"interface":"Ethernet1","secured":false,"causes":[],
                        "stages":{"key":null,"guard":null,"members":[]}}]})")
                .text,
            "Ethernet1 is not secured\n");
}

TEST(ControlText, TellsTheNewSakOrWhenThereWillBeOne) {
  EXPECT_EQ(readingOf(ControlView::rekey,
                      R"({"ok":true,"result":{"interface":"e1","sak":"5e6f:3","seconds":0.0}})")
                .text,
            "e1: new SAK 5e6f:3\n");
  EXPECT_EQ(readingOf(ControlView::rekey,
                      R"({"ok":true,"result":{"interface":"e1","sak":null,"seconds":4.25}})")
                .text,
            "e1: a new SAK comes in 4.2 s\n");
}

TEST(ControlText, TellsMistakesRefusalsAndWhatItDoesNotUnderstand) {
  auto const mistaken = readingOf(
      ControlView::reload,
      R"({"ok":true,"result":{"taken":false,"mistakes":[{"file":"a.yaml","line":3,"column":5,
         "what":"unknown word 'kye'","remedy":"write 'key'"}]}})");
  EXPECT_FALSE(mistaken.isGood);
  EXPECT_EQ(mistaken.text, "a.yaml:3:5: unknown word 'kye'; write 'key'\n");
  EXPECT_TRUE(readingOf(ControlView::reload, R"({"ok":true,"result":{"taken":true,"mistakes":[]}})")
                  .isGood);
  auto const refused =
      readingOf(ControlView::done, R"({"ok":false,"error":"no","remedy":"do it as root"})");
  EXPECT_FALSE(refused.isGood);
  EXPECT_EQ(refused.text, "no; do it as root\n");
  for (char const* const odd : {"", "{", "[]", "{\"ok\":true,\"result\":[{}]}"}) {
    EXPECT_FALSE(readingOf(ControlView::status, odd).isGood) << odd;
  }
}

}  // namespace
}  // namespace Macsecd
