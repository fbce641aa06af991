#include "runtime/TimerHeap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace Zorn {
namespace {

struct TheHeap : ::testing::Test {
  // Takes all out, in the order in which they are due.
  std::vector<void*> taken() {
    std::vector<void*> all;
    while (!heap.empty()) {
      all.push_back(heap.timer(heap.firstSlot()));
      heap.disarm(heap.firstSlot());
    }
    return all;
  }
  TimerHeap heap;
  int a = 0, b = 0, c = 0;
};

TEST_F(TheHeap, GoesByTimeAndThenInTheOrderOfArming) {
  auto const first = heap.slotIs(&a), second = heap.slotIs(&b), third = heap.slotIs(&c);
  heap.arm(first, {2.0, 1});
  heap.arm(second, {2.0, 2});
  heap.arm(third, {1.0, 3});
  EXPECT_EQ(taken(), (std::vector<void*>{&c, &a, &b}));
}

TEST_F(TheHeap, HasATimerOnceHoweverOftenItIsArmed) {
  auto const first = heap.slotIs(&a), second = heap.slotIs(&b);
  heap.arm(first, {1.0, 1});
  heap.arm(second, {2.0, 2});
  heap.arm(first, {3.0, 3});
  EXPECT_EQ(heap.size(), 2u);
  EXPECT_EQ(taken(), (std::vector<void*>{&b, &a}));
}

TEST_F(TheHeap, UsesTheSlotOfATimerThatHasGoneAgain) {
  auto const slot = heap.slotIs(&a);
  heap.arm(slot, {1.0, 1});
  heap.slotDel(slot);
  EXPECT_TRUE(heap.empty());
  EXPECT_EQ(heap.slotIs(&b), slot);
  EXPECT_EQ(heap.timer(slot), &b);
  EXPECT_TRUE(heap.empty());
}

TEST_F(TheHeap, SortsThousandsOfWhichMostMoveAndSomeLeave) {
  std::vector<int> timers(5000);
  std::vector<TimerHeap::Slot> slots;
  std::vector<std::pair<double, void*>> expected(timers.size());
  uint64_t arming = 0;
  for (int& timer : timers) slots.push_back(heap.slotIs(&timer));
  for (size_t round = 0; round < 3; ++round) {
    for (size_t i = 0; i < timers.size(); ++i) {
      double const time = static_cast<double>((i * 7919 + round * 104729) % 2503);
      heap.arm(slots[i], {time, ++arming});
      expected[i] = {time, &timers[i]};
    }
  }
  for (size_t i = 0; i < timers.size(); i += 7) {
    heap.disarm(slots[i]);
    expected[i].second = nullptr;
  }
  std::erase_if(expected, [](auto const& one) { return !one.second; });
  std::ranges::stable_sort(expected, {}, &std::pair<double, void*>::first);
  std::vector<void*> inOrder;
  for (auto const& [time, timer] : expected) inOrder.push_back(timer);
  EXPECT_EQ(taken(), inOrder);
}

}  // namespace
}  // namespace Zorn
