#include "host/config/ConfigFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cctype>
#include <fstream>

#include "tests/host/Complaints.h"

namespace Macsecd {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

std::string const key128 = "00112233445566778899aabbccddeeff";
std::string const key256 = key128 + key128;

TEST(ConfigFile, AnEmptyFileGivesTheDefaults) {
  auto result = parseConfig("", "f");
  ASSERT_TRUE(result.good()) << textOf(result.diagnostics);
  EXPECT_FALSE(result.config.shutdown);
  EXPECT_FALSE(result.config.fips);
  EXPECT_FALSE(result.config.delayProtection);
  EXPECT_THAT(result.config.profiles, IsEmpty());
  EXPECT_THAT(result.config.interfaces, IsEmpty());
}

TEST(ConfigFile, AProfileWithoutEntriesHasTheDefaultsAndIsLegalWithoutAKey) {
  auto result = parseConfig("profiles:\n  p:\ninterfaces: {Ethernet1: {profile: p}}\n", "f");
  ASSERT_TRUE(result.good()) << textOf(result.diagnostics);
  auto const* p = result.config.profile("p");
  ASSERT_TRUE(p);
  EXPECT_FALSE(p->key);
  EXPECT_FALSE(p->fallbackKey);
  EXPECT_EQ(p->keyServerPriority, 16);
  EXPECT_EQ(p->rekeyPeriod, 0u);
  EXPECT_EQ(p->cipherSuite, Suite::gcmAesXpn128);
  EXPECT_FALSE(p->includeSci);
  EXPECT_FALSE(p->dot1x);
  EXPECT_EQ(p->groupCak, (GroupCakConfig{false, 1000}));
  EXPECT_EQ(result.config.interface("Ethernet1")->portNumber, 1);
}

TEST(ConfigFile, EveryEntryOfAFullFileIsRead) {
  auto result = parseConfig(
      "shutdown: true\nfips: yes\ndelay-protection: on\n" +
          profile("key: {ckn: AB01, cak: " + key256 + "}\nfallback-key: {ckn: cd, cak: " + key256 +
                  "}\nkey-server-priority: 255\nrekey-period: 4294967295\n"
                  "cipher-suite: gcm-aes-xpn-256\ninclude-sci: true\n"
                  "dot1x: true\ngroup-cak: {enabled: true, lifetime: 5}\n") +
          "interfaces:\n  Ethernet7: {profile: p, port-number: 65535}\n",
      "f");
  ASSERT_TRUE(result.good()) << textOf(result.diagnostics);
  auto const& c = result.config;
  EXPECT_TRUE(c.shutdown && c.fips && c.delayProtection);
  auto const& p = c.profiles.at(0);
  EXPECT_EQ(p.key, (KeyConfig{"AB01", Vesk::String8(key256)}));
  EXPECT_EQ(p.fallbackKey->ckn, "cd");
  EXPECT_EQ(p.keyServerPriority, 255);
  EXPECT_EQ(p.rekeyPeriod, 4294967295u);
  EXPECT_EQ(p.cipherSuite, Suite::gcmAesXpn256);
  EXPECT_TRUE(p.includeSci && p.dot1x);
  EXPECT_EQ(p.groupCak, (GroupCakConfig{true, 5}));
  EXPECT_EQ(c.interface("Ethernet7")->profile, "p");
  EXPECT_EQ(c.interface("Ethernet7")->portNumber, 65535);
  EXPECT_EQ(c.interface("Ethernet8"), nullptr);
}

TEST(ConfigFile, TheShippedExampleIsGood) {
  auto result = readConfigFile(EXAMPLES "/switch.yaml", Keys::example);
  EXPECT_TRUE(result.good()) << textOf(result.diagnostics);
  EXPECT_THAT(result.config.profiles, SizeIs(3));
  EXPECT_THAT(result.config.interfaces, SizeIs(4));
}

TEST(ConfigFile, AnUnknownWordIsAnsweredWithTheNearestOne) {
  EXPECT_THAT(complaints("shutdwon: true\n"),
              ElementsAre("f:1:1: unknown word 'shutdwon' in the configuration; write 'shutdown'"));
  EXPECT_THAT(complaints(profile("rekey: 5")),
              ElementsAre("f:3:5: unknown word 'rekey' in profile 'p'; write 'rekey-period'"));
  EXPECT_THAT(complaints(profile("colour: 5")),
              ElementsAre(HasSubstr("unknown word 'colour' in profile 'p'; use one of: key, ")));
  EXPECT_THAT(complaints(profile("group-cak: {lifetme: 5}")),
              ElementsAre("f:3:17: unknown word 'lifetme' in 'group-cak'; write 'lifetime'"));
  EXPECT_THAT(
      complaints(profile("cipher-suite: gcm-aes-128")),
      ElementsAre("f:3:19: gcm-aes-128 counts its packets with 32 bits, and isn't offered; write "
                  "'gcm-aes-xpn-128', which counts with 64 bits, at both ends"));
}

TEST(ConfigFile, AMissingEntryIsToldAtThePlaceOfItsOwner) {
  EXPECT_THAT(complaints(profile("key:\n  ckn: ab")),
              ElementsAre("f:4:7: 'key' has no 'cak'; add 'cak: ...'"));
  EXPECT_THAT(complaints("interfaces:\n  Ethernet1: {port-number: 2}\n"),
              ElementsAre("f:2:3: interface 'Ethernet1' has no 'profile'; add 'profile: ...'"));
  EXPECT_THAT(complaints("shutdown:\n"),
              ElementsAre("f:1:1: 'shutdown' has no value; give it one"));
}

TEST(ConfigFile, ADuplicateEntryIsToldWithTheLineOfTheFirst) {
  EXPECT_THAT(complaints("fips: true\nfips: true\n"),
              ElementsAre("f:2:1: 'fips' stands twice in the configuration; "
                          "remove it here or in line 1"));
  EXPECT_THAT(complaints("profiles:\n  p:\n  q:\n  p:\n"),
              ElementsAre("f:4:3: profile 'p' stands twice; remove it here or in line 2"));
  EXPECT_THAT(complaints("profiles: {p: }\ninterfaces:\n  e: {profile: p}\n  e: {profile: p}\n"),
              ElementsAre("f:4:3: interface 'e' stands twice; remove it here or in line 3"));
}

TEST(ConfigFile, AKeyIsHexadecimalEvenAndFitsTheSuiteWhereverTheSuiteStands) {
  EXPECT_THAT(complaints(profile("key: {ckn: a, cak: 012}")),
              ElementsAre(HasSubstr("f:3:24: the key has an odd number of digits, 3; ")));
  EXPECT_THAT(complaints(profile("key: {ckn: a, cak: xy}")),
              ElementsAre(HasSubstr("f:3:24: the key has characters that aren't hexadecimal")));
  EXPECT_THAT(complaints(profile("key: {ckn: a, cak: " + key256 + "}")),
              ElementsAre(HasSubstr("the key has 64 digits, which doesn't fit gcm-aes-xpn-128; "
                                    "give 32 hexadecimal digits")));
  EXPECT_THAT(complaints(profile("fallback-key: {ckn: a, cak: " + key128 +
                                 "}\ncipher-suite: gcm-aes-xpn-256")),
              ElementsAre(HasSubstr("f:3:33: the key has 32 digits, which doesn't fit")));
}

TEST(ConfigFile, AKeyNameHasAtMost32OctetsAsTheyGoOnTheWire) {
  auto named = [](std::string const& ckn) {
    return complaints(profile("key: {ckn: " + ckn + ", cak: " + key128 + "}"));
  };
  EXPECT_THAT(named(std::string(32, 'x')), IsEmpty());
  EXPECT_THAT(named(std::string(64, 'a')), IsEmpty());
  EXPECT_THAT(named(std::string(33, 'x')),
              ElementsAre(HasSubstr("f:3:16: the key name has 33 octets, more than 32; ")));
  EXPECT_THAT(named(std::string(63, 'a')), ElementsAre(HasSubstr("has 63 octets")));
  EXPECT_THAT(named(std::string(66, 'a')), ElementsAre(HasSubstr("has 66 octets")));
}

TEST(ConfigFile, PrimaryAndFallbackKeyNeedDifferentNamesOnTheWire) {
  auto keys = [](std::string const& one, std::string const& other) {
    return complaints(profile("key: {ckn: " + one + ", cak: " + key128 +
                              "}\nfallback-key: {ckn: " + other + ", cak: " + key128 + "}"));
  };
  EXPECT_THAT(keys("ab", "abc"), IsEmpty());
  EXPECT_THAT(keys("ab", "ab"),
              ElementsAre("f:4:25: the fallback key has the name of the primary key; "
                          "keys of one interface need different names"));
  EXPECT_THAT(keys("ab", "AB"), SizeIs(1)) << "the same octet";
  EXPECT_THAT(keys("xy", "7879"), SizeIs(1)) << "the same octets";
}

TEST(ConfigFile, AKeyOfZerosIsAMistake) {
  for (char const* const suite : {"gcm-aes-xpn-128", "gcm-aes-xpn-256"}) {
    size_t const digits = std::string(suite).ends_with("128") ? 32 : 64;
    EXPECT_THAT(complaints(profile("key: {ckn: a, cak: '" + std::string(digits, '0') +
                                   "'}\ncipher-suite: " + suite)),
                ElementsAre("f:3:24: the key is all zeros, which anybody would try first; make one "
                            "with 'openssl rand -hex 16', or 32 for a 256-bit suite"));
    EXPECT_THAT(complaints(profile("key: {ckn: a, cak: '" + std::string(digits - 1, '0') +
                                   "1'}\ncipher-suite: " + suite)),
                IsEmpty());
  }
}

TEST(ConfigFile, OneKeyUnderTwoNamesThatDeriveAlikeIsAMistake) {
  auto keys = [](std::string const& one, std::string const& other, std::string const& cak) {
    return complaints(profile("key: {ckn: " + one + ", cak: " + key128 +
                              "}\nfallback-key: {ckn: " + other + ", cak: " + cak + "}"));
  };
  std::string const sixteen = "abababababababababababababababab";
  std::string upper = key128;
  std::ranges::transform(upper, upper.begin(), ::toupper);
  for (auto const& [one, other] : {std::pair{sixteen + "01", sixteen + "02"},
                                   {sixteen, sixteen + "02"},
                                   {"ab", "ab00"},
                                   {"'61'", "'610000'"},
                                   {"a", "'6100'"},
                                   {"sixteen letters and one", "sixteen letters and two"}}) {
    EXPECT_THAT(keys(one, other, upper),
                ElementsAre(AllOf(HasSubstr("f:4:"), HasSubstr("the same cak, and names that agree "
                                                               "in their first 16 octets; give"))))
        << one << " " << other;
    EXPECT_THAT(keys(one, other, std::string(32, 'e')), IsEmpty()) << "another key";
  }
  EXPECT_THAT(keys("ab", "00ab", key128), IsEmpty());
  EXPECT_THAT(keys("ab01", "ab02", key128), IsEmpty()) << "other keys come of it";
}

TEST(ConfigFile, AValueOfTheWrongTypeIsRefused) {
  EXPECT_THAT(complaints("fips: maybe\n"),
              ElementsAre("f:1:7: 'fips' is neither true nor false; write true or false"));
  EXPECT_THAT(complaints("fips: [true]\n"),
              ElementsAre(HasSubstr("f:1:7: 'fips' has to be a single value; ")));
  EXPECT_THAT(complaints("profiles: 5\n"),
              ElementsAre(HasSubstr("f:1:11: 'profiles' has to be a mapping; ")));
  EXPECT_THAT(complaints("- 5\n"), ElementsAre(HasSubstr("f:1:1: the configuration has to be")));
  EXPECT_THAT(complaints(profile("key: " + key128)),
              ElementsAre(HasSubstr("f:3:10: 'key' has to be a mapping; ")));
  EXPECT_THAT(complaints(profile("rekey-period: 1.5")),
              ElementsAre(HasSubstr("f:3:19: 'rekey-period' is no whole number; ")));
}

TEST(ConfigFile, ANumberOutOfRangeIsToldWithItsRange) {
  EXPECT_THAT(complaints(profile("key-server-priority: 256")),
              ElementsAre("f:3:26: 'key-server-priority' is out of range; "
                          "write a whole number from 0 to 255"));
  EXPECT_THAT(complaints(profile("key-server-priority: -1")), SizeIs(1));
  EXPECT_THAT(complaints(profile("rekey-period: 4294967296")), SizeIs(1));
  EXPECT_THAT(complaints(profile("group-cak: {lifetime: 71582789}")), SizeIs(1));
  EXPECT_THAT(complaints("profiles: {p: }\ninterfaces: {e: {profile: p, port-number: 0}}\n"),
              ElementsAre(HasSubstr("from 1 to 65535")));
}

TEST(ConfigFile, AnInterfaceNamesAProfileThatExists) {
  EXPECT_THAT(complaints("profiles: {core: }\ninterfaces:\n  e: {profile: croe}\n"),
              ElementsAre("f:3:16: there is no profile 'croe'; write 'core'"));
  EXPECT_THAT(complaints("interfaces: {e: {profile: x}}\n"),
              ElementsAre(HasSubstr("there is no profile 'x'; add it under 'profiles'")));
}

TEST(ConfigFile, WhatIsNotYamlIsAMistakeToo) {
  EXPECT_THAT(complaints("profiles:\n  p: [1, 2\n"), ElementsAre(HasSubstr("this isn't YAML: ")));
  EXPECT_THAT(complaints("a: b: c\n"), ElementsAre(HasSubstr("f:1:5: this isn't YAML: ")));
  EXPECT_THAT(complaints("fips: true\n---\nfips: true\n"),
              ElementsAre(HasSubstr("a second document begins here; ")));
  EXPECT_THAT(complaints("? [1]\n: 2\n"), ElementsAre(HasSubstr("has no name; ")));
}

TEST(ConfigFile, AnAliasMayNameOneKeyTwice) {
  auto result = parseConfig(
      profile("key: {ckn: a, cak: &k " + key128 + "}\nfallback-key: {ckn: b, cak: *k}"), "f");
  ASSERT_TRUE(result.good()) << textOf(result.diagnostics);
  EXPECT_EQ(result.config.profiles[0].fallbackKey->cak.view(), key128);
}

TEST(ConfigFile, AKeyThatIsWrittenWithEscapesIsAMistake) {
  std::string escaped;
  for (char const c : key128) escaped += "\\x3" + std::string(1, "0123456789"[c % 10]);
  EXPECT_THAT(complaints(profile("key: {ckn: a, cak: \"" + escaped + "\"}")),
              ElementsAre("f:3:24: the key is written with escapes; write its digits one behind "
                          "the other"));
}

TEST(ConfigFile, ANameOfAProfileThatCouldBeAKeyIsNotSuggested) {
  auto const all = complaints("profiles: {" + key128 + ": }\ninterfaces: {e: {profile: x}}\n");
  EXPECT_THAT(all, ::testing::Each(Not(HasSubstr(key128))));
}

TEST(ConfigFile, AllMistakesComeAtOnceInTheOrderOfTheirPlaces) {
  auto all = complaints(
      "fips: 7\ncolour: red\nprofiles:\n  p:\n    key: {ckn: a, cak: 0}\n"
      "interfaces:\n  e: {profile: q, port-number: many}\n");
  EXPECT_THAT(all, ElementsAre(HasSubstr("f:1:7: "), HasSubstr("f:2:1: "), HasSubstr("f:5:24: "),
                               HasSubstr("f:7:16: "), HasSubstr("f:7:32: ")));
}

TEST(ConfigFile, NoMistakeShowsAKeyWhereverItStands) {
  for (std::string const& secret : {key128, key256, key128.substr(1), key128 + "x"}) {
    for (std::string const& text :
         {profile("key: " + secret), profile("key: {ckn: a, cak: [" + secret + "]}"),
          profile("key: {" + secret + ": a}"), profile(secret + ": 1"),
          profile("cipher-suite: " + secret), profile("key: {ckn: a, cak: " + secret + "x}"),
          profile("key: {ckn: a, cak: \"" + secret),
          profile("key: {ckn: a, cak: " + secret + ": b}"), profile("dot1x: " + secret),
          profile("rekey-period: " + secret), "interfaces: {e: {profile: " + secret + "}}\n"}) {
      auto result = parseConfig(text, "f");
      EXPECT_FALSE(result.good()) << text;
      EXPECT_THAT(textOf(result.diagnostics), Not(HasSubstr(secret))) << text;
    }
  }
}

TEST(ConfigFile, AnInterfaceSpeaksTheDialectThatItIsGiven) {
  auto const result = parseConfig(
      "profiles: {p: {dot1x: true}}\n"
      "interfaces:\n"
      "  e1: {profile: p}\n"
      "  e2: {profile: p, dialect: {name-on-wire: characters, icv-indicator: left-out}}\n",
      "f");
  ASSERT_TRUE(result.good());
  EXPECT_EQ(result.config.interfaces[0].dialect, Codec::Dialect());
  EXPECT_EQ(result.config.interfaces[1].dialect.nameOnWire, Codec::NameOnWire::characters);
  EXPECT_EQ(result.config.interfaces[1].dialect.icvIndicator, Codec::IcvIndicator::leftOut);
}

TEST(ConfigFile, AWordThatNoDialectHasIsAMistakeAtItsPlace) {
  auto const diagnostics = parseConfig(
                               "profiles: {p: {dot1x: true}}\n"
                               "interfaces:\n"
                               "  e1: {profile: p, dialect: {icv-indicator: short}}\n",
                               "f")
                               .diagnostics;
  ASSERT_THAT(diagnostics, SizeIs(1));
  EXPECT_EQ(diagnostics[0].text(),
            "f:3:45: icv-indicator has no 'short'; write one of left-out, length-16, length-4");
}

TEST(ConfigFile, AnInterfaceHasWhatIsSaidOfItsDeviceAndItsPort) {
  auto const result = parseConfig(
      "profiles: {p: {dot1x: true}}\n"
      "interfaces:\n"
      "  e1: {profile: p}\n"
      "  e2: {profile: p, device: uplink, replay-window: 64, policy: should-secure,\n"
      "       on-peer-loss: close, mtu: 1400}\n",
      "f");
  ASSERT_TRUE(result.good()) << textOf(result.diagnostics);
  auto const& plain = result.config.interfaces[0];
  EXPECT_EQ(plain.device, "");
  EXPECT_EQ(plain.replayWindow, 0u);
  EXPECT_EQ(plain.mtu, 0u);
  EXPECT_EQ(plain.policy, SecurePolicy::mustSecure);
  EXPECT_EQ(plain.onPeerLoss, OnPeerLoss::keep);
  auto const& other = result.config.interfaces[1];
  EXPECT_EQ(other.device, "uplink");
  EXPECT_EQ(other.replayWindow, 64u);
  EXPECT_EQ(other.mtu, 1400u);
  EXPECT_EQ(other.policy, SecurePolicy::shouldSecure);
  EXPECT_EQ(other.onPeerLoss, OnPeerLoss::close);
}

TEST(ConfigFile, PlacesCountTheLinesBeforeTheText) {
  auto diagnostics = parseConfig("\n  fips: 7\n", "f", 10).diagnostics;
  ASSERT_THAT(diagnostics, SizeIs(1));
  EXPECT_EQ(diagnostics[0].line, 12);
  EXPECT_EQ(diagnostics[0].column, 9);
}

TEST(ConfigFile, AFileThatCannotBeReadIsAMistake) {
  auto missing = readConfigFile("/nowhere/at/all.yaml");
  ASSERT_THAT(missing.diagnostics, SizeIs(1));
  EXPECT_THAT(missing.diagnostics[0].text(),
              HasSubstr("/nowhere/at/all.yaml:1:1: the file can't be "
                        "read: No such file or directory; "));
  EXPECT_THAT(readConfigFile("/").diagnostics[0].text(), HasSubstr("it is a directory; name a"));
}

TEST(Diagnostic, ANearWordIsSuggestedAndAFarOneIsNot) {
  EXPECT_EQ(nearestWord("shutdwon", {"fips", "shutdown"}), "shutdown");
  EXPECT_EQ(nearestWord("cak", {"ckn", "cak"}), "cak");
  EXPECT_EQ(nearestWord("zzzz", {"fips", "shutdown"}), "");
  EXPECT_EQ(nearestWord("", {"fips"}), "");
}

}  // namespace
}  // namespace Macsecd
