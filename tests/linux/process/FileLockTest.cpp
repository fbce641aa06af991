#include "linux/process/FileLock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <stdexcept>

#include "linux/process/ProcessName.h"
#include "tests/linux/OtherProcess.h"

namespace Linux {
namespace {

using ::testing::HasSubstr;

class FileLocks : public ::testing::Test {
 protected:
  ~FileLocks() override { std::filesystem::remove_all(path); }
  std::string error() const {
    try {
      FileLock const lock(path);
    } catch (std::runtime_error const& error) {
      return error.what();
    }
    return "";
  }
  std::string const path = ::testing::TempDir() + "/lock-" + std::to_string(getpid());
};

TEST_F(FileLocks, AreRefusedWithTheNameOfTheProcessThatHasThem) {
  std::optional<FileLock> held;
  OtherProcess other([&] { held.emplace(path); });
  ASSERT_TRUE(other.hasActed());
  EXPECT_EQ(error(),
            path + ": is held by " + processName(other.pid()) + "; end it, or name another path");
}

TEST_F(FileLocks, EndWithAProcessThatIsKilled) {
  std::optional<FileLock> held;
  OtherProcess other([&] { held.emplace(path); });
  ASSERT_TRUE(other.hasActed());
  other.kill();
  EXPECT_EQ(error(), "");
}

TEST_F(FileLocks, AreNotThoseOfAChildThatLivesLonger) {
  std::optional<FileLock> held(path);
  OtherProcess const child([] {});
  held.reset();
  OtherProcess const next([&] { held.emplace(path); });
  EXPECT_TRUE(next.hasActed());
}

TEST_F(FileLocks, AreMadeOnNoLinkAndNoFolder) {
  std::filesystem::create_directory(path);
  EXPECT_THAT(error(), HasSubstr(path + ": can't be opened: Is a directory; "));
  std::filesystem::remove(path);
  std::filesystem::create_symlink("/etc/passwd", path);
  EXPECT_THAT(error(), HasSubstr(path + ": can't be opened: "));
}

TEST(ProcessNames, HoldNothingThatEndsALineOfTheLog) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  pid_t const other = fork();
  if (other == 0) {
    dup2(ends[1], STDOUT_FILENO);
    execl("/bin/sh", "sh\nMACSECD \x1b[2J", "-c", "echo; kill -STOP $$", nullptr);
    _exit(1);
  }
  close(ends[1]);
  char runs;
  EXPECT_EQ(read(ends[0], &runs, 1), 1);
  close(ends[0]);
  EXPECT_EQ(processName(other),
            "process " + std::to_string(other) + " (sh?MACSECD ?[2J -c echo; kill -STOP $$)");
  kill(other, SIGKILL);
  waitpid(other, nullptr, 0);
}

TEST(ProcessNames, DoWithoutWhatCannotBeRead) {
  EXPECT_EQ(processName(0), "a process that isn't seen from here");
  EXPECT_EQ(processName(1 << 30), "process 1073741824");
}

}  // namespace
}  // namespace Linux
