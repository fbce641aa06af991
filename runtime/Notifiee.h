#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "runtime/AtHome.h"
#include "runtime/HashMap.h"
#include "runtime/IntfId.h"
#include "runtime/StateMachine.h"

namespace Vesk {

class NotifieeListBase;

/// Which attributes of a class a reactor watches: bit n for the attribute with number n.
using Watch = uint32_t;
/// What no class has: a reactor that isn't filtered is visited for this.
constexpr Watch kEverything = ~Watch{0};

/// Base of all reactors: a node that the notifier's list visits.
class NotifieeBase : public HashMapEntry {
 public:
  ~NotifieeBase() override;

  bool isRegisteredNotifiee() const { return list_ != nullptr; }
  /// The notifier that this reactor was registered with has lost its last reference.
  virtual void onZeroReferences() {}
  /// Whose handlers it calls, if that is a state machine.
  virtual StateMachine* machine() const { return nullptr; }

 protected:
  NotifieeBase() = default;

  /// With a key, only what concerns that interface is told. Not while it is in a list.
  void keyIs(Lumo::IntfId key) { key_ = key; }
  void enter(NotifieeListBase& list, Watch watch);
  void leave();

 private:
  friend class NotifieeListBase;

  // Where visits aren't filtered, keys count for nothing.
  bool isVisitedByKey() const { return watch_ != kEverything && !key_.empty(); }

  NotifieeListBase* list_ = nullptr;
  NotifieeBase* previous_ = nullptr;
  NotifieeBase* next_ = nullptr;
  uint64_t place_ = 0;
  Watch watch_ = 0;
  Lumo::IntfId key_;
};

/// The notifiees of one notifier, in order of attachment: those without a key in one chain, those
/// with a key in a chain for each key. A visit stands on the stack as a cursor that the list knows,
/// so that notifiees may join, leave and die, and the same list be visited again, in the middle of
/// it; a notifiee that joins during a visit isn't called in that visit.
class NotifieeListBase : public AtHome<Home::Part::cold> {
 public:
  /// `watched` belongs to the notifier, who sees there without a look at the list what any notifiee
  /// ever watched: a write that nobody hears of costs one test.
  explicit NotifieeListBase(Watch& watched) : watched_(watched) {}
  ~NotifieeListBase();
  NotifieeListBase(NotifieeListBase const&) = delete;
  NotifieeListBase& operator=(NotifieeListBase const&) = delete;

  bool empty() const { return notifiees_ == 0; }
  size_t notifiees() const { return notifiees_; }

  /// Calls `call(NotifieeBase&)` for each notifiee that watches `attribute`, is not marked for
  /// deletion, and has no key or the key given; with the empty key, for all notifiees. A reference
  /// is held around each call. Doesn't return into a handler whose state machine has ended.
  template <class Call>
  static void doVisit(NotifieeListBase* list, uint8_t attribute, Lumo::IntfId key, Call call) {
    Watch const watch = Watch{1} << attribute;
    if (!list || !(list->watched_ & watch)) return;
    for (Cursor cursor(*list, key, watch); NotifieeBase* notifiee = cursor.next();) {
      if (!(notifiee->watch_ & watch) || notifiee->isMarkedForDeletion()) continue;
      Ptr<NotifieeBase> held(notifiee);
      runHandler(notifiee->machine(), notifiee, [&] { call(*notifiee); });
    }
    RunningHandler::goOnOrLeave();
  }
  /// The same whatever they watch, and marked or not.
  template <class Call>
  static void doVisitAll(NotifieeListBase* list, Call call) {
    if (!list || list->empty()) return;
    Cursor cursor(*list, Lumo::IntfId(), kEverything);
    while (NotifieeBase* notifiee = cursor.next()) {
      Ptr<NotifieeBase> held(notifiee);
      runHandler(notifiee->machine(), notifiee, [&] { call(*notifiee); });
    }
  }

 private:
  friend class NotifieeBase;

  struct Chain {
    NotifieeBase* first = nullptr;
    NotifieeBase* last = nullptr;
  };

  // The notifiees with a key: a chain for each key, in order of the interfaces' numbers, for the
  // visits of one key, and all of them by place for the visits of all. `watch` is what any of them
  // ever watched, so that a visit of an attribute that none of them wants doesn't look at them.
  struct Keyed {
    std::vector<Chain> chains;
    std::map<uint64_t, NotifieeBase*> byPlace;
    Watch watch = 0;
  };

  // One running visit: it merges the notifiees without a key with those of its key, or with all
  // that have one, by order of attachment.
  class Cursor {
   public:
    Cursor(NotifieeListBase& list, Lumo::IntfId key, Watch watch);
    ~Cursor();
    Cursor(Cursor const&) = delete;
    Cursor& operator=(Cursor const&) = delete;
    NotifieeBase* next();

   private:
    friend class NotifieeListBase;
    NotifieeBase* firstOfAllKeys(uint64_t place) const;

    NotifieeListBase* list_;
    Cursor* outer_;
    NotifieeBase* unkeyed_;
    NotifieeBase* keyed_ = nullptr;
    uint64_t end_;
    bool visitsAllKeys_ = false;
  };

  void add(NotifieeBase& notifiee);
  void remove(NotifieeBase& notifiee);
  Chain& chainOf(NotifieeBase const& notifiee);

  Watch& watched_;
  Chain unkeyed_;
  std::unique_ptr<Keyed> keyed_;
  Cursor* cursors_ = nullptr;
  uint64_t nextPlace_ = 1;
  uint32_t notifiees_ = 0;
};

}  // namespace Vesk
