#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdio>

#include "linux/keep/SharedCounters.h"
#include "platform/MessageCounters.h"
#include "tests/linux/SharedName.h"

// Two processes on one table: one counts without a pause, the other reads and clears. The counters
// of an interface are counted in turn, so that they form a staircase: at most one step, of one. A
// read that mixes two states doesn't. The one that counts goes on until the other has seen enough.

namespace Linux {
namespace {

using Macsec::Brine::MessageCounterData;
using Macsec::Brine::MessageCounters;
using Macsec::Brine::MessageCountersOptions;

// The sanitizers see to the same stores with fewer updates.
#ifdef __SANITIZE_ADDRESS__
constexpr uint64_t kUpdates = 500'000;
#else
constexpr uint64_t kUpdates = 10'000'000;
#endif

std::vector<Lumo::IntfId> interfaces(size_t number) {
  std::vector<Lumo::IntfId> out;
  for (size_t i = 0; i < number; ++i) out.emplace_back(("Ethernet" + std::to_string(i)).c_str());
  return out;
}

Vesk::Ptr<MessageCounters> process(std::string const& name, bool counts) {
  return Vesk::make<MessageCounters>(
      "mka", std::make_shared<SharedCounters>(name, SharedCountersOptions{.counts = counts}),
      MessageCountersOptions{.counts = counts, .capacity = 64});
}

void countInTurn(MessageCounters& counters, std::vector<Lumo::IntfId> const& intfs,
                 uint64_t update) {
  auto const [direction, type, subType] =
      MessageCounterData::kindOf(update / intfs.size() % MessageCounterData::kCounters);
  counters.inc(intfs[update % intfs.size()], direction, type, subType);
}

uint64_t sum(MessageCounterData::Counters const& counters) {
  uint64_t sum = 0;
  for (uint64_t counter : counters) sum += counter;
  return sum;
}

bool isStaircase(MessageCounterData::Counters const& counters) {
  uint64_t const total = sum(counters);
  for (size_t i = 0; i < counters.size(); ++i) {
    if (counters[i] != (total + counters.size() - 1 - i) / counters.size()) return false;
  }
  return true;
}

/// Starts a process that runs `work` and ends, with its parent at the latest.
template <class Work>
pid_t start(Work work) {
  pid_t const parent = getpid();
  pid_t const child = fork();
  if (child == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() == parent) work();
    std::_Exit(0);
  }
  return child;
}

int statusOf(pid_t child, int options = 0) {
  int status = -1;
  return waitpid(child, &status, options) == child ? status : -1;
}

struct Seen {
  uint64_t reads = 0;
  uint64_t moved = 0;  // reads that saw another state than the one before
  uint64_t snapshots = 0;
  uint64_t busy = 0;
  uint64_t torn = 0;
  uint64_t backwards = 0;
};

/// Reads each interface once, and clears it at every third look.
void look(MessageCounters& counters, std::vector<Lumo::IntfId> const& intfs,
          std::vector<uint64_t>& totals, Seen& seen) {
  for (size_t i = 0; i < intfs.size(); ++i) {
    try {
      auto const record = counters.messageCounterData(intfs[i]);
      if (record == counters.emptyRecord()) continue;
      uint64_t const total = sum(record.counters());
      ++seen.reads;
      seen.torn += !isStaircase(record.counters());
      seen.backwards += total < totals[i];
      seen.moved += total != totals[i];
      totals[i] = total;
      if (seen.reads % 3 != 0) continue;
      counters.msgCounterSnapshotIs(record);
      seen.torn += counters.snapshot(intfs[i]) != record;
      ++seen.snapshots;
    } catch (Macsec::Brine::RecordBusyException const&) {
      ++seen.busy;
    }
  }
}

/// Said by one process, seen by the other.
class SharedFlag {
 public:
  SharedFlag()
      : flag_(static_cast<uint64_t*>(mmap(nullptr, sizeof *flag_, PROT_READ | PROT_WRITE,
                                          MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {}
  ~SharedFlag() { munmap(flag_, sizeof *flag_); }
  void set() { std::atomic_ref(*flag_).store(1); }
  bool isSet() const { return std::atomic_ref(*flag_).load() != 0; }

 private:
  uint64_t* const flag_;
};

class CounterHammer : public ::testing::TestWithParam<size_t> {};

TEST_P(CounterHammer, NoReadIsTornWhileTenMillionFramesAreCounted) {
  SharedName const name;
  auto const intfs = interfaces(GetParam());
  auto const clerk = process(name, false);
  SharedFlag hasSeenEnough;
  pid_t const child = start([&] {
    auto const counters = process(name, true);
    for (Lumo::IntfId intf : intfs) counters->intfIs(intf);
    for (uint64_t update = 0; update < kUpdates || !hasSeenEnough.isSet(); ++update) {
      countInTurn(*counters, intfs, update);
    }
  });
  Seen seen;
  std::vector<uint64_t> totals(intfs.size());
  int status;
  while ((status = statusOf(child, WNOHANG)) == -1) {
    look(*clerk, intfs, totals, seen);
    if (seen.moved > 100 && seen.snapshots > 100) hasSeenEnough.set();
  }
  EXPECT_EQ(status, 0);
  look(*clerk, intfs, totals, seen);
  uint64_t total = 0;
  for (uint64_t one : totals) total += one;
  EXPECT_GE(total, kUpdates);
  EXPECT_EQ(seen.torn, 0u);
  EXPECT_EQ(seen.backwards, 0u);
  EXPECT_GT(seen.moved, 100u);
  EXPECT_GT(seen.snapshots, 100u);
  std::printf("%zu interfaces: %lu reads, %lu of a new state, %lu snapshots, %lu busy\n",
              intfs.size(), seen.reads, seen.moved, seen.snapshots, seen.busy);
}

INSTANTIATE_TEST_SUITE_P(Interfaces, CounterHammer, ::testing::Values(1, 16));

TEST(KilledProcess, LeavesATableThatIsReadAndCountedOn) {
  SharedName const name;
  auto const intfs = interfaces(2);
  uint64_t before = 0;
  for (int round = 0; round < 30; ++round) {
    uint64_t at = before;
    pid_t const child = start([&] {
      auto const counters = process(name, true);
      for (Lumo::IntfId intf : intfs) counters->intfIs(intf);
      // Goes on where the former process was killed.
      for (at = sum(counters->messageCounterData(intfs[0]).counters()) +
                sum(counters->messageCounterData(intfs[1]).counters());
           ; ++at) {
        countInTurn(*counters, intfs, at);
      }
    });
    auto const clerk = process(name, false);
    uint64_t const wanted = before + 1000 + static_cast<uint64_t>(round);
    uint64_t total = 0;
    std::vector<uint64_t> totals(intfs.size());
    Seen seen;
    while (total < wanted) {
      look(*clerk, intfs, totals, seen);
      total = totals[0] + totals[1];
    }
    kill(child, SIGKILL);
    EXPECT_TRUE(WIFSIGNALED(statusOf(child)));
    for (size_t i = 0; i < intfs.size(); ++i) {
      auto const record = clerk->messageCounterData(intfs[i]);
      EXPECT_TRUE(isStaircase(record.counters())) << round;
      totals[i] = sum(record.counters());
    }
    EXPECT_EQ(seen.torn, 0u);
    EXPECT_LE(totals[1], totals[0]);
    EXPECT_LE(totals[0], totals[1] + 1);
    EXPECT_GE(totals[0] + totals[1], wanted);
    before = totals[0] + totals[1];
  }
}

}  // namespace
}  // namespace Linux
