#include "runtime/StateMachine.h"

namespace Vesk {

void RunningHandler::endAll(StateMachine const& machine) {
  for (RunningHandler* r = innermost_; r; r = r->outer_) {
    if (r->machine_ == &machine) r->hasEnded_ = true;
  }
}

RunningHandler* RunningHandler::outermostOf(StateMachine const& machine) {
  RunningHandler* outermost = nullptr;
  for (RunningHandler* r = innermost_; r; r = r->outer_) {
    if (r->machine_ == &machine) outermost = r;
  }
  return outermost;
}

void RunningHandler::leave() { throw HandlerEnded(); }

// Nothing leaves `end`, which may run in a destructor: whose handler called it learns behind it
// that he has ended as well.
void StateMachine::endNow() {
  if (isEnding_) return;
  isEnding_ = true;
  RunningHandler::endAll(*this);
  RunningHandler ending(nullptr);
  end();
}

void StateMachine::zeroReferencesIs() {
  endNow();
  if (RunningHandler* outermost = RunningHandler::outermostOf(*this)) {
    VESK_ASSERT(!outermost->last_);
    outermost->last_ = Ptr<StateMachine>::adopt(this);
  } else {
    HashMapEntry::zeroReferencesIs();
  }
}

}  // namespace Vesk
