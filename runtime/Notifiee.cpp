#include "runtime/Notifiee.h"

#include <algorithm>

namespace Vesk {

bool NotifieeListBase::visitsAreFiltered = true;

NotifieeBase::~NotifieeBase() { leave(); }

void NotifieeBase::enter(NotifieeListBase& list, Watch watch, Lumo::IntfId key) {
  leave();
  bool const filtered = NotifieeListBase::visitsAreFiltered;
  watch_ = filtered ? watch : ~Watch{0};
  key_ = filtered ? key : Lumo::IntfId();
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
  for (auto& [key, chain] : *keyed_) release(chain);
}

NotifieeListBase::Chain& NotifieeListBase::chainOf(NotifieeBase const& notifiee) {
  if (notifiee.key_.empty()) return unkeyed_;
  if (!keyed_) keyed_ = std::make_unique<std::unordered_map<uint32_t, Chain>>();
  return (*keyed_)[notifiee.key_.index()];
}

void NotifieeListBase::add(NotifieeBase& notifiee) {
  Chain& chain = chainOf(notifiee);
  notifiee.list_ = this;
  notifiee.place_ = nextPlace_++;
  notifiee.previous_ = chain.last;
  notifiee.next_ = nullptr;
  (chain.last ? chain.last->next_ : chain.first) = &notifiee;
  chain.last = &notifiee;
  ++notifiees_;
}

void NotifieeListBase::remove(NotifieeBase& notifiee) {
  for (Cursor* c = cursors_; c; c = c->outer_) {
    if (c->unkeyed_ == &notifiee) c->unkeyed_ = notifiee.next_;
    if (c->keyed_ == &notifiee) c->keyed_ = notifiee.next_;
  }
  Chain& chain = chainOf(notifiee);
  (notifiee.previous_ ? notifiee.previous_->next_ : chain.first) = notifiee.next_;
  (notifiee.next_ ? notifiee.next_->previous_ : chain.last) = notifiee.previous_;
  notifiee.list_ = nullptr;
  notifiee.previous_ = notifiee.next_ = nullptr;
  --notifiees_;
}

// In the order of their first notifiees, the last key first, so that the next one is at the back.
std::vector<uint32_t> NotifieeListBase::keysFromLast() const {
  std::vector<uint32_t> keys;
  for (auto const& [key, chain] : *keyed_) {
    if (chain.first) keys.push_back(key);
  }
  std::sort(keys.begin(), keys.end(), [this](uint32_t a, uint32_t b) {
    return keyed_->at(a).first->place_ > keyed_->at(b).first->place_;
  });
  return keys;
}

NotifieeListBase::Cursor::Cursor(NotifieeListBase& list, Lumo::IntfId key)
    : list_(&list), outer_(list.cursors_), unkeyed_(list.unkeyed_.first), end_(list.nextPlace_) {
  list.cursors_ = this;
  if (!list.keyed_) return;
  if (key.empty()) {
    furtherKeys_ = list.keysFromLast();
    return;
  }
  auto chain = list.keyed_->find(key.index());
  if (chain != list.keyed_->end()) keyed_ = chain->second.first;
}

NotifieeListBase::Cursor::~Cursor() {
  if (list_) list_->cursors_ = outer_;
}

bool NotifieeListBase::Cursor::goesOnToFurtherKey() {
  if (!list_ || furtherKeys_.empty()) return false;
  keyed_ = (*list_->keyed_)[furtherKeys_.back()].first;
  furtherKeys_.pop_back();
  return true;
}

NotifieeBase* NotifieeListBase::Cursor::next() {
  do {
    bool const fromKeyed = keyed_ && (!unkeyed_ || keyed_->place_ < unkeyed_->place_);
    NotifieeBase*& place = fromKeyed ? keyed_ : unkeyed_;
    NotifieeBase* const notifiee = place;
    if (notifiee && notifiee->place_ < end_) {
      place = notifiee->next_;
      return notifiee;
    }
    unkeyed_ = keyed_ = nullptr;
  } while (goesOnToFurtherKey());
  return nullptr;
}

}  // namespace Vesk
