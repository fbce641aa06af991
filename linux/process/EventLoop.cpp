#include "linux/process/EventLoop.h"

#include <sys/epoll.h>
#include <systemd/sd-event.h>

#include <cmath>
#include <cstring>
#include <system_error>

namespace Linux {

namespace {

// The kernel's own latitude is enough: a timer of the protocol is to be on time.
constexpr uint64_t kAccuracy = 1;

/// Negative results of sd-event are error numbers.
int checked(int result, char const* what) {
  if (result < 0) throw std::system_error(-result, std::generic_category(), what);
  return result;
}

}  // namespace

// Kept by whoever runs it: a handler may end its own watch.
struct EventLoop::Watch : std::enable_shared_from_this<Watch> {
  explicit Watch(Handler then) : handler(std::move(then)) {}
  static void run(void* userData) noexcept {
    auto const self = static_cast<Watch*>(userData)->shared_from_this();
    self->handler();
  }

  Handler const handler;
  Source source;
};

void EventLoop::Unref::operator()(sd_event* event) const { sd_event_unref(event); }

// Without the first step, one that is just running would stay in the loop.
void EventLoop::Unref::operator()(sd_event_source* source) const {
  sd_event_source_disable_unref(source);
}

EventLoop::EventLoop() {
  sd_event* event = nullptr;
  checked(sd_event_new(&event), "event loop");
  event_.reset(event);
  checked(sd_event_set_watchdog(event, true), "watchdog of the service manager");
}

EventLoop::~EventLoop() = default;

std::shared_ptr<EventLoop::Watch> EventLoop::watchOf(Handler handler) {
  return std::make_shared<Watch>(std::move(handler));
}

Macsecd::Result<> EventLoop::watch(int fd, Handler ready) {
  forget(fd);
  auto const watch = watchOf(std::move(ready));
  sd_event_source* source = nullptr;
  auto const run = [](sd_event_source*, int, uint32_t, void* userData) {
    Watch::run(userData);
    return 0;
  };
  int const result = sd_event_add_io(event_.get(), &source, fd, EPOLLIN, run, watch.get());
  if (result < 0) {
    return Macsecd::Fault{std::string("watching: ") + std::strerror(-result),
                          "raise fs.epoll.max_user_watches"};
  }
  watch->source.reset(source);
  descriptors_[fd] = watch;
  return {};
}

void EventLoop::awaitedIs(int fd, Awaited awaited) {
  auto const events = static_cast<uint32_t>(awaited == Awaited::room ? EPOLLOUT : EPOLLIN);
  checked(sd_event_source_set_io_events(descriptors_.at(fd)->source.get(), events), "watching");
}

void EventLoop::forget(int fd) {
  auto const found = descriptors_.find(fd);
  if (found == descriptors_.end()) return;
  found->second->source.reset();
  descriptors_.erase(found);
}

void EventLoop::signalIs(int signal, Handler handler) {
  signals_.erase(signal);
  auto const watch = watchOf(std::move(handler));
  sd_event_source* source = nullptr;
  auto const run = [](sd_event_source*, signalfd_siginfo const*, void* userData) {
    Watch::run(userData);
    return 0;
  };
  int const blocked = signal | SD_EVENT_SIGNAL_PROCMASK;
  checked(sd_event_add_signal(event_.get(), &source, blocked, run, watch.get()), "signal");
  watch->source.reset(source);
  signals_[signal] = watch;
}

void EventLoop::timeIs(double seconds) {
  if (!std::isfinite(seconds)) {
    if (timer_) checked(sd_event_source_set_enabled(timer_.get(), SD_EVENT_OFF), "timer");
    return;
  }
  auto const microseconds = static_cast<uint64_t>(std::ceil(std::fmax(seconds, 0.0) * 1e6)) + 1;
  if (!timer_) return makeTimer(microseconds);
  checked(sd_event_source_set_time(timer_.get(), microseconds), "timer");
  checked(sd_event_source_set_enabled(timer_.get(), SD_EVENT_ONESHOT), "timer");
}

// A timer that is armed anew goes behind all that there is to read; under a flood of frames, whose
// turn never ends, it would wait forever if it weren't more important.
void EventLoop::makeTimer(uint64_t microseconds) {
  sd_event_source* source = nullptr;
  auto const run = [](sd_event_source*, uint64_t, void* userData) {
    [](EventLoop& self) noexcept {
      if (self.due_) self.due_();
    }(*static_cast<EventLoop*>(userData));
    return 0;
  };
  checked(
      sd_event_add_time(event_.get(), &source, CLOCK_BOOTTIME, microseconds, kAccuracy, run, this),
      "timer");
  timer_.reset(source);
  checked(sd_event_source_set_priority(source, SD_EVENT_PRIORITY_IMPORTANT), "timer");
}

int EventLoop::run() {
  while (sd_event_get_state(event_.get()) != SD_EVENT_FINISHED) {
    turn(UINT64_MAX);
  }
  int status = 0;
  sd_event_get_exit_code(event_.get(), &status);
  return status;
}

bool EventLoop::turn(uint64_t timeout) {
  if (beforeWait_) beforeWait_();
  return checked(sd_event_run(event_.get(), timeout), "event loop") > 0;
}

bool EventLoop::runNext() { return turn(0); }

int EventLoop::fd() const { return checked(sd_event_get_fd(event_.get()), "event loop"); }

void EventLoop::exit(int status) { checked(sd_event_exit(event_.get(), status), "exit"); }

}  // namespace Linux
