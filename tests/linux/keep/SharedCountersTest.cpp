#include "linux/keep/SharedCounters.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <system_error>

#include "platform/Corruption.h"
#include "platform/MessageCounters.h"
#include "tests/linux/SharedName.h"
#include "tests/support/TestWorld.h"

namespace Linux {
namespace {

using Macsec::MessageCounterDirection;
using Macsec::Brine::MessageCounters;
using Macsec::Brine::MessageCountersOptions;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class SharedTable : public ::testing::Test {
 protected:
  SharedTable() { Vesk::TraceHandle::streamLevelsIs("Macsec", Vesk::kAllTraceLevels); }
  ~SharedTable() override { Vesk::TraceHandle::streamLevelsIs("", 0); }

  Vesk::Ptr<MessageCounters> start(SharedCountersOptions options = {},
                                   MessageCountersOptions table = {}) {
    return Vesk::make<MessageCounters>("mka", std::make_shared<SharedCounters>(name, options),
                                       table);
  }
  void count(Vesk::Ptr<MessageCounters> const& counters, int frames) {
    counters->intfIs(intf);
    for (int i = 0; i < frames; ++i) {
      counters->inc(intf, MessageCounterDirection::rx, Macsec::MessageCounterType::failure,
                    Macsec::MessageCounterFailureSubType::icvValidationErr);
    }
  }
  uint64_t counted(Vesk::Ptr<MessageCounters> const& counters) {
    return counters->value(intf, MessageCounterDirection::rx, Macsec::MessageCounterType::failure,
                           Macsec::MessageCounterFailureSubType::icvValidationErr);
  }
  struct stat status() const {
    struct stat status {};
    Descriptor const file(shm_open(name.c_str(), O_RDONLY, 0));
    EXPECT_EQ(fstat(file.fd(), &status), 0);
    return status;
  }
  /// Turns an octet of the table, as a stray write of another process does.
  void damage(size_t at) const {
    Descriptor const file(shm_open(name.c_str(), O_RDWR, 0));
    uint8_t octet = 0;
    ASSERT_EQ(pread(file.fd(), &octet, 1, static_cast<off_t>(at)), 1);
    octet ^= 0xff;
    ASSERT_EQ(pwrite(file.fd(), &octet, 1, static_cast<off_t>(at)), 1);
  }
  /// Leaves so many octets of the table, as a mistake of another process does.
  void cutShort(off_t octets) const {
    pid_t const other = fork();
    if (other == 0) _exit(truncate(("/dev/shm" + std::string(name.c_str())).c_str(), octets));
    int status = -1;
    ASSERT_EQ(waitpid(other, &status, 0), other);
    ASSERT_EQ(status, 0);
  }
  std::vector<std::string> logged() const {
    std::vector<std::string> names;
    for (auto const& log : world.logs) names.push_back(log.name);
    return names;
  }
  std::string fileText(std::string const& path) const {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  static constexpr size_t kInRecord1 =
      (Macsec::Brine::CounterLayout::recordAt(1) + 60) * sizeof(uint64_t);

  Support::TestWorld world;
  Vesk::WorldScope scope{world};
  SharedName name;
  Lumo::IntfId const intf{"Ethernet1"};
};

TEST_F(SharedTable, IsReadByALookFromOutside) {
  auto const counters = start();
  count(counters, 3);
  SharedCounterView const view(name);
  EXPECT_THAT(view.reader().interfaces(), ElementsAre("Ethernet1"));
  size_t const at = Macsec::Brine::MessageCounterData::indexOf(
      MessageCounterDirection::rx, Macsec::MessageCounterType::failure,
      Macsec::MessageCounterFailureSubType::icvValidationErr);
  EXPECT_EQ(view.reader().interface("Ethernet1")->total[at], 3u);
  count(counters, 4);
  EXPECT_EQ(view.reader().interface("Ethernet1")->total[at], 7u);
}

TEST_F(SharedTable, OutlivesItsProcess) {
  count(start(), 3);
  auto const next = start();
  EXPECT_EQ(counted(next), 3u);
  count(next, 1);
  EXPECT_EQ(counted(next), 4u);
}

TEST_F(SharedTable, IsTheOwnersAloneUnlessItsMakerSaysOtherwise) {
  mode_t const before = umask(077);
  count(start(), 1);
  EXPECT_EQ(status().st_mode & 0777u, 0600u);
  count(start({.mode = 0644}), 1);
  EXPECT_EQ(status().st_mode & 0777u, 0644u);
  umask(before);
}

TEST_F(SharedTable, TakesMemoryForWhatIsWrittenAlone) {
  count(start(), 1);
  EXPECT_EQ(static_cast<size_t>(status().st_size),
            Macsec::Brine::CounterLayout::wordsOf(4096) * sizeof(uint64_t));
  EXPECT_LT(status().st_blocks * 512, 64 * 1024);
}

TEST_F(SharedTable, HasOneProcessThatCounts) {
  auto const counters = start();
  try {
    start();
    FAIL() << "two processes count";
  } catch (std::system_error const& error) {
    EXPECT_EQ(error.code(), std::errc::device_or_resource_busy);
    EXPECT_THAT(error.what(), HasSubstr("are those of another process"));
  }
  EXPECT_NO_THROW(start({.counts = false}, {.counts = false}));
}

/// What is at a name in place of counters.
struct Obstacle {
  std::function<void(std::filesystem::path const&)> make;
  char const* told;
};

TEST_F(SharedTable, ThatCannotBeHadIsToldOnceAndTheProcessCountsInItsOwnMemory) {
  std::filesystem::path const path = "/dev/shm" + std::string(name.c_str());
  Obstacle const obstacles[] = {
      {[](auto const& at) { std::filesystem::create_directory(at); },
       "which is a folder or no name"},
      {[](auto const& at) { std::filesystem::create_symlink("/etc/passwd", at); }, "symbolic link"},
      {[](auto const& at) { mkfifo(at.c_str(), 0600); }, "aren't in a file"},
  };
  for (auto const& [make, told] : obstacles) {
    make(path);
    world.logs.clear();
    {
      auto const counters = messageCountersIn(name);
      count(counters, 3);
      EXPECT_EQ(counted(counters), 3u);
    }
    ASSERT_EQ(world.logs.size(), 1u) << told;
    EXPECT_THAT(world.logs[0].text, HasSubstr(told));
    EXPECT_THAT(world.logs[0].text, HasSubstr("free " + path.string() + " or name another"));
    EXPECT_TRUE(std::filesystem::exists(std::filesystem::symlink_status(path)));
    std::filesystem::remove(path);
  }
  auto const counters = messageCountersIn(name);
  count(counters, 2);
  EXPECT_EQ(status().st_uid, geteuid()) << "the next process has them in shared memory again";
}

TEST_F(SharedTable, OfAnotherUserIsLeftToHim) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can make a file of another user";
  std::string const path = "/dev/shm" + std::string(name.c_str());
  std::ofstream(path) << "his";
  ASSERT_EQ(chown(path.c_str(), 60001, 60001), 0);
  auto const counters = messageCountersIn(name);
  count(counters, 3);
  EXPECT_EQ(counted(counters), 3u);
  EXPECT_EQ(fileText(path), "his");
}

TEST_F(SharedTable, OfAnotherSizeGivesWayAndWhoHasItKeepsIt) {
  count(start(), 3);
  SharedCounterView const former(name);
  auto const counters = start({}, {.capacity = 10});
  EXPECT_EQ(counters->messageCounterData(intf), counters->emptyRecord());
  EXPECT_EQ(world.traced("and is made anew"), 1u);
  EXPECT_THAT(former.reader().interfaces(), ElementsAre("Ethernet1"));
  EXPECT_TRUE(SharedCounterView(name).reader().interfaces().empty());
}

TEST_F(SharedTable, ThatIsNotThereIsSaidToWhoeverLooks) {
  EXPECT_THROW(SharedCounterView{name}, std::system_error);
  SharedCounters const opened(name);
  EXPECT_THROW(SharedCounterView{name}, std::system_error);
}

TEST_F(SharedTable, ThatAnotherProcessCutsShortStartsAnewAndIsToldAndTheProcessGoesOn) {
  auto const counters = start();
  count(counters, 3);
  cutShort(0);
  count(counters, 2);
  EXPECT_EQ(counted(counters), 1u) << "what was counted where nothing is, is lost";
  EXPECT_THAT(logged(), ElementsAre("MACSECD_COUNTERS_CUT_SHORT"));
  EXPECT_THAT(SharedCounterView(name).reader().interfaces(), ElementsAre("Ethernet1"));
  cutShort(5000);
  count(counters, 1);
  EXPECT_EQ(counted(counters), 2u) << "what is left goes on";
}

TEST_F(SharedTable, ThatIsCutShortIsDamagedForWhoeverReadsIt) {
  auto const counters = start();
  count(counters, 3);
  SharedCounterView const view(name);
  cutShort(0);
  EXPECT_THROW(view.reader().interfaces(), Pollux::CorruptionDetectedException);
  EXPECT_THROW(view.reader().interface("Ethernet1"), Pollux::CorruptionDetectedException);
  EXPECT_THROW(counted(counters), Pollux::CorruptionDetectedException);
  EXPECT_EQ(counted(counters), 0u);
}

TEST_F(SharedTable, ThatIsCutShortAgainAndAgainIsGivenUp) {
  auto const counters = start();
  count(counters, 3);
  for (int i = 0; i < 3; ++i) {
    cutShort(0);
    count(counters, 2);
  }
  EXPECT_THAT(logged(), ElementsAre("MACSECD_COUNTERS_CUT_SHORT", "MACSECD_COUNTERS_CUT_SHORT",
                                    "MACSECD_COUNTERS_CUT_SHORT", "MACSECD_COUNTERS_NOT_SHARED"));
  cutShort(0);
  count(counters, 4);
  EXPECT_EQ(counted(counters), 5u);
  EXPECT_EQ(logged().size(), 4u);
}

TEST_F(SharedTable, LeavesACorruptionFileOfItsOwnerAlone) {
  std::string const path = ::testing::TempDir() + name.c_str() + ".corrupt";
  auto const counters = start({.corruptionFile = path});
  count(counters, 3);
  damage(kInRecord1);
  EXPECT_THROW(counted(counters), Pollux::CorruptionDetectedException);
  counters->corruptionDetected("as found");
  std::string const text = fileText(path);
  size_t const octets = Macsec::Brine::CounterLayout::wordsOf(2) * sizeof(uint64_t);
  std::string const head =
      "BrineMap::corruptionDetected() mka as found\noctets: " + std::to_string(octets) + "\n";
  EXPECT_THAT(text, StartsWith(head));
  ASSERT_EQ(text.size(), head.size() + octets);
  EXPECT_EQ(text.substr(head.size(), 8), "MKACOUNT");
  EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0600));
  EXPECT_EQ(counted(counters), 0u) << "the record starts anew";
  count(counters, 1);
  EXPECT_EQ(counted(counters), 1u);
  std::filesystem::remove(path);
}

TEST_F(SharedTable, FollowsNoLinkForACorruptionFile) {
  std::string const path = ::testing::TempDir() + name.c_str() + ".link";
  std::string const target = ::testing::TempDir() + name.c_str() + ".target";
  std::ofstream(target) << "precious";
  for (bool hard : {false, true}) {
    if (hard) {
      std::filesystem::create_hard_link(target, path);
    } else {
      std::filesystem::create_symlink(target, path);
    }
    {
      auto const counters = start({.corruptionFile = path});
      counters->corruptionDetected("as found");
    }
    EXPECT_EQ(fileText(target), "precious");
    std::filesystem::remove(path);
  }
  EXPECT_EQ(world.traced("can't be written"), 2u);
  std::filesystem::remove(target);
}

}  // namespace
}  // namespace Linux
