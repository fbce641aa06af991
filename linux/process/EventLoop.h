#pragma once

#include <functional>
#include <map>
#include <memory>

#include "host/text/Result.h"

struct sd_event;
struct sd_event_source;

namespace Linux {

/// The loop of a process: waits for descriptors, one timer and signals, and runs their handlers one
/// at a time. It tells a service manager's watchdog that it turns, where there is one.
///
/// A handler may watch and forget anything, itself too. An exception that leaves one ends the
/// process.
class EventLoop {
 public:
  using Handler = std::function<void()>;

  /// What a descriptor is watched for; an error is told always.
  enum class Awaited { octets, room };

  /// Throws `std::system_error` if the kernel gives no loop; so do timers and signals.
  EventLoop();
  ~EventLoop();
  EventLoop(EventLoop const&) = delete;
  EventLoop& operator=(EventLoop const&) = delete;

  /// Runs the handler in each turn in which the descriptor has something to read, or an error to
  /// tell. One handler for a descriptor: the last one given. A fault says why the kernel doesn't
  /// let it be watched.
  Macsecd::Result<> watch(int fd, Handler ready);
  /// A descriptor that is watched is, from now on, watched for this.
  void awaitedIs(int fd, Awaited awaited);
  /// Before the descriptor is closed.
  void forget(int fd);

  /// What the timer runs.
  void timerIs(Handler due) { due_ = std::move(due); }
  /// When: in seconds of CLOCK_BOOTTIME, the clock of `ProcessWorld::now()`. Never sooner; once for
  /// each time given. Infinity disarms it.
  void timeIs(double seconds);

  /// Runs the handler when the signal comes, which is blocked otherwise.
  void signalIs(int signal, Handler handler);

  /// Runs before each wait, the first one too: after whatever a turn has changed.
  void beforeWaitIs(Handler handler) { beforeWait_ = std::move(handler); }

  /// Turns until `exit`; returns its status.
  int run();
  void exit(int status);

  /// Runs one handler that is due now, if there is one. Returns whether there was: for whoever has
  /// the loop within another one.
  bool runNext();
  /// Readable when a descriptor that is watched is ready.
  int fd() const;

 private:
  struct Unref {
    void operator()(sd_event* event) const;
    void operator()(sd_event_source* source) const;
  };
  using Source = std::unique_ptr<sd_event_source, Unref>;
  struct Watch;

  static std::shared_ptr<Watch> watchOf(Handler handler);
  void makeTimer(uint64_t microseconds);
  bool turn(uint64_t timeout);

  std::unique_ptr<sd_event, Unref> event_;
  Handler due_;
  Handler beforeWait_;
  Source timer_;
  std::map<int, std::shared_ptr<Watch>> descriptors_;
  std::map<int, std::shared_ptr<Watch>> signals_;
};

}  // namespace Linux
