#include "runtime/TimerQueue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <utility>
#include <vector>

namespace Zorn {
namespace {

struct TheTimerQueue : ::testing::Test {
  // Takes all out, in the order in which they are due.
  std::vector<void*> taken() {
    std::vector<void*> all;
    while (!queue.empty()) {
      all.push_back(queue.timer(queue.firstSlot()));
      queue.disarm(queue.firstSlot());
    }
    return all;
  }
  TimerQueue queue;
  int a = 0, b = 0, c = 0;
};

TEST_F(TheTimerQueue, GoesByTimeAndThenInTheOrderOfArming) {
  auto const first = queue.slotIs(&a), second = queue.slotIs(&b), third = queue.slotIs(&c);
  queue.arm(first, {2.0, 1});
  queue.arm(second, {2.0, 2});
  queue.arm(third, {1.0, 3});
  EXPECT_EQ(taken(), (std::vector<void*>{&c, &a, &b}));
}

TEST_F(TheTimerQueue, HasATimerOnceHoweverOftenItIsArmed) {
  auto const first = queue.slotIs(&a), second = queue.slotIs(&b);
  queue.arm(first, {1.0, 1});
  queue.arm(second, {2.0, 2});
  queue.arm(first, {3.0, 3});
  EXPECT_EQ(queue.size(), 2u);
  EXPECT_EQ(taken(), (std::vector<void*>{&b, &a}));
}

TEST_F(TheTimerQueue, UsesTheSlotOfATimerThatHasGoneAgain) {
  auto const slot = queue.slotIs(&a);
  queue.arm(slot, {1.0, 1});
  queue.slotDel(slot);
  EXPECT_TRUE(queue.empty());
  EXPECT_EQ(queue.slotIs(&b), slot);
  EXPECT_EQ(queue.timer(slot), &b);
  EXPECT_TRUE(queue.empty());
}

TEST_F(TheTimerQueue, SortsThousandsOfWhichMostMoveAndSomeLeave) {
  std::vector<int> timers(5000);
  std::vector<TimerQueue::Slot> slots;
  std::vector<std::pair<double, void*>> expected(timers.size());
  uint64_t arming = 0;
  for (int& timer : timers) slots.push_back(queue.slotIs(&timer));
  for (size_t round = 0; round < 3; ++round) {
    for (size_t i = 0; i < timers.size(); ++i) {
      double const time = static_cast<double>((i * 7919 + round * 104729) % 2503);
      queue.arm(slots[i], {time, ++arming});
      expected[i] = {time, &timers[i]};
    }
  }
  for (size_t i = 0; i < timers.size(); i += 7) {
    queue.disarm(slots[i]);
    expected[i].second = nullptr;
  }
  std::erase_if(expected, [](auto const& one) { return !one.second; });
  std::ranges::stable_sort(expected, {}, &std::pair<double, void*>::first);
  std::vector<void*> inOrder;
  for (auto const& [time, timer] : expected) inOrder.push_back(timer);
  EXPECT_EQ(taken(), inOrder);
}

// What a queue has to do, done simply.
class Model {
 public:
  void arm(TimerQueue::Slot slot, TimerDue const& due) {
    disarm(slot);
    bySlot_[slot] = due;
    byDue_[due] = slot;
  }
  void disarm(TimerQueue::Slot slot) {
    auto const armed = bySlot_.find(slot);
    if (armed == bySlot_.end()) return;
    byDue_.erase(armed->second);
    bySlot_.erase(armed);
  }
  bool empty() const { return byDue_.empty(); }
  size_t size() const { return byDue_.size(); }
  TimerQueue::Slot firstSlot() const { return byDue_.begin()->second; }

 private:
  std::map<TimerQueue::Slot, TimerDue> bySlot_;
  std::map<TimerDue, TimerQueue::Slot> byDue_;
};

// Timers of short periods and long ones, which fire, are armed anew early, and leave.
TEST_F(TheTimerQueue, GivesTimersOfAnyPeriodsInTheirOrder) {
  constexpr std::array kPeriods{2.0, 2.0, 2.0, 0.5, 6.0, 3.3, 0.0, 100.0, 3600.0};
  std::vector<int> timers(200);
  std::vector<TimerQueue::Slot> slots;
  for (int& timer : timers) slots.push_back(queue.slotIs(&timer));
  uint64_t drawn = 1;
  auto const draw = [&](size_t below) {
    drawn = drawn * 6364136223846793005u + 1442695040888963407u;
    return static_cast<size_t>(drawn >> 33) % below;
  };
  Model model;
  double now = 0;
  for (uint64_t step = 1; step <= 100000; ++step) {
    if (!model.empty() && draw(3) != 0) {
      ASSERT_EQ(queue.firstSlot(), model.firstSlot()) << step;
      now = std::max(now, queue.first().time);
      auto const slot = queue.firstSlot();
      queue.disarm(slot);
      model.disarm(slot);
      if (draw(2) == 0) continue;
    }
    auto const slot = slots[draw(slots.size())];
    if (draw(8) == 0) {
      queue.disarm(slot);
      model.disarm(slot);
    } else {
      TimerDue const due{now + kPeriods[draw(kPeriods.size())], step};
      queue.arm(slot, due);
      model.arm(slot, due);
    }
    ASSERT_EQ(queue.size(), model.size());
  }
}

TEST_F(TheTimerQueue, BearsATimerThatIsArmedAgainAndAgainBeforeItIsDue) {
  auto const often = queue.slotIs(&a), patient = queue.slotIs(&b), late = queue.slotIs(&c);
  queue.arm(late, {50.0, 1});
  queue.arm(patient, {5.0, 2});
  for (uint64_t i = 0; i < 100000; ++i) {
    queue.arm(often, {5.0 + 1e-5 * static_cast<double>(i), 3 + i});
  }
  EXPECT_EQ(queue.size(), 3u);
  EXPECT_EQ(taken(), (std::vector<void*>{&b, &a, &c}));
}

}  // namespace
}  // namespace Zorn
