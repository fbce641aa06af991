#pragma once

#include <map>

#include "linux/kernel/FilterKernel.h"
#include "linux/kernel/Rounds.h"

namespace Linux {

/// Knows which interfaces have hooks for filters. The kernel lists those of all interfaces or of
/// none: one listing serves all interfaces within a round.
class HooksReader : public Rounds {
 public:
  explicit HooksReader(FilterKernel& kernel) : kernel_(kernel) {}

  /// Of which kind those of an interface are; empty if it has none.
  KernelAnswer kindOf(int index, std::string& out) {
    if (auto answer = read(); !answer) return answer;
    auto const found = kinds_.find(index);
    out = found == kinds_.end() ? std::string() : found->second;
    return {};
  }
  /// They were made.
  void kindIs(int index, std::string const& kind) { kinds_[index] = kind; }

 private:
  KernelAnswer read() {
    if (isFresh()) return {};
    std::vector<FilterHooks> all;
    if (auto answer = kernel_.hooks(all); !answer) return answer;
    kinds_.clear();
    for (FilterHooks& hooks : all) kinds_[hooks.index] = std::move(hooks.kind);
    wasRead();
    return {};
  }

  FilterKernel& kernel_;
  std::map<int, std::string> kinds_;
};

}  // namespace Linux
