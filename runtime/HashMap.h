#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <utility>

#include "runtime/Assert.h"
#include "runtime/Homes.h"
#include "runtime/PtrInterface.h"

namespace Vesk {

/// The hash of a key of a collection, by the key's own `hash()`.
template <class Key>
uint32_t hashOf(Key const& key) {
  return key.hash();
}

inline uint32_t reversedBits(uint32_t w) {
  w = (w >> 1 & 0x55555555) | (w & 0x55555555) << 1;
  w = (w >> 2 & 0x33333333) | (w & 0x33333333) << 2;
  w = (w >> 4 & 0x0f0f0f0f) | (w & 0x0f0f0f0f) << 4;
  return __builtin_bswap32(w);
}

/// What lies inside an object that can be a member of one hash map.
class HashMapEntry : public PtrInterface {
 protected:
  HashMapEntry() = default;

 private:
  template <class, class, class>
  friend class HashMap;
  template <class, class>
  friend class ValueMap;

  // In front, where it fills a gap.
  uint32_t fwkHmOrder_ = 0;
  HashMapEntry* fwkHmNext_ = nullptr;
  void const* fwkHmMap_ = nullptr;
};

/// A chained hash table whose members are the entries themselves; an entry tells its key by
/// `fwkKey()`. The bucket of a key is the top bits of its bit-reversed hash and each chain is kept
/// in the order of (bit-reversed hash, key), so that a walk gives one order for given contents,
/// whatever the size of the table and its history.
template <class Entry, class Key, class Value = Ptr<Entry>>
class HashMap {
 public:
  HashMap() = default;
  ~HashMap() {
    clear();
    releaseTable();
  }
  HashMap(HashMap const&) = delete;
  HashMap& operator=(HashMap const&) = delete;

  size_t members() const { return members_; }
  bool empty() const { return members_ == 0; }

  /// The member, or null. Never creates one.
  Value operator[](Key const& key) const { return Value(find(key)); }
  Entry* find(Key const& key) const {
    if (members_ == 0) return nullptr;
    if (log2Buckets_ == 0) return first(only_)->fwkKey() == key ? first(only_) : nullptr;
    uint32_t const order = reversedBits(hashOf(key));
    for (Entry* e = first(table()[bucketOf(order)]); e && e->fwkHmOrder_ <= order; e = next(e)) {
      if (e->fwkHmOrder_ == order && e->fwkKey() == key) return e;
    }
    return nullptr;
  }

  /// Adds a member whose key isn't in the map.
  void insert(Entry* entry) {
    VESK_ASSERT_NAMED(!entry->fwkHmMap_, "the entry is in no map");
    grow();
    entry->referenceInc();
    entry->fwkHmOrder_ = reversedBits(hashOf(entry->fwkKey()));
    entry->fwkHmMap_ = this;
    HashMapEntry** place = &table()[bucketOf(entry->fwkHmOrder_)];
    while (*place && before(static_cast<Entry*>(*place), entry)) place = &(*place)->fwkHmNext_;
    VESK_ASSERT_NAMED(!*place || before(entry, static_cast<Entry*>(*place)), "the key is new");
    entry->fwkHmNext_ = *place;
    *place = entry;
    ++members_;
  }
  /// Takes a member out and returns it; null if there was none. Any walk stays valid.
  Ptr<Entry> xDel(Key const& key) {
    Entry* entry = find(key);
    if (!entry) return nullptr;
    HashMapEntry** place = &table()[bucketOf(entry->fwkHmOrder_)];
    while (*place != entry) place = &(*place)->fwkHmNext_;
    *place = entry->fwkHmNext_;
    VESK_DEBUG_ASSERT(entry->fwkHmMap_ == this);
    entry->fwkHmNext_ = nullptr;
    entry->fwkHmMap_ = nullptr;
    --members_;
    return Ptr<Entry>::adopt(entry);
  }
  /// Takes all out, in their order; nobody is to change the map meanwhile.
  template <class Use>
  void takeAll(Use use) {
    for (uint32_t bucket = 0; members_ > 0; ++bucket) {
      while (HashMapEntry* const entry = table()[bucket]) {
        table()[bucket] = std::exchange(entry->fwkHmNext_, nullptr);
        entry->fwkHmMap_ = nullptr;
        --members_;
        use(Ptr<Entry>::adopt(static_cast<Entry*>(entry)));
      }
    }
  }
  /// Lets all go; members that live on elsewhere have no parent then.
  void clear() {
    while (Entry* e = firstFrom(0)) {
      Ptr<Entry> const gone = xDel(Key(e->fwkKey()));
      if constexpr (requires { e->parentIs(nullptr); }) gone->parentIs(nullptr);
    }
  }

  /// Stands on a member, which it holds, and finds the next one by its position in the order: any
  /// deletion, through the iterator, by key or by a handler further down, leaves the walk valid.
  class Iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = Entry;
    using difference_type = ptrdiff_t;
    using pointer = Entry*;
    using reference = Entry&;

    Iterator() = default;
    explicit Iterator(HashMap const& map) : map_(&map), current_(map.firstFrom(0)) {}

    explicit operator bool() const { return static_cast<bool>(current_); }
    Entry* operator->() const { return current_.ptr(); }
    Entry& operator*() const { return *current_; }
    Ptr<Entry> ptr() const { return current_; }
    auto key() const { return current_->fwkKey(); }
    Iterator& operator++() {
      current_ = Ptr<Entry>(map_->successor(current_.ptr()));
      return *this;
    }
    void operator++(int) { ++*this; }
    friend bool operator==(Iterator const& i, std::default_sentinel_t) { return !i; }

   private:
    HashMap const* map_ = nullptr;
    Ptr<Entry> current_;
  };
  using IteratorConst = Iterator;

  Iterator iterator() const { return Iterator(*this); }
  Iterator begin() const { return Iterator(*this); }
  std::default_sentinel_t end() const { return {}; }
  /// Takes the member under the iterator out; null if it has left already.
  Ptr<Entry> xDel(Iterator const& i) {
    return i->fwkHmMap_ == this ? xDel(Key(i->fwkKey())) : Ptr<Entry>();
  }

 private:
  static Entry* first(HashMapEntry* e) { return static_cast<Entry*>(e); }
  static Entry* next(Entry* e) { return static_cast<Entry*>(e->fwkHmNext_); }
  static bool before(Entry* a, Entry* b) {
    if (a->fwkHmOrder_ != b->fwkHmOrder_) return a->fwkHmOrder_ < b->fwkHmOrder_;
    return a->fwkKey() < b->fwkKey();
  }
  uint32_t buckets() const { return 1u << log2Buckets_; }
  uint32_t bucketOf(uint32_t order) const {
    return log2Buckets_ == 0 ? 0 : order >> (32 - log2Buckets_);
  }
  Entry* firstFrom(uint32_t bucket) const {
    if (members_ == 0) return nullptr;
    for (; bucket < buckets(); ++bucket) {
      if (table()[bucket]) return first(table()[bucket]);
    }
    return nullptr;
  }
  Entry* successor(Entry* e) const {
    if (e->fwkHmMap_ != this) return successorOfRemoved(e);
    Entry* n = next(e);
    return n ? n : firstFrom(bucketOf(e->fwkHmOrder_) + 1);
  }
  Entry* successorOfRemoved(Entry* removed) const {
    if (members_ == 0) return nullptr;
    uint32_t const bucket = bucketOf(removed->fwkHmOrder_);
    for (Entry* e = first(table()[bucket]); e; e = next(e)) {
      if (before(removed, e)) return e;
    }
    return firstFrom(bucket + 1);
  }
  // The walk gives the members in their order, so that each goes to the end of its new chain.
  void grow() {
    if (members_ < buckets()) return;
    uint8_t const log2 = log2Buckets_ + 1;
    HashMapEntry** const grown = newTable(log2);
    HashMapEntry** place = nullptr;
    uint32_t lastBucket = 0;
    for (uint32_t b = 0; b < buckets(); ++b) {
      for (HashMapEntry* e = table()[b]; e;) {
        HashMapEntry* const after = e->fwkHmNext_;
        uint32_t const bucket = e->fwkHmOrder_ >> (32 - log2);
        if (!place || bucket != lastBucket) place = &grown[bucket];
        *place = e;
        e->fwkHmNext_ = nullptr;
        place = &e->fwkHmNext_;
        lastBucket = bucket;
        e = after;
      }
    }
    releaseTable();
    many_ = grown;
    log2Buckets_ = log2;
  }
  // Beside its map, so that a look into it goes nowhere else.
  HashMapEntry** newTable(uint8_t log2) const {
    BesideScope const beside(this);
    size_t const buckets = size_t{1} << log2;
    auto* const table =
        static_cast<HashMapEntry**>(Home::allocate(octets(buckets), Home::partAt(this)));
    std::uninitialized_value_construct_n(table, buckets);
    return table;
  }
  void releaseTable() {
    if (log2Buckets_ > 0) Home::release(many_, octets(buckets()));
  }
  static constexpr size_t octets(size_t buckets) { return buckets * sizeof(void*); }

  HashMapEntry** table() { return log2Buckets_ == 0 ? &only_ : many_; }
  HashMapEntry* const* table() const { return log2Buckets_ == 0 ? &only_ : many_; }

  // The chains: a single one lies here.
  union {
    HashMapEntry* only_ = nullptr;
    HashMapEntry** many_;
  };
  uint32_t members_ = 0;
  uint8_t log2Buckets_ = 0;
};

}  // namespace Vesk
