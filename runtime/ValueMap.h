#pragma once

#include <utility>

#include "runtime/HashMap.h"

namespace Vesk {

/// A collection of plain values under keys. Members that were taken out are kept and used again, so
/// that a table that is emptied and filled all the time allocates nothing.
template <class Key, class T>
class ValueMap {
 public:
  class Entry final : public HashMapEntry {
   public:
    Entry(Key const& key, T const& value) : key_(key), value_(value) {}
    Key const& fwkKey() const { return key_; }
    T const& value() const { return value_; }

   private:
    friend class ValueMap;
    Key key_;
    T value_;
  };
  using Map = HashMap<Entry, Key>;
  using Iterator = typename Map::Iterator;
  using IteratorConst = Iterator;

  ValueMap() = default;
  ~ValueMap() {
    while (takeSpare()) {
    }
  }

  size_t members() const { return map_.members(); }
  bool empty() const { return map_.empty(); }
  /// The value, or null.
  T const* operator[](Key const& key) const {
    Entry* entry = map_.find(key);
    return entry ? &entry->value_ : nullptr;
  }
  /// Puts the value in; false if an equal one stands there already.
  bool xIs(Key const& key, T const& value) {
    if (Entry* entry = map_.find(key)) {
      if (entry->value_ == value) return false;
      entry->value_ = value;
      return true;
    }
    map_.insert(newEntry(key, value).ptr());
    return true;
  }
  /// Takes the value out; false if there was none.
  bool xDel(Key const& key) {
    Ptr<Entry> entry = map_.xDel(key);
    if (!entry) return false;
    if (entry->references() == 1) keepSpare(std::move(entry));
    return true;
  }
  /// Takes all values out.
  void clear() {
    if (empty()) return;
    map_.takeAll([this](Ptr<Entry> entry) {
      if (entry->references() == 1) keepSpare(std::move(entry));
    });
  }
  Iterator iterator() const { return map_.iterator(); }
  Iterator begin() const { return map_.begin(); }
  std::default_sentinel_t end() const { return {}; }

 private:
  Ptr<Entry> newEntry(Key const& key, T const& value) {
    Ptr<Entry> entry = takeSpare();
    if (!entry) return make<Entry>(key, value);
    entry->key_ = key;
    entry->value_ = value;
    return entry;
  }
  // A spare gives up its texts at once and keeps only its memory.
  void keepSpare(Ptr<Entry> entry) {
    entry->key_ = Key();
    entry->value_ = T();
    entry->referenceInc();
    entry->fwkHmNext_ = spare_;
    spare_ = entry.ptr();
  }
  Ptr<Entry> takeSpare() {
    if (!spare_) return nullptr;
    Entry* entry = spare_;
    spare_ = static_cast<Entry*>(entry->fwkHmNext_);
    entry->fwkHmNext_ = nullptr;
    return Ptr<Entry>::adopt(entry);
  }

  Map map_;
  Entry* spare_ = nullptr;
};

}  // namespace Vesk
