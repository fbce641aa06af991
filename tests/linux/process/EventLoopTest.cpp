#include "linux/process/EventLoop.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <limits>
#include <vector>

#include "linux/process/Descriptor.h"
#include "linux/process/ProcessWorld.h"

namespace Linux {
namespace {

double now() {
  return ProcessWorld([](Vesk::LogMessage const&) {}).now();
}

struct Pipe {
  Pipe() {
    std::array<int, 2> ends;
    EXPECT_EQ(pipe(ends.data()), 0);
    out = Descriptor(ends[0]);
    in = Descriptor(ends[1]);
  }
  void put() { EXPECT_EQ(write(in.fd(), "x", 1), 1); }
  char take() {
    char c = 0;
    EXPECT_EQ(read(out.fd(), &c, 1), 1);
    return c;
  }
  Descriptor out;
  Descriptor in;
};

void watch(EventLoop& loop, int fd, EventLoop::Handler ready) {
  EXPECT_TRUE(loop.watch(fd, std::move(ready)));
}

TEST(EventLoop, RunsTheHandlerOfADescriptorForAsLongAsThereIsSomethingToRead) {
  EventLoop loop;
  Pipe pipe;
  pipe.put();
  pipe.put();
  int runs = 0;
  watch(loop, pipe.out.fd(), [&] {
    pipe.take();
    if (++runs == 2) loop.exit(7);
  });
  EXPECT_EQ(loop.run(), 7);
  EXPECT_EQ(runs, 2);
}

// As under a flood of frames: each turn arms the timer anew, and leaves something to read.
TEST(EventLoop, RunsTheTimerWhileThereIsAlwaysSomethingToRead) {
  EventLoop loop;
  Pipe pipe;
  pipe.put();
  int reads = 0;
  double const due = now() + 0.02;
  watch(loop, pipe.out.fd(), [&] {
    if (++reads == 1000000) loop.exit(1);
  });
  loop.timerIs([&] { loop.exit(2); });
  loop.beforeWaitIs([&] { loop.timeIs(due); });
  EXPECT_EQ(loop.run(), 2);
}

TEST(EventLoop, LetsAHandlerForgetItsOwnDescriptorAndCloseIt) {
  EventLoop loop;
  Pipe first, second;
  std::vector<int> runs;
  first.put();
  watch(loop, first.out.fd(), [&, held = std::vector<int>(100, 1)] {
    loop.forget(first.out.fd());
    first = Pipe();
    runs.push_back(held.back());
    second.put();
  });
  watch(loop, second.out.fd(), [&] {
    runs.push_back(2);
    loop.exit(0);
  });
  loop.run();
  EXPECT_EQ(runs, (std::vector<int>{1, 2}));
}

TEST(EventLoop, GivesADescriptorToTheHandlerThatWasGivenLast) {
  EventLoop loop;
  Pipe pipe;
  watch(loop, pipe.out.fd(), [&] { loop.exit(1); });
  watch(loop, pipe.out.fd(), [&] { loop.exit(2); });
  pipe.put();
  EXPECT_EQ(loop.run(), 2);
}

TEST(EventLoop, DoesNothingForADescriptorThatWasForgotten) {
  EventLoop loop;
  Pipe pipe;
  watch(loop, pipe.out.fd(), [&] { loop.exit(1); });
  loop.forget(pipe.out.fd());
  loop.forget(pipe.out.fd());
  pipe.put();
  loop.timerIs([&] { loop.exit(2); });
  loop.timeIs(now() + 0.02);
  EXPECT_EQ(loop.run(), 2);
}

TEST(EventLoop, RunsTheTimerOnceAndNotBeforeItsTime) {
  EventLoop loop;
  double const time = now() + 0.03;
  std::vector<double> runs;
  loop.timerIs([&] {
    runs.push_back(now());
    if (runs.size() == 2) loop.exit(0);
    if (runs.size() == 1) loop.timeIs(runs.front() + 0.03);
  });
  loop.timeIs(time);
  loop.run();
  ASSERT_EQ(runs.size(), 2u);
  EXPECT_GE(runs[0], time);
  EXPECT_GE(runs[1], runs[0] + 0.03);
}

TEST(EventLoop, RunsATimerAtOnceWhoseTimeHasPassed) {
  EventLoop loop;
  loop.timerIs([&] { loop.exit(3); });
  loop.timeIs(now() - 5.0);
  EXPECT_EQ(loop.run(), 3);
}

TEST(EventLoop, DisarmsTheTimerForATimeThatNeverComes) {
  EventLoop loop;
  Pipe pipe;
  loop.timerIs([&] { loop.exit(1); });
  loop.timeIs(now() - 1.0);
  loop.timeIs(std::numeric_limits<double>::infinity());
  pipe.put();
  int turns = 0;
  watch(loop, pipe.out.fd(), [&] {
    if (++turns == 5) loop.exit(2);
  });
  EXPECT_EQ(loop.run(), 2);
}

TEST(EventLoop, CallsBackBeforeEachWaitSoThatTimersCanBeArmedAnew) {
  EventLoop loop;
  std::vector<char> order;
  double next = now();
  loop.beforeWaitIs([&] {
    order.push_back('w');
    loop.timeIs(next);
  });
  loop.timerIs([&] {
    order.push_back('t');
    next = now();
    if (order.size() >= 4) loop.exit(0);
  });
  loop.run();
  EXPECT_EQ(std::string(order.begin(), order.end()).substr(0, 4), "wtwt");
}

TEST(EventLoop, RunsTheHandlerOfASignal) {
  EventLoop loop;
  loop.signalIs(SIGHUP, [&] { loop.exit(4); });
  ASSERT_EQ(kill(getpid(), SIGHUP), 0);
  EXPECT_EQ(loop.run(), 4);
}

TEST(EventLoopDeathTest, EndsTheProcessForAnExceptionThatLeavesAHandler) {
  EXPECT_DEATH(
      {
        EventLoop loop;
        loop.timerIs([] { throw std::runtime_error("left a handler"); });
        loop.timeIs(0.0);
        loop.run();
      },
      "left a handler");
}

TEST(EventLoop, WaitsForRoomWhereRoomIsAwaited) {
  EventLoop loop;
  Pipe pipe;
  int runs = 0;
  watch(loop, pipe.in.fd(), [&] { ++runs; });
  EXPECT_FALSE(loop.runNext());
  loop.awaitedIs(pipe.in.fd(), EventLoop::Awaited::room);
  EXPECT_TRUE(loop.runNext());
  loop.awaitedIs(pipe.in.fd(), EventLoop::Awaited::octets);
  EXPECT_FALSE(loop.runNext());
  EXPECT_EQ(runs, 1);
}

TEST(EventLoop, SaysWhyADescriptorCannotBeWatched) {
  EventLoop loop;
  Descriptor const file(open("/dev/null", O_RDONLY | O_CLOEXEC));
  EXPECT_EQ(loop.watch(file.fd(), [] {}).fault().what, "watching: Operation not permitted");
  loop.forget(file.fd());
}

}  // namespace
}  // namespace Linux
