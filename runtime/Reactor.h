#pragma once

#include <concepts>
#include <cstdint>
#include <tuple>
#include <type_traits>
#include <utility>

#include "runtime/Entity.h"
#include "runtime/Notifiee.h"
#include "runtime/PtrInterface.h"

namespace Vesk {

// A notifiee class `N` has one virtual handler for each attribute, and lists them in order of the
// attributes for whatever class `R` derives from it:
//
//   template <class R, class V> static constexpr void handlers(V&& v) {
//     v.value(kKey, &R::onKey);
//     v.template collection<Lumo::IntfId>(kCpStatus, &R::onCpStatus, &R::onCpStatusImmediate);
//   }
//
// Writes name an attribute by its number alone, and find its handler here (`runtime/Attributes.h`).

namespace Detail {

// Works out, at compile time, which handlers `R` overrides: a pointer to a handler that it inherits
// is of the type of a pointer to the notifiee class's own.
template <class N>
struct Overrides {
  Watch watch = 0;
  uint8_t attributes = 0;

  template <class A>
  constexpr void value(uint8_t number, void (A::*)()) {
    row(number, !std::is_same_v<A, N>);
  }
  template <class K, class A, class B>
  constexpr void collection(uint8_t number, void (A::*)(K const&), void (B::*)()) {
    row(number, !std::is_same_v<A, N> || !std::is_same_v<B, N>);
  }
  constexpr void row(uint8_t number, bool overridden) {
    if (overridden) watch |= Watch{1} << number;
    ++attributes;
  }
};

// Calls the handlers of the watched attributes one after the other, as long as the reactor isn't
// marked for deletion by one of them.
template <class N>
struct CatchUp {
  N& notifiee;
  Watch watch;

  void value(uint8_t number, void (N::*on)()) { row(number, on); }
  template <class K>
  void collection(uint8_t number, void (N::*)(K const&), void (N::*onImmediate)()) {
    row(number, onImmediate);
  }
  void row(uint8_t number, void (N::*on)()) {
    if (!(watch >> number & 1) || notifiee.isMarkedForDeletion()) return;
    runHandler(notifiee.machine(), &notifiee, [&] { (notifiee.*on)(); });
  }
};

}  // namespace Detail

/// A reactor on `X` (const for a view) that belongs to an `Owner`. `Self`, the class that derives
/// from it, overrides the handlers that it wants; it enters the notifier's list for these alone.
template <class X, class Owner, class Self>
class Reactor
    : public std::conditional_t<std::is_const_v<X>, typename std::remove_const_t<X>::NotifieeConst,
                                typename std::remove_const_t<X>::Notifiee> {
 public:
  using Handlers = typename std::remove_const_t<X>::NotifieeConst;

  /// Attaches without running any handler. With a key, only what concerns that interface is told.
  Reactor(Owner& owner, Ptr<X> notifier, Lumo::IntfId key = Lumo::IntfId())
      : owner_(&owner), notifier_(std::move(notifier)) {
    this->keyIs(key);
    isRegisteredNotifieeIs(true);
  }
  /// Leaves the list before the reference to the notifier goes.
  ~Reactor() override { this->leave(); }

  Ptr<X> const& notifier() const { return notifier_; }
  /// Watches another notifier: runs the handlers of all watched attributes, in order. The present
  /// notifier changes nothing.
  void notifierIs(Ptr<X> notifier) {
    if (notifier == notifier_) return;
    Ptr<Reactor> held(this);
    isRegisteredNotifieeIs(false);
    Ptr<X> const former = std::exchange(notifier_, std::move(notifier));
    isRegisteredNotifieeIs(true);
    if (notifier_ && !this->isMarkedForDeletion()) {
      Detail::CatchUp<Handlers> catchUp{*this, watched()};
      Handlers::template handlers<Handlers>(catchUp);
    }
    this->hasNotificationActiveIs(true);
    RunningHandler::goOnOrLeave();
  }
  void isRegisteredNotifieeIs(bool on) {
    if (!on || !notifier_) {
      this->leave();
    } else if (!this->isRegisteredNotifiee()) {
      auto& notifier = const_cast<std::remove_const_t<X>&>(*notifier_);
      this->enter(notifier.notifieeList(), watched());
    }
  }

  Owner& owner() const { return *owner_; }
  StateMachine* machine() const override {
    if constexpr (std::is_base_of_v<StateMachine, Owner>) return owner_;
    if constexpr (std::is_base_of_v<NotifieeBase, Owner>) return owner_->machine();
    return nullptr;
  }
  void hasNotificationActiveIs(bool active) override {
    Handlers::hasNotificationActiveIs(active);
    forNested([active](auto& nested) { nested.hasNotificationActiveIs(active); });
  }
  /// Takes the reactor out of service, and those that its class names in `nested()`: no handler of
  /// it runs any more.
  void retire() {
    forNested([](auto& nested) { nested.retireAll(); });
    this->isMarkedForDeletionIs(true);
    isRegisteredNotifieeIs(false);
  }
  void ownerDel() { owner_ = nullptr; }

  /// Which attributes a reactor of this class is called for.
  static constexpr Watch watched() {
    constexpr Detail::Overrides<Handlers> overrides = [] {
      Detail::Overrides<Handlers> found;
      Handlers::template handlers<Self>(found);
      return found;
    }();
    static_assert(overrides.attributes <= 32, "a class has at most 32 attributes to watch");
    static_assert(overrides.watch != kEverything, "a reactor leaves at least one attribute out");
    return overrides.watch;
  }

 private:
  template <class Call>
  void forNested(Call call) {
    if constexpr (requires(Self & self) { self.nested(); }) {
      std::apply([&](auto&... nested) { (call(nested), ...); }, static_cast<Self&>(*this).nested());
    }
  }

  Owner* owner_;
  Ptr<X> notifier_;
};

/// Takes a state machine's reactor out of service and lets it go.
template <class R>
void retire(Ptr<R>& reactor) {
  if (!reactor) return;
  reactor->retire();
  reactor->ownerDel();
  reactor = nullptr;
}

/// Takes the reactors of a state machine that ends out of service, in the order given; nulls are
/// skipped. They go with the state machine: a handler of theirs may be on the stack.
template <class... R>
void endReactors(Ptr<R> const&... reactors) {
  ((reactors ? (reactors->retire(), reactors->ownerDel()) : void()), ...);
}

/// Passes the notification flag on to reactors and children, in the order given; nulls are skipped.
template <class... T>
void passNotificationActive(bool active, Ptr<T> const&... owned) {
  ((owned ? owned->hasNotificationActiveIs(active) : void()), ...);
}

/// Allocates and constructs a state machine or an entity and switches its notification on.
template <class T, class... Args>
Ptr<T> makeActive(Args&&... args) {
  Ptr<T> made = make<T>(std::forward<Args>(args)...);
  if (!made) throwRangeException("null ValidPtr");
  made->hasNotificationActiveIs(true);
  return made;
}

/// Lets an owned child go: its notification is switched off first, then its destructor runs.
template <class T>
void childDel(Ptr<T>& child) {
  if (!child) return;
  Ptr<T> going;
  std::swap(going, child);
  going->hasNotificationActiveIs(false);
}
/// The same for a state machine, which ends. It stays in its place until its clean-up is done, so
/// that nobody who is told of that puts another there.
template <std::derived_from<StateMachine> T>
void childDel(Ptr<T>& child) {
  if (!child || child->isEnding()) return;
  {
    Ptr<T> const going = child;
    going->hasNotificationActiveIs(false);
    going->endNow();
    child = nullptr;
  }
  RunningHandler::goOnOrLeave();
}
template <std::derived_from<StateMachine> T, class Key>
void childDel(HashMap<T, Key>& children, Key const& key) {
  {
    Ptr<T> const going = children[key];
    if (!going || going->isEnding()) return;
    going->hasNotificationActiveIs(false);
    going->endNow();
    children.xDel(going->fwkKey());
  }
  RunningHandler::goOnOrLeave();
}

/// Starts a child that has been entered, and that nobody but its owner holds: what it sets off may
/// end it.
template <class T>
void startChild(T& child) {
  VESK_ASSERT(!child.isEnding());
  runHandler(&child, [&] {
    child.handleInitialized();
    child.hasNotificationActiveIs(true);
  });
  RunningHandler::goOnOrLeave();
}

/// Enters an owned child that is `Unstarted`, and starts it. Null if it has ended by then.
template <class T>
Ptr<T> childIs(Ptr<T>& child, Ptr<T> made) {
  child = std::move(made);
  startChild(*child);
  return child;
}
template <class T, class Key>
Ptr<T> childIs(HashMap<T, Key>& children, Ptr<T> made) {
  T& child = *made;
  Key const key(child.fwkKey());
  children.insert(&child);
  made = nullptr;
  startChild(child);
  return children[key];
}

}  // namespace Vesk
