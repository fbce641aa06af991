#include "host/eap/EapKeyLine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "platform/WardcodeLib.h"
#include "tests/support/TestWorld.h"

namespace Macsecd {
namespace {

using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::Not;

std::string const kMsk = "404142434445464748494a4b4c4d4e4f505152535455565758595A5B5C5D5E5F";
std::string const kAddrs = R"("first-addr":"02:00:00:00:00:01","second-addr":"02:00:00:00:00:02")";

std::string lineWith(std::string const& type, std::string const& msk, std::string const& session,
                     std::string const& addrs = kAddrs) {
  return R"({"interface":"Ethernet1","type":)" + type + R"(,"msk":)" + msk + R"(,"session-id":)" +
         session + "," + addrs + "}";
}

std::string quoted(std::string const& text) { return '"' + text + '"'; }

class EapKeyLine : public ::testing::Test {
 protected:
  /// Reads a line and looks after its buffer.
  Result<EapKeyNews> read(std::string const& text) {
    std::vector<uint8_t> line(text.begin(), text.end());
    auto const news = readEapKeyLine(line);
    EXPECT_THAT(line, Each(0)) << text;
    return news;
  }
  Dot1x::EapKey key(std::string const& text) {
    auto const news = read(text);
    if (!news) {
      ADD_FAILURE() << text << "\n" << news.fault().what;
      return {};
    }
    return news->key.value();
  }
  std::string fault(std::string const& text) {
    auto const news = read(text);
    if (news) return "none";
    EXPECT_NE(news.fault().remedy, "") << text;
    EXPECT_THAT(news.fault().text(), Not(HasSubstr("404142"))) << text;
    return news.fault().what;
  }

  Support::TestWorld world_;
  Vesk::WorldScope scope_{world_};
};

TEST_F(EapKeyLine, AKeyIsTakenWithAllItsMembers) {
  auto const news = read(lineWith("0", quoted(kMsk), R"("0D80")"));
  ASSERT_TRUE(news);
  EXPECT_EQ(news->intfId, Lumo::IntfId("Ethernet1"));
  Dot1x::EapKey const key = news->key.value();
  EXPECT_EQ(key.type(), 0);
  EXPECT_EQ(WardcodeLib::doDecodeKey(key.masterSessionKey()), kMsk.c_str());
  EXPECT_EQ(key.sessionId(), "0D80");
  EXPECT_EQ(key.firstAddr(), Lumo::EthAddr({2, 0, 0, 0, 0, 1}));
  EXPECT_EQ(key.secondAddr(), Lumo::EthAddr({2, 0, 0, 0, 0, 2}));
}

TEST_F(EapKeyLine, TheKeyIsKeptInItsStoredFormAlone) {
  Dot1x::EapKey const read = key(lineWith("1", quoted(kMsk), R"("0d")"));
  EXPECT_THAT(std::string(read.masterSessionKey().view()), ::testing::StartsWith("w1:"));
}

TEST_F(EapKeyLine, SpacesAndAnotherOrderOfMembersAreTheSame) {
  Dot1x::EapKey const read = key(" { " + kAddrs + R"( , "session-id" : "0d", "msk":")" + kMsk +
                                 R"(", "type": 255,"interface":"Ethernet1\/1"} )" + "\r");
  EXPECT_EQ(read.type(), 255);
}

TEST_F(EapKeyLine, AnInterfaceMayBeWrittenWithEscapes) {
  auto const news = read(R"({"interface":"Ethernet1\/1","withdrawn":true})");
  ASSERT_TRUE(news);
  EXPECT_EQ(news->intfId, Lumo::IntfId("Ethernet1/1"));
  EXPECT_FALSE(news->key);
}

TEST_F(EapKeyLine, WhatIsNoObjectIsRefusedWithItsPlace) {
  EXPECT_EQ(fault(""), "octet 1 of the line isn't '{'");
  EXPECT_EQ(fault("hello"), "octet 1 of the line isn't '{'");
  EXPECT_EQ(fault("{"), "octet 2 of the line isn't the name of a member, in double quotes");
  EXPECT_EQ(fault(R"({"interface)"), "octet 12 of the line isn't the '\"' that ends a text");
  EXPECT_EQ(fault(R"({"interface" "x"})"), "octet 14 of the line isn't ':'");
  EXPECT_EQ(fault(R"({"interface":"x" "type":1})"), "octet 18 of the line isn't ',' or '}'");
  EXPECT_EQ(fault(R"({"interface":{"a":1}})"),
            "octet 14 of the line isn't a text, number, 'true' or 'false'");
  EXPECT_EQ(fault(R"({"interface":"x","withdrawn":true} {})"),
            "octet 36 of the line isn't the end of the line");
}

TEST_F(EapKeyLine, UnknownMissingAndDoubleMembersAreRefused) {
  EXPECT_EQ(fault("{}"), "'interface' is missing");
  EXPECT_EQ(fault(R"({"interface":"Ethernet1"})"), "'type' is missing");
  EXPECT_EQ(fault(R"({"interface":"Ethernet1","typ":1})"), "'typ' is no member of a key");
  EXPECT_EQ(fault(R"({"interface":"a","interface":"b","withdrawn":true})"),
            "'interface' stands twice");
  EXPECT_EQ(fault(R"({"withdrawn":true})"), "'interface' is missing");
  EXPECT_EQ(fault(R"({"interface":"a","withdrawn":true,"msk":"00"})"),
            "'msk' is no member of a withdrawal");
  EXPECT_EQ(fault(lineWith("0", quoted(kMsk) + R"(,"msk":)" + quoted(kMsk), R"("0d")")),
            "'msk' stands twice");
  EXPECT_EQ(fault("{" + quoted(kMsk) + ":1}"), "a long name is no member of a key");
}

TEST_F(EapKeyLine, AKeyUnderAnEscapedNameIsNoMember) {
  EXPECT_EQ(fault(R"({"\u006dsk":")" + kMsk + R"("})"), "'\\u006dsk' is no member of a key");
}

TEST_F(EapKeyLine, ValuesOfAnotherTypeAreRefused) {
  EXPECT_EQ(fault(lineWith("0", kMsk, R"("0d")")), "'msk' is no text");
  EXPECT_EQ(fault(lineWith("0", quoted(kMsk), "13")), "'session-id' is no text");
  EXPECT_EQ(fault(lineWith(R"("0")", quoted(kMsk), R"("0d")")),
            "'type' is no number from 0 to 255");
  EXPECT_EQ(fault(lineWith("00", quoted(kMsk), R"("0d")")), "the value of 'type' is no JSON");
  EXPECT_EQ(fault(R"({"interface":1,"withdrawn":true})"), "'interface' is no text");
  EXPECT_EQ(fault(R"({"interface":"a","withdrawn":1})"), "'withdrawn' isn't true");
  EXPECT_EQ(fault(R"({"interface":"a","withdrawn":false})"), "'withdrawn' isn't true");
}

TEST_F(EapKeyLine, TypesAreNumbersUpTo255AndNotTheOneOfConfiguredKeys) {
  for (char const* const type : {"-1", "256", "1.5", "null", "true"}) {
    EXPECT_EQ(fault(lineWith(type, quoted(kMsk), R"("0d")")), "'type' is no number from 0 to 255");
  }
  EXPECT_EQ(fault(lineWith("2", quoted(kMsk), R"("0d")")),
            "'type' 2 stands for a key that is configured");
}

TEST_F(EapKeyLine, MasterSessionKeysHaveFrom16To128Octets) {
  auto const lineOf = [](size_t digits) {
    return lineWith("0", quoted(std::string(digits, '4')), R"("0d")");
  };
  EXPECT_EQ(fault(lineOf(30)), "'msk' has 30 digits");
  EXPECT_EQ(fault(lineOf(33)), "'msk' is no even number of hexadecimal digits");
  EXPECT_EQ(fault(lineOf(258)), "'msk' has 258 digits");
  EXPECT_EQ(WardcodeLib::doDecodeKey(key(lineOf(32)).masterSessionKey()).size(), 32u);
  EXPECT_EQ(WardcodeLib::doDecodeKey(key(lineOf(256)).masterSessionKey()).size(), 256u);
  EXPECT_EQ(fault(lineWith("0", quoted(kMsk + "0g"), R"("0d")")),
            "'msk' is no even number of hexadecimal digits");
  EXPECT_EQ(fault(lineWith("0", quoted(kMsk + "\\u0030"), R"("0d")")),
            "'msk' is no even number of hexadecimal digits");
}

TEST_F(EapKeyLine, SessionIdentifiersAreHexadecimal) {
  for (char const* const session : {R"("")", R"("0")", R"("0x")"}) {
    EXPECT_EQ(fault(lineWith("0", quoted(kMsk), session)),
              "'session-id' is no even number of hexadecimal digits");
  }
}

TEST_F(EapKeyLine, TheTwoAddressesAreMacAddressesAndDiffer) {
  EXPECT_EQ(
      fault(lineWith("0", quoted(kMsk), R"("0d")",
                     R"("first-addr":"02:00:00:00:00:0A","second-addr":"02:00:00:00:00:0a")")),
      "'first-addr' and 'second-addr' are the same");
  EXPECT_EQ(fault(lineWith("0", quoted(kMsk), R"("0d")",
                           R"("first-addr":"0200.0000.0001","second-addr":"02:00:00:00:00:02")")),
            "'first-addr' is no MAC address");
}

TEST_F(EapKeyLine, InterfacesHaveANameThatCanBeShown) {
  auto const lineOf = [](std::string const& name) {
    return R"({"interface":")" + name + R"(","withdrawn":true})";
  };
  EXPECT_EQ(fault(lineOf("")), "'interface' is no name of an interface");
  EXPECT_EQ(fault(lineOf(std::string(65, 'e'))), "'interface' is no name of an interface");
  EXPECT_EQ(fault(lineOf("a\\n")), "'interface' is no name of an interface");
  EXPECT_EQ(fault(lineOf("\xff")), "the value of 'interface' is no JSON");
  EXPECT_EQ(fault(lineOf(std::string(64, 'e'))), "none");
}

}  // namespace
}  // namespace Macsecd
