#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/config/ClearTypes.h"
#include "linux/kernel/MacsecKernel.h"

namespace Linux {

/// Where in the kernel frames of an interface are filtered: as they come in, or as they go out.
enum class FilterSide : uint8_t { in, out };

/// The qdisc of one interface at which its frames can be filtered. There is room for one.
struct FilterHooks {
  int index = 0;  ///< of the interface
  std::string kind = {};
};

/// The kind of hooks that has both sides.
constexpr char const* kBothSides = "clsact";

/// What stands at the place of the filter of this daemon's, on one side of an interface.
struct HeldFilter {
  bool isWhole = false;       ///< it lets through what it is to let through
  bool isThere = false;       ///< whole or not
  bool hooksAreOurs = false;  ///< the hooks came into being with it
};

struct HeldFilters {
  HeldFilter in = {}, out = {};
  bool hasOthers = false;  ///< filters of other programs
};

/// The part of the kernel that filters frames. The one filter that is set here drops every frame
/// but those of MACsec, of EAPOL and of the types that may pass in clear, and leaves it to filters
/// after it what happens to these; it is recognised by its place, whoever set it. Every request is
/// answered before it returns.
class FilterKernel {
 public:
  virtual ~FilterKernel() = default;

  /// Whether hooks or filters may stand otherwise than when this was asked last.
  virtual bool hasChanged() = 0;
  /// Of all interfaces that have any.
  virtual KernelAnswer hooks(std::vector<FilterHooks>& out) = 0;
  /// A filter is whole that lets just these types pass in clear.
  virtual KernelAnswer filters(int index, Macsecd::EtherTypes const& clear, HeldFilters& out) = 0;

  /// Makes hooks with both sides.
  virtual KernelAnswer hooksAdd(int index) = 0;
  /// Together with all filters there.
  virtual KernelAnswer hooksDel(int index) = 0;
  /// Sets the filter, or changes it at one stroke if it is there.
  virtual KernelAnswer filterIs(int index, FilterSide side, bool hooksAreOurs,
                                Macsecd::EtherTypes const& clear) = 0;
  virtual KernelAnswer filterDel(int index, FilterSide side, bool hooksAreOurs) = 0;
};

}  // namespace Linux
