#include <sys/stat.h>
#include <sys/wait.h>

#include <filesystem>

#include "host/text/KeyText.h"
#include "tests/host/HostFixture.h"
#include "tests/support/MemorySearch.h"

namespace Macsecd {
namespace {

constexpr size_t kKeySize = 16;

/// Octet `at` of a key that nobody else uses.
uint8_t octet(int key, size_t at) {
  return static_cast<uint8_t>(key * 59 + static_cast<int>(at * at * 13 + at * 71) + 29);
}

/// A form in which a key can lie in memory: its octets, or digits with something between the
/// octets.
struct Form {
  bool isText;
  bool isUpper;
  char separator;
};
constexpr Form kForms[] = {{false, false, 0},  {true, false, 0},  {true, true, 0},
                           {true, false, ':'}, {true, true, ':'}, {true, false, '-'},
                           {true, false, ' '}, {true, false, '.'}};

void addOctet(std::string& text, Form const& form, uint8_t value) {
  char const* const digits = form.isUpper ? "0123456789ABCDEF" : "0123456789abcdef";
  if (!form.isText) {
    text += static_cast<char>(value);
    return;
  }
  if (form.separator && !text.empty()) text += form.separator;
  text += digits[value >> 4];
  text += digits[value & 15];
}

std::string inForm(int key, Form const& form, size_t begin = 0, size_t size = kKeySize) {
  std::string text;
  text.reserve(3 * kKeySize);
  for (size_t at = begin; at < begin + size; ++at) addOctet(text, form, octet(key, at));
  return text;
}

/// How many times eight octets of the key in a row lie in memory, in any form.
size_t copiesOf(int key) {
  return Support::searchMemory(3 * kKeySize, [&](std::string_view octets) {
    size_t copies = 0;
    for (Form const& form : kForms) {
      for (size_t const begin : {0u, 4u, 8u}) {
        std::string wanted = inForm(key, form, begin, 8);
        copies += memmem(octets.data(), octets.size(), wanted.data(), wanted.size()) != nullptr;
        wipe(wanted);
      }
    }
    return copies;
  });
}

/// A configuration in a file that another process writes, so that this one meets keys by reading
/// alone.
class CakMemory : public ::testing::Test {
 protected:
  ~CakMemory() override { std::filesystem::remove(path_); }

  /// What the file says of a key in one form goes in place of each `%`.
  void fileIs(std::string const& text, int key, Form const& form = kForms[1]) const {
    pid_t const other = fork();
    if (other == 0) {
      umask(077);
      std::ofstream file(path_);
      for (char const c : text) {
        c == '%' ? file << inForm(key, form) : file << c;
      }
      file.close();
      _exit(0);
    }
    int status = -1;
    waitpid(other, &status, 0);
    ASSERT_EQ(status, 0);
  }
  std::string const path_ = ::testing::TempDir() + "/cak-memory-" + std::to_string(getpid());
};

constexpr char const* kFileWithKeys =
    "profiles:\n  one:\n    key: {ckn: '6162', cak: %}\n    fallback-key: {ckn: '63', cak: \"%\"}\n"
    "interfaces: {Ethernet1: {profile: one}}\n";

TEST_F(CakMemory, NoKeyStaysInClearAfterTheStartAndAReload) {
  Switch s(1);
  fileIs(kFileWithKeys, 1);
  s.bringUp(readConfigFile(path_).config);
  ASSERT_TRUE(s.actor());
  EXPECT_EQ(copiesOf(1), 0u);
  fileIs(kFileWithKeys, 2, kForms[2]);
  EXPECT_EQ(s.host.reload(path_).size(), 0u);
  EXPECT_EQ(copiesOf(1), 0u);
  EXPECT_EQ(copiesOf(2), 0u);
  for (int at = 0; at < 40; ++at) {
    s.world.time += 0.5;
    s.host.timerWheel()->runDue();
  }
  EXPECT_EQ(copiesOf(2), 0u);
}

TEST_F(CakMemory, NoKeyStaysInClearAfterAFileWithMistakes) {
  int key = 10;
  for (Form const& form : kForms) {
    if (!form.isText) continue;
#ifdef __SANITIZE_ADDRESS__
    if (&form != &kForms[1]) continue;  // each search takes seconds there
#endif
    for (std::string const text :
         {"profiles: {one: {key: {ckn: a, cak: %}}}\nshutdwon: true\n",
          "profiles: {one: {key: {ckn: a, cak: \"%0\"}}}\n",
          "profiles: {one: {key: {ckn: a, cak: '%x'}}}\n",
          "profiles: {one: {key: {ckn: \"%\", cak: ab}}}\n", "profiles: {one: {key: \"%\"}}\n",
          "profiles: {one: {dot1x: \"%\", rekey-period: '%', cipher-suite: \"%\"}}\n",
          "profiles: {one: {key: {ckn: a, cak: [\"%\", '%']}}}\n",
          "profiles: {one: {key: {\"%\": a}}}\n", "profiles: {one: {\"%\": 1}}\n",
          "profiles: {one: {key: {ckn: a, cak: \"%\n", "# %\nshutdwon: true\n", "%\n", "{%}}\n"}) {
      fileIs(text, ++key, form);
      EXPECT_FALSE(readConfigFile(path_).good()) << text;
      EXPECT_EQ(copiesOf(key), 0u) << text << form.separator;
    }
  }
}

TEST_F(CakMemory, TheSearchFindsACopyInEachForm) {
  for (Form const& form : kForms) {
    EXPECT_EQ(copiesOf(1000), 0u);
    std::string const copy = inForm(1000, form);
    EXPECT_GT(copiesOf(1000), 0u) << form.isText << form.separator;
    wipe(const_cast<std::string&>(copy));
  }
}

}  // namespace
}  // namespace Macsecd
