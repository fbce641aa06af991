#pragma once

#include <cerrno>
#include <map>
#include <system_error>

#include "linux/kernel/FilterKernel.h"

namespace Linux::Test {

/// The filters of a kernel: it keeps what it is given. Every change that was asked for stands in
/// `asked`, in order.
class FakeFilterKernel final : public FilterKernel {
 public:
  struct Interface {
    std::string kind = {};  ///< of its hooks; empty without any
    HeldFilters held = {};
    Macsecd::EtherTypes clear = {};  ///< that both filters let pass
  };

  bool hasChanged() override { return tellsOfChange; }
  KernelAnswer hooks(std::vector<FilterHooks>& out) override {
    ++listings;
    out.clear();
    for (auto const& [index, interface] : interfaces) {
      if (!interface.kind.empty()) out.push_back({index, interface.kind});
    }
    return {};
  }
  KernelAnswer filters(int index, Macsecd::EtherTypes const& clear, HeldFilters& out) override {
    ++looks;
    out = interfaces.contains(index) ? interfaces[index].held : HeldFilters();
    if (interfaces.contains(index) && interfaces[index].clear != clear) {
      out.in.isWhole = out.out.isWhole = false;
    }
    return {};
  }
  KernelAnswer hooksAdd(int index) override {
    return ask("add hooks", index,
               [](Interface& i) { return i.kind.empty() ? (i.kind = kBothSides, 0) : EEXIST; });
  }
  KernelAnswer hooksDel(int index) override {
    return ask("remove hooks", index, [](Interface& i) { return i = {}, 0; });
  }
  KernelAnswer filterIs(int index, FilterSide side, bool hooksAreOurs,
                        Macsecd::EtherTypes const& clear) override {
    return ask(side == FilterSide::in ? "close in" : "close out", index, [&](Interface& i) {
      if (i.kind.empty()) return EINVAL;
      of(i, side) = {true, true, hooksAreOurs};
      i.clear = clear;
      return 0;
    });
  }
  KernelAnswer filterDel(int index, FilterSide side, bool hooksAreOurs) override {
    return ask(side == FilterSide::in ? "open in" : "open out", index, [&](Interface& i) {
      HeldFilter& filter = of(i, side);
      if (!filter.isThere || filter.hooksAreOurs != hooksAreOurs) return ENOENT;
      filter = {};
      return 0;
    });
  }

  bool isClosed(int index) const {
    auto const found = interfaces.find(index);
    return found != interfaces.end() && found->second.held.in.isWhole &&
           found->second.held.out.isWhole;
  }
  std::vector<std::string> takeAsked() { return std::exchange(asked, {}); }

  std::map<int, Interface> interfaces;
  std::vector<std::string> asked;
  int listings = 0;           ///< of all hooks
  int looks = 0;              ///< at the filters of an interface
  bool tellsOfChange = true;  ///< at any time
  /// Requests by their text that are refused with this error.
  std::map<std::string, int> refused;

 private:
  static HeldFilter& of(Interface& interface, FilterSide side) {
    return side == FilterSide::in ? interface.held.in : interface.held.out;
  }
  template <class Do>
  KernelAnswer ask(std::string const& what, int index, Do act) {
    asked.push_back(what);
    auto const found = refused.find(what);
    int error = found == refused.end() ? 0 : found->second;
    if (!error) error = interfaces.contains(index) ? act(interfaces[index]) : ENODEV;
    if (!error) return {};
    return {error, std::generic_category().message(error)};
  }
};

}  // namespace Linux::Test
