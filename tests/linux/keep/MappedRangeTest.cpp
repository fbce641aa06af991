#include "linux/keep/MappedRange.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <optional>

#include "linux/process/Descriptor.h"

namespace Linux {
namespace {

/// Two pages, of a file that has lost the second.
class MappedFile {
 public:
  MappedFile() {
    EXPECT_EQ(ftruncate(file_.fd(), static_cast<off_t>(2 * page)), 0);
    void* const memory = mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_SHARED, file_.fd(), 0);
    EXPECT_NE(memory, MAP_FAILED);
    words = {static_cast<uint64_t*>(memory), 2 * page / sizeof(uint64_t)};
    std::ranges::fill(words, 7u);
    EXPECT_EQ(ftruncate(file_.fd(), static_cast<off_t>(page)), 0);
  }
  ~MappedFile() { munmap(words.data(), words.size_bytes()); }
  uint64_t volatile& lost() const { return words[page / sizeof(uint64_t) + 3]; }

  size_t const page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  std::span<uint64_t> words;

 private:
  Descriptor const file_{memfd_create("MappedRangeTest", MFD_CLOEXEC)};
};

TEST(MappedRange, PutsAPageInThePlaceOfOneThatHasGoneAndLeavesTheOthers) {
  MappedFile const file;
  MappedRange const range(file.words);
  EXPECT_TRUE(range.isWhole());
  EXPECT_EQ(file.lost(), UINT64_MAX);
  EXPECT_FALSE(range.isWhole());
  file.lost() = 5;
  EXPECT_EQ(file.lost(), 5u);
  EXPECT_EQ(file.words[0], 7u);
}

TEST(MappedRange, TellsWhichOfSeveralHasLostSomething) {
  MappedFile const a, b, c;
  MappedRange const first(a.words);
  std::optional<MappedRange> second(b.words);
  MappedRange const third(c.words);
  second.reset();
  a.lost() = 1;
  EXPECT_FALSE(first.isWhole());
  EXPECT_TRUE(third.isWhole());
}

TEST(MappedRangeDeathTest, LeavesAnyOtherBusErrorFatal) {
  MappedFile const watched, other;
  std::optional<MappedRange> range(watched.words);
  EXPECT_DEATH(other.lost() = 1, "");
  EXPECT_DEATH(raise(SIGBUS), "");
  range.reset();
  EXPECT_DEATH(watched.lost() = 1, "");
}

}  // namespace
}  // namespace Linux
