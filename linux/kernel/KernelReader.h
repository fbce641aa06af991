#pragma once

#include "linux/kernel/KernelReading.h"
#include "linux/kernel/Rounds.h"

namespace Linux {

/// Reads for the ports what the kernel holds. It tells that of one device no sooner than of all:
/// one reading serves every port that wants one within a round; outside of rounds each is made
/// anew.
class KernelReader : public Rounds {
 public:
  explicit KernelReader(MacsecKernel& kernel) : kernel_(kernel) {}

  MacsecKernel& kernel() const { return kernel_; }
  /// Null if the kernel refuses a request. `did` is told of each what it was answered and what it
  /// was to do, and says whether to go on. The reading stands until the next one.
  template <class Did>
  KernelReading const* read(Did did) {
    if (isFresh()) return &reading_;
    if (!did(kernel_.present(), "offer MACsec") ||
        !did(reading_.links.readFrom(kernel_), "list its devices") ||
        !did(reading_.secYs.readFrom(kernel_), "list its secure associations")) {
      return nullptr;
    }
    wasRead();
    return &reading_;
  }

 private:
  MacsecKernel& kernel_;
  KernelReading reading_;
};

}  // namespace Linux
