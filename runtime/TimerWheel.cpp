#include "runtime/TimerWheel.h"

#include <algorithm>

#include "runtime/Assert.h"

namespace Zorn {

TimerWheel::~TimerWheel() = default;

double TimerWheel::nextTime() const { return heap_.empty() ? never : heap_.front().time; }

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
  while (!heap_.empty() && heap_.front().time <= now && heap_.front().arming <= armedBefore) {
    fireFirst();
    ++fired;
  }
  return fired;
}

bool TimerWheel::runOne() {
  Vesk::WorldScope const scope(world_);
  if (heap_.empty() || heap_.front().time > Vesk::now()) return false;
  fireFirst();
  return true;
}

void TimerWheel::fireFirst() {
  Vesk::Ptr<NotifieeConst> timer(heap_.front().timer);
  disarm(*timer);
  if (timer->isMarkedForDeletion()) return;
  Vesk::runHandler(timer->machine(), [&] { timer->onTime(); });
}

void TimerWheel::arm(NotifieeConst& timer, double time) {
  Place const place{std::max(time, passTime_), ++armings_, &timer};
  if (timer.heapPlace_ == NotifieeConst::kNowhere) {
    heap_.push_back(place);
    timer.heapPlace_ = heap_.size() - 1;
  } else {
    heap_[timer.heapPlace_] = place;
  }
  siftUp(timer.heapPlace_);
  siftDown(timer.heapPlace_);
  VESK_ASSERT(heap_[timer.heapPlace_].timer == &timer);
}

void TimerWheel::disarm(NotifieeConst& timer) {
  size_t const at = timer.heapPlace_;
  if (at == NotifieeConst::kNowhere) return;
  VESK_ASSERT(heap_[at].timer == &timer);
  timer.heapPlace_ = NotifieeConst::kNowhere;
  Place const last = heap_.back();
  heap_.pop_back();
  if (at == heap_.size()) return;
  put(at, last);
  siftUp(at);
  siftDown(last.timer->heapPlace_);
}

void TimerWheel::put(size_t at, Place const& place) {
  heap_[at] = place;
  place.timer->heapPlace_ = at;
}

void TimerWheel::siftUp(size_t at) {
  Place const place = heap_[at];
  while (at > 0 && place < heap_[(at - 1) / 2]) {
    put(at, heap_[(at - 1) / 2]);
    at = (at - 1) / 2;
  }
  put(at, place);
}

void TimerWheel::siftDown(size_t at) {
  Place const place = heap_[at];
  for (size_t child; (child = 2 * at + 1) < heap_.size(); at = child) {
    if (child + 1 < heap_.size() && heap_[child + 1] < heap_[child]) ++child;
    if (!(heap_[child] < place)) break;
    put(at, heap_[child]);
  }
  put(at, place);
}

TimerWheel::NotifieeConst::NotifieeConst(Vesk::Ptr<TimerWheel> wheel) : wheel_(std::move(wheel)) {}

TimerWheel::NotifieeConst::~NotifieeConst() { wheel_->disarm(*this); }

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
