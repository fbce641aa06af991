#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "host/config/ConfigFile.h"
#include "platform/Fips.h"
#include "tests/host/Complaints.h"

namespace Macsecd {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

TEST(ConfigDiagnostics, ANameThatNoDeviceCanHaveIsAMistake) {
  for (char const* name :
       {"sixteen-octets-x", "a/b", "'a b'", "..", "a:b", "'sec%d'", R"("a\x01b")", R"("a\0b")"}) {
    auto const diagnostics =
        parseConfig(std::string("profiles: {p: {dot1x: true}}\ninterfaces: {e1: {profile: p, "
                                "device: ") +
                        name + "}}\n",
                    "f")
            .diagnostics;
    ASSERT_THAT(diagnostics, SizeIs(1)) << name;
    EXPECT_THAT(diagnostics[0].text(), HasSubstr("is no name of a device")) << name;
  }
}

TEST(ConfigDiagnostics, ANameThatNoInterfaceCanHaveIsAMistake) {
  EXPECT_THAT(complaints("profiles: {p: {}}\ninterfaces: {sixteen-octets-x: {profile: p}}"),
              ElementsAre("f:2:14: 'sixteen-octets-x' has 16 octets, more than any network "
                          "interface; write its name as the machine shows it, at most 15 octets"));
  EXPECT_THAT(complaints("profiles: {\"p\\x01\": {}}\n"),
              ElementsAre("f:1:12: the name of this profile has a control character; remove it"));
}

TEST(ConfigDiagnostics, ADeviceHasANameThatNoOtherDeviceAndNoInterfaceHas) {
  auto const told = [](std::string const& device) {
    return complaints("profiles: {p: {dot1x: true}}\ninterfaces:\n  e1: {profile: p, device: " +
                      device + "}\n  e2: {profile: p, device: uplink}\n  e3: {profile: p}\n");
  };
  EXPECT_THAT(told("other"), IsEmpty());
  EXPECT_THAT(told("uplink"),
              ElementsAre("f:4:28: 'uplink' is already the device of interface 'e1'; give each "
                          "device a name of its own"));
  EXPECT_THAT(told("e3-sec"),
              ElementsAre(HasSubstr("f:3:28: 'e3-sec' is already the device of interface 'e3'")));
  EXPECT_THAT(told("e1"), ElementsAre(HasSubstr("'e1' is already interface 'e1' itself")));
  EXPECT_THAT(told("e3"), ElementsAre(HasSubstr("'e3' is already interface 'e3' itself")));
}

TEST(ConfigDiagnostics, AMistakeAtAnEmptyWordIsToldOnItsOwnLine) {
  EXPECT_THAT(complaints(profile("key:\nrekey-period: 5")),
              ElementsAre("f:3:5: 'key' has no 'ckn'; add 'ckn: ...'",
                          "f:3:5: 'key' has no 'cak'; add 'cak: ...'"));
}

TEST(ConfigDiagnostics, NoMistakeShowsMuchOfAKeyInTheWrongPlace) {
  std::string const octets = "0f:1e:2d:3c:4b:5a:69:78:87:96:a5:b4:c3:d2:e1:f0";
  std::string digits = octets;
  std::erase(digits, ':');
  for (std::string const& part :
       std::vector<std::string>{octets, octets.substr(0, 38), octets.substr(0, 23), digits,
                                digits.substr(0, 8), "0x0f, 0x1e, 0x2d, 0x3c, 0x4b, 0x5a"}) {
    std::string const key = "'" + part + "'";
    for (std::string const& text : std::vector<std::string>{
             profile("cipher-suite: " + key), profile("rekey-period: " + key),
             "profiles: {" + key + ": {kee: 1}}", "profiles: {" + key + ": {}}", key + ": 1",
             "profiles: {p: {}}\ninterfaces: {e: {profile: " + key + "}}",
             "profiles: {p: {}}\ninterfaces: {" + key + ": {profile: q}}"}) {
      auto const lines = complaints(text);
      EXPECT_FALSE(lines.empty()) << text;
      for (std::string const& line : lines) EXPECT_THAT(line, Not(HasSubstr(part.substr(0, 8))));
    }
  }
}

TEST(ConfigDiagnostics, ANetworkCardThatIsCalledByItsAddressIsNoKey) {
  EXPECT_THAT(complaints("profiles: {p: {}}\ninterfaces: {enx0123456789ab: {profile: q}}"),
              ElementsAre(HasSubstr("there is no profile 'q'; write 'p'")));
}

TEST(ConfigDiagnostics, AFileThatSaysNothingIsAMistake) {
  auto const path = ::testing::TempDir() + "/says-nothing-" + std::to_string(getpid());
  for (char const* const text : {"", "# nothing\n", "%YAML 1.2\n", "---\n", "%YAML 1.2\n---\n"}) {
    std::ofstream(path) << text;
    std::filesystem::permissions(path, std::filesystem::perms(0600));
    EXPECT_FALSE(readConfigFile(path).good()) << text;
  }
  std::filesystem::remove(path);
}

TEST(ConfigDiagnostics, FipsModeThatTheMachineCannotRunInIsAMistakeOfAFile) {
  auto const path = ::testing::TempDir() + "/fips-" + std::to_string(getpid());
  std::ofstream(path) << "interfaces: {}\nfips: true\n";
  std::filesystem::permissions(path, std::filesystem::perms(0600));
  auto const diagnostics = readConfigFile(path).diagnostics;
  if (Macsec::missingForFips()) {
    ASSERT_EQ(diagnostics.size(), 1u);
    EXPECT_THAT(diagnostics[0].text(), HasSubstr(":2:7: OpenSSL can't run in FIPS mode here: "));
  } else {
    EXPECT_THAT(diagnostics, IsEmpty());
  }
  std::ofstream(path) << "interfaces: {}\nfips: true\nshutdown: true\n";
  EXPECT_TRUE(readConfigFile(path).good());
  std::filesystem::remove(path);
}

}  // namespace
}  // namespace Macsecd
