#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "host/state/HostKey.h"
#include "platform/WardcodeLib.h"
#include "tests/support/TestWorld.h"

namespace Macsecd {
namespace {

using ::testing::HasSubstr;

class HostKey : public ::testing::Test {
 protected:
  HostKey()
      : folder_(::testing::TempDir() + "/host-key-" + std::to_string(getpid())),
        path_(folder_ + "/key") {
    std::filesystem::remove_all(folder_);
    std::filesystem::create_directory(folder_);
  }
  ~HostKey() override {
    WardcodeLib::hostKeyDel();
    std::filesystem::remove_all(folder_);
  }
  void fileIs(std::string const& content, mode_t mode) {
    std::ofstream(path_, std::ios::binary) << content;
    chmod(path_.c_str(), mode);
  }

  Support::TestWorld world_;
  Vesk::WorldScope scope_{world_};
  std::string const folder_;
  std::string const path_;
};

TEST_F(HostKey, AFileThatIsNotThereIsMadeForItsOwnerAlone) {
  EXPECT_TRUE(useHostKeyFile(path_));
  struct stat status;
  ASSERT_EQ(stat(path_.c_str(), &status), 0);
  EXPECT_EQ(status.st_size, 32);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
}

TEST_F(HostKey, WhatWasStoredUnderAFileDecodesInTheNextProcess) {
  ASSERT_TRUE(useHostKeyFile(path_));
  Vesk::String8 const stored = WardcodeLib::doEncodeKey("0123456789abcdef");
  WardcodeLib::hostKeyDel();
  ASSERT_TRUE(useHostKeyFile(path_));
  EXPECT_EQ(WardcodeLib::doDecodeKey(stored), "0123456789abcdef");
}

TEST_F(HostKey, AFileThatOthersCanReachIsRefused) {
  fileIs(std::string(32, 'k'), 0640);
  auto const used = useHostKeyFile(path_);
  ASSERT_FALSE(used);
  EXPECT_EQ(used.fault().text(), path_ + ": users other than its owner can reach it; chmod 600 " +
                                     path_ + ", and regard the key as known to others");
}

TEST_F(HostKey, AFileOfAnotherLengthIsRefused) {
  for (size_t size : {0u, 31u, 33u}) {
    fileIs(std::string(size, 'k'), 0600);
    auto const used = useHostKeyFile(path_);
    ASSERT_FALSE(used);
    EXPECT_THAT(used.fault().text(), HasSubstr("isn't 32 octets long; restore it"));
    EXPECT_THAT(used.fault().text(), testing::Not(HasSubstr("kkk")));
  }
}

TEST_F(HostKey, AFolderThatIsNotThereIsNamedWithTheRemedy) {
  auto const used = useHostKeyFile(folder_ + "/none/key");
  ASSERT_FALSE(used);
  EXPECT_THAT(used.fault().text(),
              HasSubstr("/none/key: can't be made: No such file or directory; make its"));
}

TEST_F(HostKey, WhatIsNoPlainFileIsRefused) {
  auto const used = useHostKeyFile(folder_);
  ASSERT_FALSE(used);
  EXPECT_THAT(used.fault().text(), HasSubstr("it is a directory; name a regular file"));
}

TEST_F(HostKey, APipeIsRefusedAndNotWaitedFor) {
  ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
  EXPECT_EQ(useHostKeyFile(path_).fault().text(),
            path_ + ": the file can't be read: it is a pipe; name a regular file");
}

TEST_F(HostKey, AFileOfAnotherUserIsRefused) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  fileIs(std::string(32, 'k'), 0600);
  ASSERT_EQ(chown(path_.c_str(), 65534, 65534), 0);
  auto const used = useHostKeyFile(path_);
  ASSERT_FALSE(used);
  EXPECT_THAT(used.fault().text(), HasSubstr("belongs to the user 65534; chown 0 " + path_));
}

}  // namespace
}  // namespace Macsecd
