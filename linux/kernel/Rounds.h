#pragma once

#include "runtime/Assert.h"

namespace Linux {

/// Times in which one reading of the kernel serves all who want one: nobody else is expected to
/// change what is read. Outside of them each reading is made anew.
class Rounds {
 public:
  /// Lasts as long as it lives. Rounds may stand in one another.
  class Round {
   public:
    explicit Round(Rounds& rounds) : rounds_(rounds) { ++rounds_.depth_; }
    ~Round() {
      VESK_ASSERT(rounds_.depth_ > 0);
      if (--rounds_.depth_ == 0) rounds_.expire();
    }
    Round(Round const&) = delete;
    Round& operator=(Round const&) = delete;

   private:
    Rounds& rounds_;
  };

  Rounds() = default;
  Rounds(Rounds const&) = delete;
  Rounds& operator=(Rounds const&) = delete;

  /// Whether what was read serves.
  bool isFresh() const { return isFresh_; }
  /// What was read may stand otherwise by now.
  void expire() { isFresh_ = false; }

 protected:
  void wasRead() { isFresh_ = depth_ > 0; }

 private:
  int depth_ = 0;
  bool isFresh_ = false;
};

}  // namespace Linux
