#include "runtime/Notifiee.h"

#include "runtime/Assert.h"
#include "runtime/World.h"

namespace Vesk {

NotifieeBase::~NotifieeBase() { leave(); }

void NotifieeBase::enter(NotifieeListBase& list, Watch watch) {
  leave();
  watch_ = Detail::switches->visitsAreFiltered ? watch : kEverything;
  if (watch_ == 0) return;
  list.add(*this);
}

void NotifieeBase::leave() {
  if (list_) list_->remove(*this);
}

NotifieeListBase::~NotifieeListBase() {
  for (Cursor* c = cursors_; c; c = c->outer_) {
    c->unkeyed_ = c->keyed_ = nullptr;
    c->list_ = nullptr;
  }
  auto release = [](Chain& chain) {
    for (NotifieeBase* n = chain.first; n;) {
      NotifieeBase* const after = n->next_;
      n->list_ = nullptr;
      n->previous_ = n->next_ = nullptr;
      n = after;
    }
  };
  release(unkeyed_);
  if (!keyed_) return;
  for (Chain& chain : keyed_->chains) release(chain);
}

NotifieeListBase::Chain& NotifieeListBase::chainOf(NotifieeBase const& notifiee) {
  if (!notifiee.isVisitedByKey()) return unkeyed_;
  if (!keyed_) keyed_ = std::make_unique<Keyed>();
  size_t const number = notifiee.key_.index();
  if (number >= keyed_->chains.size()) keyed_->chains.resize(number + 1);
  return keyed_->chains[number];
}

void NotifieeListBase::add(NotifieeBase& notifiee) {
  VESK_ASSERT(!notifiee.list_);
  Chain& chain = chainOf(notifiee);
  notifiee.list_ = this;
  notifiee.place_ = nextPlace_++;
  notifiee.previous_ = chain.last;
  notifiee.next_ = nullptr;
  (chain.last ? chain.last->next_ : chain.first) = &notifiee;
  chain.last = &notifiee;
  ++notifiees_;
  watched_ |= notifiee.watch_;
  if (!notifiee.isVisitedByKey()) return;
  keyed_->byPlace.emplace(notifiee.place_, &notifiee);
  keyed_->watch |= notifiee.watch_;
}

void NotifieeListBase::remove(NotifieeBase& notifiee) {
  VESK_ASSERT(notifiee.list_ == this && notifiees_ > 0);
  for (Cursor* c = cursors_; c; c = c->outer_) {
    if (c->unkeyed_ == &notifiee) c->unkeyed_ = notifiee.next_;
    if (c->keyed_ == &notifiee) {
      c->keyed_ = c->visitsAllKeys_ ? c->firstOfAllKeys(notifiee.place_ + 1) : notifiee.next_;
    }
  }
  if (notifiee.isVisitedByKey()) keyed_->byPlace.erase(notifiee.place_);
  Chain& chain = chainOf(notifiee);
  (notifiee.previous_ ? notifiee.previous_->next_ : chain.first) = notifiee.next_;
  (notifiee.next_ ? notifiee.next_->previous_ : chain.last) = notifiee.previous_;
  notifiee.list_ = nullptr;
  notifiee.previous_ = notifiee.next_ = nullptr;
  --notifiees_;
}

NotifieeListBase::Cursor::Cursor(NotifieeListBase& list, Lumo::IntfId key, Watch watch)
    : list_(&list), outer_(list.cursors_), unkeyed_(list.unkeyed_.first), end_(list.nextPlace_) {
  list.cursors_ = this;
  if (!list.keyed_ || !(list.keyed_->watch & watch)) return;
  visitsAllKeys_ = key.empty();
  if (visitsAllKeys_) {
    keyed_ = firstOfAllKeys(0);
  } else if (key.index() < list.keyed_->chains.size()) {
    keyed_ = list.keyed_->chains[key.index()].first;
  }
}

NotifieeListBase::Cursor::~Cursor() {
  if (!list_) return;
  VESK_ASSERT(list_->cursors_ == this);
  list_->cursors_ = outer_;
}

NotifieeBase* NotifieeListBase::Cursor::firstOfAllKeys(uint64_t place) const {
  auto const at = list_->keyed_->byPlace.lower_bound(place);
  return at == list_->keyed_->byPlace.end() ? nullptr : at->second;
}

NotifieeBase* NotifieeListBase::Cursor::next() {
  bool const fromKeyed = keyed_ && (!unkeyed_ || keyed_->place_ < unkeyed_->place_);
  NotifieeBase* const notifiee = fromKeyed ? keyed_ : unkeyed_;
  if (!notifiee || notifiee->place_ >= end_) return nullptr;
  if (!fromKeyed) {
    unkeyed_ = notifiee->next_;
  } else {
    keyed_ = visitsAllKeys_ ? firstOfAllKeys(notifiee->place_ + 1) : notifiee->next_;
  }
  return notifiee;
}

}  // namespace Vesk
