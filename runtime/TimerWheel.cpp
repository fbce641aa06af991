#include "runtime/TimerWheel.h"

#include <algorithm>

#include "runtime/Assert.h"

namespace Zorn {

TimerWheel::~TimerWheel() = default;

double TimerWheel::nextTime() const { return queue_.empty() ? never : queue_.first().time; }

size_t TimerWheel::runDue() {
  struct Pass {
    explicit Pass(double& passTime) : time(passTime) { time = Vesk::now(); }
    ~Pass() { time = -never; }
    double& time;
  };
  Vesk::Ptr<TimerWheel> held(this);
  Vesk::WorldScope const scope(world_);
  Pass pass(passTime_);
  double const now = passTime_;
  uint64_t const armedBefore = armings_;
  size_t fired = 0;
  while (!queue_.empty() && queue_.first().time <= now && queue_.first().arming <= armedBefore) {
    fireFirst();
    ++fired;
  }
  return fired;
}

bool TimerWheel::runOne() {
  Vesk::WorldScope const scope(world_);
  if (queue_.empty() || queue_.first().time > Vesk::now()) return false;
  fireFirst();
  return true;
}

TimerWheel::NotifieeConst* TimerWheel::first() const {
  if (queue_.empty()) return nullptr;
  return static_cast<NotifieeConst*>(queue_.timer(queue_.firstSlot()));
}

// While it is handled, the memory of the next one comes closer.
void TimerWheel::fireFirst() {
  Vesk::Ptr<NotifieeConst> timer(first());
  disarm(*timer);
  Vesk::Home::fetch(first());
  if (timer->isMarkedForDeletion()) return;
  Vesk::runHandler(timer->machine(), timer.ptr(), [&] { timer->onTime(); });
}

void TimerWheel::arm(NotifieeConst& timer, double time) {
  if (timer.slot_ == TimerQueue::kNoSlot) timer.slot_ = queue_.slotIs(&timer);
  queue_.arm(timer.slot_, {std::max(time, passTime_), ++armings_});
}

void TimerWheel::disarm(NotifieeConst const& timer) {
  if (timer.slot_ != TimerQueue::kNoSlot) queue_.disarm(timer.slot_);
}

TimerWheel::NotifieeConst::NotifieeConst(Vesk::Ptr<TimerWheel> wheel) : wheel_(std::move(wheel)) {}

TimerWheel::NotifieeConst::~NotifieeConst() {
  if (slot_ != TimerQueue::kNoSlot) wheel_->queue_.slotDel(slot_);
}

void TimerWheel::NotifieeConst::timeMinIs(double t) {
  time_ = t;
  if (isArmed() && !isMarkedForDeletion()) {
    wheel_->arm(*this, t);
  } else {
    wheel_->disarm(*this);
  }
}

void TimerWheel::NotifieeConst::isRegisteredNotifieeIs(bool on) {
  if (!on) wheel_->disarm(*this);
}

void TimerWheel::NotifieeConst::retire() {
  isMarkedForDeletionIs(true);
  isRegisteredNotifieeIs(false);
}

}  // namespace Zorn
