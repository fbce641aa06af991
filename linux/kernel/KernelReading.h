#pragma once

#include <algorithm>
#include <map>

#include "linux/kernel/MacsecKernel.h"

namespace Linux {

/// The secure associations of all MACsec devices of the kernel, whoever made these, found by the
/// index of the device.
class SecYTable {
 public:
  KernelAnswer readFrom(MacsecKernel& kernel) {
    auto answer = kernel.secYs(all_);
    std::ranges::sort(all_, {}, &SecY::index);
    return answer;
  }
  /// Null if there is no such device.
  SecY const* of(int index) const {
    auto const found = std::ranges::lower_bound(all_, index, {}, &SecY::index);
    return found != all_.end() && found->index == index ? &*found : nullptr;
  }

 private:
  std::vector<SecY> all_;
};

/// The MACsec devices of the kernel, found by the interface that they stand on.
class MacsecLinkTable {
 public:
  KernelAnswer readFrom(MacsecKernel& kernel) {
    std::vector<MacsecLink> all;
    auto answer = kernel.links(all);
    byParent_.clear();
    for (MacsecLink& link : all) byParent_[link.parent].push_back(std::move(link));
    return answer;
  }
  std::vector<MacsecLink> const& on(int parent) const {
    static std::vector<MacsecLink> const kNone;
    auto const found = byParent_.find(parent);
    return found == byParent_.end() ? kNone : found->second;
  }

 private:
  std::map<int, std::vector<MacsecLink>> byParent_;
};

struct KernelReading {
  MacsecLinkTable links;
  SecYTable secYs;
};

}  // namespace Linux
