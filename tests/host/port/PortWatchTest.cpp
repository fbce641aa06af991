#include "host/port/PortWatch.h"

#include <optional>

#include "host/client/EventText.h"
#include "host/port/EventJson.h"
#include "host/text/TimeText.h"
#include "tests/host/HostFixture.h"

namespace Macsecd {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

SwitchConfig configWithFallback(std::string const& primary = kCak) {
  SwitchConfig config = configWith(primary);
  config.profiles[0].fallbackKey =
      KeyConfig{"fa11", Vesk::String8("fedcba9876543210fedcba9876543210")};
  return config;
}

class PortWatchTest : public ::testing::Test {
 protected:
  void watch(Switch& one) {
    Vesk::WorldScope const scope(one.world);
    watch_.emplace(one.host, [this](PortEvent const& event) {
      auto const line =
          eventLineOf(eventJson(Json::object({{"time", timeText(event.time)}}), event).dump());
      ASSERT_TRUE(line);
      EXPECT_EQ(line->interface, "Ethernet1");
      EXPECT_EQ(line->time, Vesk::now());
      words.push_back(line->words);
    });
  }
  void bringUp(SwitchConfig const& config = configWith(kCak)) {
    for (Switch* one : {&a, &b}) {
      one->bringUp(config);
    }
  }
  std::vector<std::string> taken() { return std::exchange(words, {}); }
  /// "5e6f7081:1": the key that both use.
  std::string sak() const { return summaryOf(a.host, kIntf).sak; }

  Switch b{2}, a{1};
  std::vector<std::string> words;
  std::optional<PortWatch> watch_;
};

TEST_F(PortWatchTest, TellsABringUpInItsOrderAtTheKeyServer) {
  watch(a);
  bringUp();
  talk(a, b, 20);
  EXPECT_THAT(taken(), ElementsAre("the link is down", "the link is up", "the port is closed",
                                   "peer 02:00:00:00:00:02/1 is live (key 6162)",
                                   "key 6162 (primary) is in use", "this switch is the key server",
                                   "sends with SAK " + sak() + ", AN 0", "the port is open"));
}

TEST_F(PortWatchTest, TellsABringUpInItsOrderAtTheOtherEnd) {
  watch(b);
  bringUp();
  talk(a, b, 20);
  EXPECT_THAT(taken(),
              ElementsAre("the link is down", "the link is up", "the port is closed",
                          "peer 02:00:00:00:00:01/1 is live (key 6162)",
                          "key 6162 (primary) is in use", "the key server is 02:00:00:00:00:01/1",
                          "sends with SAK " + sak() + ", AN 0", "the port is open"));
}

TEST_F(PortWatchTest, TellsAWayToTheFallbackKeyAndBack) {
  bringUp(configWithFallback());
  talk(a, b, 30);
  watch(a);
  EXPECT_THAT(taken(), IsEmpty());
  b.host.configIs(configWithFallback("00112233445566778899aabbccddeeff"));
  talk(a, b, 90);
  EXPECT_THAT(taken(), ElementsAre("peer 02:00:00:00:00:02/1 went (key 6162)", "no key is in use",
                                   "key fa11 (fallback) is in use", "this switch is the key server",
                                   "sends with SAK " + sak() + ", AN 1"));
  b.host.configIs(configWithFallback());
  talk(a, b, 150);
  EXPECT_THAT(taken(),
              ElementsAre("peer 02:00:00:00:00:02/1 is live (key 6162)", "no key is in use",
                          "key 6162 (primary) is in use", "this switch is the key server",
                          "sends with SAK " + sak() + ", AN 2"));
}

TEST_F(PortWatchTest, TellsTheLossOfTheLink) {
  bringUp();
  talk(a, b, 30);
  watch(a);
  a.host.linkIs(kIntf, false);
  EXPECT_THAT(taken(), ElementsAre("the link is down", "no key is in use",
                                   "peer 02:00:00:00:00:02/1 went (key 6162)", "sends with no SAK",
                                   "the port is closed"));
  a.host.interfaceDel(kIntf);
  EXPECT_THAT(taken(), ElementsAre("the link is absent", "the port is absent"));
}

TEST_F(PortWatchTest, TellsANewSakAndFaultsOfTheHardware) {
  Vesk::WorldScope const scope(a.world);
  bringUp();
  talk(a, b, 30);
  watch(a);
  a.actor()->llpnExhaustionInc(1);
  talk(a, b, 40);
  EXPECT_THAT(taken(), ElementsAre("sends with SAK " + sak() + ", AN 1"));
  a.host.hardwareFaultIs(kIntf, "no room");
  a.host.hardwareFaultIs(kIntf, "no room");
  a.host.hardwareFaultIs(kIntf, "");
  EXPECT_THAT(taken(), ElementsAre("the hardware refuses: no room",
                                   "the hardware refuses nothing any more"));
}

TEST_F(PortWatchTest, TellsNothingWhileNothingChanges) {
  bringUp();
  talk(a, b, 30);
  watch(a);
  talk(a, b, 60);
  EXPECT_THAT(taken(), IsEmpty());
}

TEST_F(PortWatchTest, LeavesTheAttributeLogAsItFoundIt) {
  ASSERT_FALSE(a.world.switches().writesAreLogged);
  watch(a);
  EXPECT_TRUE(a.world.switches().writesAreLogged);
  EXPECT_FALSE(b.world.switches().writesAreLogged);
  watch_.reset();
  EXPECT_FALSE(a.world.switches().writesAreLogged);
  bringUp();
  EXPECT_THAT(taken(), IsEmpty());
}

}  // namespace
}  // namespace Macsecd
