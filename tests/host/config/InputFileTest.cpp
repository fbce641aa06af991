#include "host/config/InputFile.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "host/config/ConfigFile.h"

namespace Macsecd {
namespace {

using ::testing::HasSubstr;

class InputFileTest : public ::testing::Test {
 protected:
  InputFileTest()
      : folder_(::testing::TempDir() + "/input-" + std::to_string(getpid())),
        path_(folder_ + "/file") {
    std::filesystem::remove_all(folder_);
    std::filesystem::create_directory(folder_);
  }
  ~InputFileTest() override { std::filesystem::remove_all(folder_); }

  void fileIs(std::string const& content, mode_t mode = 0600) const {
    std::ofstream(path_, std::ios::binary) << content;
    chmod(path_.c_str(), mode);
  }
  void socketIs() const {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path_.copy(address.sun_path, sizeof address.sun_path - 1);
    int const fd = socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    close(fd);
  }
  static std::string whatOf(std::string const& path) {
    auto const result = readConfigFile(path);
    return textOf(result.diagnostics);
  }

  std::string const folder_;
  std::string const path_;
};

/// A pipe as a process is given one, with a text in it.
struct GivenPipe {
  explicit GivenPipe(std::string const& text) {
    EXPECT_EQ(pipe(ends), 0);
    EXPECT_EQ(write(ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    close(ends[1]);
  }
  ~GivenPipe() { close(ends[0]); }
  std::string path() const { return "/dev/fd/" + std::to_string(ends[0]); }
  int ends[2];
};

TEST_F(InputFileTest, APipeWithAPathIsRefusedAndNotWaitedFor) {
  ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
  EXPECT_EQ(whatOf(path_),
            path_ + ":1:1: the file can't be read: it is a pipe; name a regular file\n");
  ASSERT_EQ(symlink(path_.c_str(), (folder_ + "/link").c_str()), 0);
  EXPECT_THAT(whatOf(folder_ + "/link"), HasSubstr("it is a pipe"));
}

TEST_F(InputFileTest, SocketsDevicesAndFoldersAreRefusedByName) {
  socketIs();
  EXPECT_THAT(whatOf(path_), HasSubstr("it is a socket; name a regular file"));
  EXPECT_THAT(whatOf("/dev/zero"), HasSubstr("it is a device; name a regular file"));
  EXPECT_THAT(whatOf("/dev/null"), HasSubstr("it is a device; name a regular file"));
  EXPECT_THAT(whatOf(folder_), HasSubstr("it is a directory; name a regular file"));
}

TEST_F(InputFileTest, APipeThatTheProcessWasGivenIsReadToItsEndOnce) {
  GivenPipe const given("shutdown: true\n");
  auto const result = readConfigFile(given.path());
  ASSERT_TRUE(result.good()) << textOf(result.diagnostics);
  EXPECT_TRUE(result.config.shutdown);
  EXPECT_THAT(whatOf(given.path()),
              HasSubstr("nothing came through the pipe, which can be read only once; name a"))
      << "an empty configuration would take all ports away";
}

TEST_F(InputFileTest, AFileUpToAMebioctetIsReadAndNoLongerOne) {
  std::string text = "shutdown: true\n";
  text.resize(maxTextSize, '\n');
  fileIs(text);
  EXPECT_EQ(whatOf(path_), "");
  fileIs(text + "\n");
  EXPECT_EQ(whatOf(path_),
            path_ + ":1:1: the file has more than 1048576 octets; make it shorter\n");
  std::filesystem::resize_file(path_, 1ull << 40);
  EXPECT_THAT(whatOf(path_), HasSubstr("more than 1048576 octets")) << "a terabyte of holes";
}

TEST_F(InputFileTest, AnEmptyFileWouldTakeAllPortsAwayAndIsAMistake) {
  fileIs("");
  EXPECT_THAT(whatOf(path_), HasSubstr(":1:1: the file says nothing; write 'interfaces: {}'"));
}

}  // namespace
}  // namespace Macsecd
