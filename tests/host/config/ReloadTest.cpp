#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "host/explain/Explain.h"
#include "tests/host/HostFixture.h"

namespace Macsecd {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr char const* kReloaded = R"(
profiles:
  one:
    key: {ckn: c0de0001, cak: 0123456789abcdef0123456789abcdef}
    fallback-key: {ckn: c0defa11, cak: fedcba9876543210fedcba9876543210}
  two:
    key: {ckn: c0de0002, cak: 00112233445566778899aabbccddeeff}
interfaces:
  Ethernet1: {profile: one}
)";

std::string replaced(std::string text, std::string const& from, std::string const& to) {
  auto const at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  return text.replace(at, from.size(), to);
}

/// A running switch, and everything that it writes from then on.
class Reload : public ::testing::Test {
 protected:
  Reload() { s.bringUp(parseConfig(kReloaded, "switch.yaml").config); }
  /// What is written meanwhile.
  std::vector<std::string> reload(std::string const& text) {
    s.world.writes.clear();
    s.world.attributeLogIs(true);
    taken = s.host.reload(parseConfig(text, "switch.yaml"));
    s.world.attributeLogIs(false);
    return s.world.writes;
  }
  Switch s{1};
  bool taken = false;
};

TEST_F(Reload, OfTheSameFileWritesNothing) {
  EXPECT_THAT(reload(kReloaded), IsEmpty());
  EXPECT_TRUE(taken);
}

TEST_F(Reload, OfKeysInAnotherLetterCaseAndOfNamesInAnotherEncodingWritesNothing) {
  EXPECT_THAT(reload(replaced(kReloaded, "0123456789abcdef0123", "0123456789ABCDEF0123")),
              IsEmpty());
  EXPECT_THAT(reload(replaced(kReloaded, "c0de0001", "C0DE0001")), IsEmpty());
  EXPECT_THAT(reload(replaced(kReloaded, "c0de0001", "c0De0001")), IsEmpty());
  EXPECT_TRUE(taken);
}

TEST_F(Reload, OfANameInCharactersAndThenInItsOctetsWritesNothing) {
  EXPECT_FALSE(reload(replaced(kReloaded, "c0de0001", "xyz")).empty());
  EXPECT_THAT(reload(replaced(kReloaded, "c0de0001", "78797a")), IsEmpty());
}

TEST_F(Reload, WritesWhatHasChangedAlone) {
  auto const profile = s.host.config()->profile("one");
  EXPECT_THAT(reload(replaced(kReloaded, "profile: one", "profile: one, port-number: 1")),
              IsEmpty());
  auto const writes =
      reload(replaced(kReloaded, "  one:\n", "  one:\n    key-server-priority: 7\n"));
  EXPECT_EQ(std::ranges::count(writes, "keyServerPriority"), 2) << "changed, in force";
  EXPECT_EQ(std::ranges::count(writes, "key") + std::ranges::count(writes, "defaultKey"), 2)
      << "of the profile under which the interface waits";
  EXPECT_EQ(s.host.config()->profile("one"), profile);
}

// No file says so; a program that makes its configuration itself may.
TEST_F(Reload, AFallbackKeyWithTheNameOfThePrimaryKeyIsInForceAgainWhenThatHasAnother) {
  SwitchConfig const before = parseConfig(kReloaded, "switch.yaml").config;
  SwitchConfig config = before;
  config.profiles[0].key = config.profiles[0].fallbackKey;
  s.host.configIs(config);
  EXPECT_TRUE(s.intfStatus()->defaultKey().ckn().empty());
  EXPECT_EQ(s.host.status()->portStatus(kIntf)->actorStatus().members(), 1u);
  s.host.configIs(before);
  EXPECT_EQ(s.intfStatus()->defaultKey().ckn(), "c0defa11");
  EXPECT_EQ(s.host.status()->portStatus(kIntf)->actorStatus().members(), 2u);
}

TEST_F(Reload, OfAFileWithMistakesTellsThemAllAndChangesNothing) {
  std::string bad = replaced(kReloaded, "  two:", "    rekey: 5\n  two:");
  bad = replaced(bad, "interfaces:", "delay-protection: perhaps\ninterfaces:");
  bad += "  Ethernet1: {profile: two}\n";
  ConfigResult const read = parseConfig(bad, "switch.yaml");
  std::vector<std::string> places;
  for (Diagnostic const& diagnostic : read.diagnostics) {
    places.push_back(std::to_string(diagnostic.line) + ":" + std::to_string(diagnostic.column));
  }
  EXPECT_THAT(places, ElementsAre("6:5", "9:19", "12:3"));
  EXPECT_THAT(reload(bad), IsEmpty());
  EXPECT_FALSE(taken);
}

TEST_F(Reload, ReadsAFileAndReturnsItsMistakes) {
  auto const path = std::filesystem::temp_directory_path() /
                    ("reload-" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()));
  std::ofstream(path) << replaced(kReloaded, "profile: one", "profile: three");
  std::filesystem::permissions(path, std::filesystem::perms(0600));
  s.world.attributeLogIs(true);
  auto const diagnostics = s.host.reload(path.string());
  ASSERT_EQ(diagnostics.size(), 1u);
  EXPECT_THAT(diagnostics[0].text(), HasSubstr(":9:24: there is no profile 'three'"));
  EXPECT_THAT(s.world.writes, IsEmpty());
  std::ofstream(path) << replaced(kReloaded, "profile: one", "profile: two");
  EXPECT_THAT(s.host.reload(path.string()), IsEmpty());
  EXPECT_EQ(s.intfStatus()->profileName(), "two");
  std::filesystem::remove(path);
  EXPECT_EQ(s.host.reload(path.string()).size(), 1u);
  EXPECT_EQ(s.intfStatus()->profileName(), "two");
}

TEST_F(Reload, AnInterfaceThatMovesKeepsItsStatusAndBothPlacesAreInStep) {
  auto const status = s.intfStatus();
  reload(replaced(kReloaded, "profile: one", "profile: two"));
  EXPECT_EQ(s.intfStatus(), status);
  EXPECT_EQ(status->profileName(), "two");
  Macsec::Config const& config = *s.host.config();
  EXPECT_EQ(config.intfConfig(kIntf)->profileName(), "two");
  EXPECT_FALSE(config.profile("one")->intf(kIntf));
  ASSERT_TRUE(config.profile("two")->intf(kIntf));
  EXPECT_TRUE(*config.profile("two")->intf(kIntf));
}

TEST_F(Reload, AnInterfaceThatMovesToAnotherSuiteIsMadeAnew) {
  std::string const file =
      replaced(replaced(kReloaded, "cak: 00112233445566778899aabbccddeeff}",
                        "cak: 00112233445566778899aabbccddeeff00112233445566778899aabbccddeeff}\n"
                        "    cipher-suite: gcm-aes-xpn-256"),
               "profile: one", "profile: two");
  auto const former = s.intfStatus();
  reload(file);
  EXPECT_TRUE(taken);
  EXPECT_NE(s.intfStatus(), former);
  EXPECT_EQ(s.intfStatus()->cipher(), Macsec::CipherSuite::gcmAesXpn256);
  EXPECT_EQ(s.host.status()->cpStatus(kIntf)->macsecParams(), s.intfStatus()->macsecParams());
}

TEST_F(Reload, AnotherPortNumberMakesTheInterfaceAnew) {
  EXPECT_EQ(s.host.status()->portStatus(kIntf)->mySci().portNum(), 1);
  reload(replaced(kReloaded, "profile: one", "profile: one, port-number: 9"));
  EXPECT_EQ(s.host.status()->portStatus(kIntf)->mySci().portNum(), 9);
  EXPECT_EQ(s.host.ethIntfStatusDir()->intfStatus(kIntf)->linkStatus(), Interface::linkUp);
}

TEST_F(Reload, ADialectThatIsLeftOutGoesBackToTheDefault) {
  std::string const dialect =
      replaced(kReloaded, "profile: one", "profile: one, dialect: {icv-indicator: left-out}");
  reload(dialect);
  EXPECT_EQ(s.host.codec()->dialect(kIntf).icvIndicator, Codec::IcvIndicator::leftOut);
  reload(replaced(kReloaded, "  Ethernet1: {profile: one}\n", "  {}\n"));
  EXPECT_EQ(s.host.codec()->dialect(kIntf).icvIndicator, Codec::Dialect().icvIndicator);
}

// Everything else is in the tree by then.
TEST_F(Reload, WhatEndsTheProcessIsWrittenLast) {
  auto const writes =
      reload("fips: true\n" + replaced(kReloaded, "  one:\n", "  one:\n    rekey-period: 9\n"));
  EXPECT_THAT(s.world.exits, ElementsAre(0));
  EXPECT_EQ(s.host.config()->profile("one")->sessionReKeyPeriod(), 9u);
  EXPECT_LT(std::ranges::find(writes, "sessionReKeyPeriod"),
            std::ranges::find(writes, "fipsRestrictions"));
  EXPECT_TRUE(s.host.config()->fipsRestrictions());
}

TEST_F(Reload, ShuttingDownComesFirst) {
  auto const writes =
      reload("shutdown: true\n" + replaced(kReloaded, "  one:\n", "  one:\n    rekey-period: 9\n"));
  EXPECT_EQ(writes.front(), "shutdown");
}

// What an interface has on the way from one file to another.
class ReloadOnTheWay : public Reload {
 protected:
  ReloadOnTheWay() { s.world.attributeFollowerIs(follower); }
  ~ReloadOnTheWay() override { s.world.attributeFollowerDel(follower); }

  struct Follower final : Vesk::AttributeFollower {
    explicit Follower(ReloadOnTheWay& of) : test(of) {}
    void attributeWritten(Vesk::AttributeWrite const&) override {
      auto const intf = test.s.intfStatus();
      std::string const now = intf ? std::string(intf->key().ckn().view()) : "gone";
      if (test.keys.empty() || test.keys.back() != now) test.keys.push_back(now);
    }
    ReloadOnTheWay& test;
  };

  std::vector<std::string> keys;
  Follower follower{*this};
};

constexpr char const* kTwo =
    "profiles:\n"
    "  s: {SAYS}\n"
    "  q: {QAYS}\n"
    "interfaces:\n"
    "  Ethernet1: {profile: NAME}\n";

std::string two(std::string const& s, std::string const& q, std::string const& name) {
  return replaced(replaced(replaced(kTwo, "SAYS", s), "QAYS", q), "NAME", name);
}

constexpr char const* kKeyA = "key: {ckn: aa, cak: 0123456789abcdef0123456789abcdef}";
constexpr char const* kKeyB = "key: {ckn: bb, cak: fedcba9876543210fedcba9876543210}";
constexpr char const* kFallbackB = "fallback-key: {ckn: bb, cak: fedcba9876543210fedcba9876543210}";

TEST_F(ReloadOnTheWay, AnInterfaceNeverHasAKeyThatNeitherFileGivesIt) {
  reload(two("", "dot1x: true", "s"));
  keys.clear();
  reload(two(kKeyA, "dot1x: true", "q"));
  EXPECT_THAT(keys, ElementsAre("gone", ""));
  EXPECT_EQ(s.world.logged("MKA_CA_CREATED"), 1u) << "that of before";
}

TEST_F(ReloadOnTheWay, AMoveToAProfileOfTheSameKeyLeavesThePortAloneWhateverElseChanges) {
  reload(two(kKeyA, kKeyB, "s"));
  auto const actor = s.host.status()->portStatus(kIntf)->actorStatus("aa");
  ASSERT_TRUE(actor);
  keys.clear();
  reload(two(kKeyB, kKeyA, "q"));
  EXPECT_THAT(keys, ElementsAre("aa"));
  reload(two(std::string(kKeyA) + ", include-sci: true", kKeyA, "q"));
  reload(two(kKeyA, std::string(kKeyB) + ", include-sci: true", "s"));
  EXPECT_THAT(keys, ElementsAre("aa"));
  EXPECT_EQ(s.host.status()->portStatus(kIntf)->actorStatus("aa"), actor);
}

TEST_F(ReloadOnTheWay, AChangeFrom8021XToAKeyKeepsThePortThatTheFallbackKeyCarries) {
  std::string const fallback = kFallbackB;
  reload(two("dot1x: true, " + fallback, "", "s"));
  auto const actor = s.host.status()->portStatus(kIntf)->actorStatus("bb");
  ASSERT_TRUE(actor);
  keys.clear();
  reload(two(kKeyA + (", " + fallback), "", "s"));
  EXPECT_THAT(keys, ElementsAre("", "aa"));
  EXPECT_EQ(s.host.status()->portStatus(kIntf)->actorStatus("bb"), actor);
}

TEST_F(ReloadOnTheWay, AKeyThatIsntInTheFileAnyMoreIsNotInUseWith8021X) {
  reload(two(kKeyA, "", "s"));
  reload(two("dot1x: true", "", "s"));
  EXPECT_EQ(s.intfStatus()->key(), Macsec::Cak());
  EXPECT_TRUE(s.host.status()->portStatus(kIntf)->actorStatus().empty());
  reload(two(kKeyB, "", "s"));
  reload(two("dot1x: true, " + std::string(kFallbackB), "", "s"));
  auto const port = s.host.status()->portStatus(kIntf);
  EXPECT_EQ(port->actorStatus().members(), 1u);
  EXPECT_TRUE(port->actorStatus("bb")->defaultActor());
}

TEST_F(ReloadOnTheWay, ANameIsSpelledAnewOnlyWhereItsCharactersGoOnTheWire) {
  std::string const upper = replaced(kKeyA, "ckn: aa", "ckn: AA");
  reload(two(kKeyA, "", "s"));
  EXPECT_THAT(reload(two(upper, "", "s")), IsEmpty());
  std::string const characters = "s, dialect: {name-on-wire: characters}";
  reload(two(kKeyA, "", characters));
  keys.clear();
  reload(two(upper, "", characters));
  EXPECT_THAT(keys, ElementsAre("aa", "AA"));
}

TEST_F(ReloadOnTheWay, MacsecThatIsSwitchedOnAgainIsNotToldToRunInTheWrongFipsMode) {
  Switch other(2);
  SwitchConfig config = configWith(kCak);
  config.shutdown = true;
  other.bringUp(config);
  other.host.configIs(configWith(kCak));
  for (Cause const& cause : explain(other.host, kIntf).causes) {
    EXPECT_NE(cause.kind, CauseKind::fips);
  }
}

}  // namespace
}  // namespace Macsecd
