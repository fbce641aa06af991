#pragma once

#include <functional>
#include <utility>

#include "runtime/HashMap.h"
#include "runtime/Homes.h"
#include "runtime/PtrInterface.h"

namespace Vesk {

/// What `follow` does with the reactor of a member that has gone, if nothing else is asked for.
struct LetGo {
  template <class Nested>
  void operator()(Nested&) const {}
};

/// The nested reactors that a reactor on a collection keeps, one for each member, by its key. It
/// calls `followAll` when it begins and when its notifier is another one, and `follow` for each
/// notification of the collection; `owner` is what the nested reactors belong to:
///
///   PortsReactor(Sm& sm, Vesk::Ptr<Status const> status) : Reactor(sm, std::move(status)) {
///     ports_.followAll(owner(), notifier()->portStatus());
///   }
///   void onPortStatus(Lumo::IntfId const& intfId) override {
///     ports_.follow(owner(), notifier()->portStatus(), intfId);
///   }
///   void onPortStatusImmediate() override { ports_.followAll(owner(), notifier()->portStatus()); }
///   auto nested() { return std::tie(ports_); }
///
/// By its `nested()` they go out of service with it (`Reactor::retire`).
template <class Nested, class Key>
class NestedReactors {
 public:
  using Map = HashMap<Nested, Key>;

  Nested* find(Key const& key) const { return map_.find(key); }
  Map const& map() const { return map_; }
  size_t members() const { return map_.members(); }

  /// The member under `key` has come, gone, or given way to another one: makes its reactor, lets it
  /// go or repoints it. `onGone(Nested&)` runs as in `xDel`.
  template <class Owner, class Members, class OnGone = LetGo>
  void follow(Owner& owner, Members const& members, Key const& key, OnGone onGone = {}) {
    if (auto const member = members[key]) {
      memberIs(owner, key, member);
    } else {
      xDel(key, onGone);
    }
  }
  /// The same for all members, and for all reactors whose member isn't there.
  template <class Owner, class Members, class OnGone = LetGo>
  void followAll(Owner& owner, Members const& members, OnGone onGone = {}) {
    for (auto& member : members) memberIs(owner, Key(member.fwkKey()), Ptr(&member));
    for (Nested& nested : map_) {
      if (!members[nested.fwkKey()]) xDel(Key(nested.fwkKey()), onGone);
    }
  }

  /// Points the nested reactor of `key` at the member; makes it, by `create()`, if there is none.
  template <class Member, class Create>
  void xIs(Key const& key, Ptr<Member> const& member, Create create) {
    if (Ptr<Nested> nested = map_[key]) {
      nested->notifierIs(member);
      return;
    }
    map_.insert(create().ptr());
  }
  /// Lets the nested reactor of `key` go. `onGone(Nested&)` runs while it can still be read. One
  /// whose handler is on the stack keeps its owner, who goes on with it.
  template <class OnGone = LetGo>
  void xDel(Key const& key, OnGone onGone = {}) {
    Ptr<Nested> nested = map_.xDel(key);
    if (!nested) return;
    nested->retire();
    std::invoke(onGone, *nested);
  }
  /// Lets all go, with no handler.
  void retireAll() {
    for (Nested& nested : map_) xDel(Key(nested.fwkKey()));
  }
  void hasNotificationActiveIs(bool active) {
    for (Nested& nested : map_) nested.hasNotificationActiveIs(active);
  }

 private:
  template <class Owner, class Member>
  void memberIs(Owner& owner, Key const& key, Ptr<Member> const& member) {
    xIs(key, member, [&] {
      KeyedHomeScope<Key> const scope(key);
      return make<Nested>(owner, member);
    });
  }

  Map map_;
};

}  // namespace Vesk
