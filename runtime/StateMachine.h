#pragma once

#include "runtime/Assert.h"
#include "runtime/HashMap.h"

namespace Vesk {

class StateMachine;

/// Unwinds a handler whose state machine has ended, up to where the runtime called it. Nobody else
/// throws or catches it.
struct HandlerEnded {};

/// A call of a handler that is on the stack. All of them stand in one chain, the innermost first.
///
/// A state machine may end in the middle of a handler of its own: somebody who is told of what the
/// handler writes takes a link down. Its memory stays until that handler has left the stack, and
/// the handler isn't continued: the write that told doesn't return to it.
class RunningHandler {
 public:
  /// `machine` is whose handler it is; null for who isn't a state machine. What the handler makes
  /// lives where `object` does.
  explicit RunningHandler(StateMachine* machine, void const* object = nullptr)
      : machine_(machine), outer_(innermost_), formerPresent_(Home::present_) {
    innermost_ = this;
    Home::present_ = object;
  }
  ~RunningHandler() {
    VESK_DEBUG_ASSERT(innermost_ == this);
    innermost_ = outer_;
    Home::present_ = formerPresent_;
  }
  RunningHandler(RunningHandler const&) = delete;
  RunningHandler& operator=(RunningHandler const&) = delete;

  bool hasEnded() const { return hasEnded_; }
  /// Stands behind all that may run handlers of others: leaves the innermost handler if its state
  /// machine has ended meanwhile.
  static void goOnOrLeave() {
    if (innermost_ && innermost_->hasEnded_) [[unlikely]]
      leave();
  }

 private:
  friend class StateMachine;

  static void endAll(StateMachine const& machine);
  static RunningHandler* outermostOf(StateMachine const& machine);
  [[noreturn]] static void leave();

  inline static RunningHandler* innermost_ = nullptr;

  StateMachine* machine_;
  RunningHandler* outer_;
  void const* formerPresent_;
  bool hasEnded_ = false;
  // What the outermost handler of an ended state machine takes along when it leaves.
  Ptr<StateMachine> last_;
};

/// Calls a handler of `machine`, which may be null, as the runtime does: whatever it sets off, the
/// state machine stays in memory until it returns.
template <class Call>
void runHandler(StateMachine* machine, void const* object, Call&& call) {
  RunningHandler running(machine, object);
  try {
    call();
  } catch (HandlerEnded const&) {
    VESK_ASSERT(running.hasEnded());
  }
}

template <class Call>
void runHandler(StateMachine* machine, Call&& call) {
  runHandler(machine, machine, std::forward<Call>(call));
}

/// Calls out of a handler into a sink of the world, which may do anything.
template <class Call>
void callOut(Call&& call) {
  {
    RunningHandler outside(nullptr);
    call();
  }
  RunningHandler::goOnOrLeave();
}

/// Base of the state machines. One ends when its owner or its last reference lets it go, also in
/// the middle of its own handlers: `end` runs at once, and the destructor when none of them is on
/// the stack any more.
class StateMachine : public HashMapEntry {
 public:
  /// True from the moment that it begins to end.
  bool isEnding() const { return isEnding_; }
  /// Ends it, once. Who holds a reference keeps what it was.
  void endNow();
  void zeroReferencesIs() final;

 protected:
  StateMachine() = default;
  /// The class's clean-up with all reactors live; then the reactors go out of service
  /// (`endReactors`) and the children are let go.
  virtual void end() = 0;

 private:
  bool isEnding_ = false;
};

/// Asks for the constructor of a state machine that leaves `handleInitialized` to its owner, who
/// enters the child first: it can be ended while it takes up what it finds.
struct Unstarted {};

}  // namespace Vesk
