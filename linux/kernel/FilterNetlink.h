#pragma once

#include "linux/kernel/FilterKernel.h"
#include "linux/kernel/NetlinkSocket.h"

namespace Linux {

/// The filters of the kernel that this process runs on, over rtnetlink. CAP_NET_ADMIN is needed for
/// every change.
class FilterNetlink final : public FilterKernel {
 public:
  /// The place of the filter: others with a lower preference see frames before it.
  static constexpr uint16_t kPreference = 3;

  /// Works in the network namespace of the thread that makes it. Throws `std::system_error`.
  FilterNetlink();

  bool hasChanged() override;
  KernelAnswer hooks(std::vector<FilterHooks>& out) override;
  KernelAnswer filters(int index, Macsecd::EtherTypes const& clear, HeldFilters& out) override;
  KernelAnswer hooksAdd(int index) override;
  KernelAnswer hooksDel(int index) override;
  KernelAnswer filterIs(int index, FilterSide side, bool hooksAreOurs,
                        Macsecd::EtherTypes const& clear) override;
  KernelAnswer filterDel(int index, FilterSide side, bool hooksAreOurs) override;

 private:
  NetlinkSocket route_;
  NetlinkSocket news_;  ///< the kernel tells here of each change
};

}  // namespace Linux
