#pragma once

#include "linux/kernel/MacsecKernel.h"
#include "runtime/Assert.h"

namespace Linux {

/// All MACsec devices of the kernel, whoever made them.
struct KernelReading {
  std::vector<MacsecLink> links;
  std::vector<SecY> secYs;
};

/// Reads for the ports what the kernel holds. It tells that of one device no sooner than of all:
/// one reading serves every port that wants one within a round; outside of rounds each is made
/// anew.
class KernelReader {
 public:
  explicit KernelReader(MacsecKernel& kernel) : kernel_(kernel) {}
  KernelReader(KernelReader const&) = delete;
  KernelReader& operator=(KernelReader const&) = delete;

  /// A time in which nobody else has to do with the devices. Rounds may stand in one another.
  class Round {
   public:
    explicit Round(KernelReader& reader) : reader_(reader) { ++reader_.rounds_; }
    ~Round() {
      VESK_ASSERT(reader_.rounds_ > 0);
      if (--reader_.rounds_ == 0) reader_.expire();
    }
    Round(Round const&) = delete;
    Round& operator=(Round const&) = delete;

   private:
    KernelReader& reader_;
  };

  MacsecKernel& kernel() const { return kernel_; }
  /// Null if the kernel refuses a request. `did` is told of each what it was answered and what it
  /// was to do, and says whether to go on. The reading stands until the next one.
  template <class Did>
  KernelReading const* read(Did did) {
    if (isFresh_) return &reading_;
    if (!did(kernel_.present(), "offer MACsec") ||
        !did(kernel_.links(reading_.links), "list its devices") ||
        !did(kernel_.secYs(reading_.secYs), "list its secure associations")) {
      return nullptr;
    }
    isFresh_ = rounds_ > 0;
    return &reading_;
  }
  /// The devices may stand otherwise than they were read: one has gone, or a request was refused.
  void expire() { isFresh_ = false; }

 private:
  MacsecKernel& kernel_;
  KernelReading reading_;
  int rounds_ = 0;
  bool isFresh_ = false;
};

}  // namespace Linux
