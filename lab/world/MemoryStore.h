#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>

#include "host/state/KeyHistory.h"
#include "host/state/StateStore.h"

namespace Lab {

/// The status tree of a switch in memory, over the processes of the switch. A process can be told
/// to die at a commit: nothing that it does from then on reaches the store.
class MemoryStore final : public Macsecd::StateStore {
 public:
  /// Where a process dies: at which commit, counted from 1 over all processes (0: never), and
  /// whether the store has taken that one.
  struct Death {
    size_t commit = 0;
    bool taken = true;
  };

  /// `died` is called once, out of the commit; it may throw to unwind out of the switch.
  void deathIs(Death death, std::function<void()> died) {
    death_ = death;
    died_ = std::move(died);
  }
  /// Whether it takes nothing, as a full disk.
  void refusesIs(bool refuses) { refuses_ = refuses; }
  bool refuses() const { return refuses_; }
  /// All that it holds is lost.
  void clear() { values_.clear(); }
  /// Whether the process died before the end of a turn: what this had changed in the tree so far is
  /// lost, while the history of keys, which goes ahead of it, was kept.
  bool diedWithinTurn() const { return diedWithinTurn_; }
  /// How many commits there were.
  size_t commits() const { return commits_; }
  Macsecd::StateValues const& values() const { return values_; }

  /// Another process begins, which reads.
  Macsecd::StateValues readAll() override {
    dead_ = false;
    return values_;
  }
  Macsecd::Result<> commit(Macsecd::StateChange const& change) override {
    if (dead_) return {};
    if (refuses_) return Macsecd::Fault{"the store is full", "make room"};
    ++commits_;
    bool const dies = death_.commit == commits_;
    if (!dies || death_.taken) Macsecd::apply(change, values_);
    if (!dies) return {};
    dead_ = true;
    diedWithinTurn_ = isOfKeysAlone(change);
    died_();
    return {};
  }

 private:
  static bool isOfKeysAlone(Macsecd::StateChange const& change) {
    return change.erasedBelow.empty() && std::ranges::all_of(change.values, [](auto const& entry) {
             return entry.first.starts_with(Macsecd::KeyHistory::kPathBegin);
           });
  }

  Macsecd::StateValues values_;
  Death death_;
  std::function<void()> died_;
  size_t commits_ = 0;
  bool dead_ = false;
  bool refuses_ = false;
  bool diedWithinTurn_ = false;
};

}  // namespace Lab
