#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "linux/net/LinkTable.h"
#include "linux/process/Descriptor.h"

struct nlmsghdr;

namespace Linux {

/// Keeps a table of the machine's interfaces as the kernel has them (rtnetlink). When the kernel
/// had more to say than the socket could hold, everything is asked again, and the table tells what
/// has changed meanwhile.
///
/// It never blocks: whoever runs a loop waits for `fd()` to become readable, or for `nextTime()`,
/// and calls `run()`.
class LinkWatch {
 public:
  /// What has come so far.
  struct Counts {
    uint64_t messages = 0;
    uint64_t overruns = 0;  ///< times that the kernel had more to say
    uint64_t resyncs = 0;   ///< times that everything was told, the first one too
    uint64_t errors = 0;    ///< requests that the kernel refused, and other errors of the socket
  };

  /// `synced` runs whenever the table has become whole. Throws `std::system_error` if the kernel
  /// gives no socket.
  LinkWatch(LinkTable& table, std::function<void()> synced);

  int fd() const { return socket_.fd(); }
  void run();
  /// When to run even if nothing can be read, in seconds of the world's clock.
  double nextTime() const { return nextTime_; }

  /// Asks for everything again, as after an overrun.
  void resync();

  Counts const& counts() const { return counts_; }

 private:
  bool ask();
  bool readOnce();
  bool failed(int error);
  void askForTheLost();
  void take(nlmsghdr const& message);
  void ended(bool whole);

  LinkTable& table_;
  std::function<void()> const synced_;
  Descriptor socket_;
  std::vector<uint8_t> buffer_;
  Counts counts_;
  /// The number of the request that is being answered; 0 for none.
  uint32_t asked_ = 0;
  uint32_t lastRequest_ = 0;
  /// What is being answered won't do.
  bool again_ = false;
  /// The kernel had more to say.
  bool lost_ = false;
  double nextTime_;
};

}  // namespace Linux
