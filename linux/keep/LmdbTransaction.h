#pragma once

#include <lmdb.h>

#include <string>
#include <string_view>

namespace Linux {

/// One transaction of LMDB, which is given up unless it is committed. Its calls return the error of
/// LMDB, 0 for none; after the first error the others do nothing and return it again.
class LmdbTransaction {
 public:
  /// `flags` as of mdb_txn_begin.
  LmdbTransaction(MDB_env* env, unsigned flags)
      : error_(mdb_txn_begin(env, nullptr, flags, &txn_)) {}
  ~LmdbTransaction() {
    if (txn_) mdb_txn_abort(txn_);
  }
  LmdbTransaction(LmdbTransaction const&) = delete;
  LmdbTransaction& operator=(LmdbTransaction const&) = delete;

  int error() const { return error_; }
  MDB_dbi open();
  void put(MDB_dbi values, std::string_view key, std::string_view value);
  /// A key that isn't there is no error.
  void erase(MDB_dbi values, std::string_view key);
  void eraseBelow(MDB_dbi values, std::string const& path);
  void clear(MDB_dbi values);
  /// Calls `take(key, value)` with each entry, in order of the keys.
  template <class Take>
  int readAll(MDB_dbi values, Take take) {
    MDB_cursor* cursor = nullptr;
    if (error_ == 0) error_ = mdb_cursor_open(txn_, values, &cursor);
    MDB_val key, value;
    for (auto step = MDB_FIRST; error_ == 0; step = MDB_NEXT) {
      error_ = mdb_cursor_get(cursor, &key, &value, step);
      if (error_ == 0) take(text(key), text(value));
    }
    if (cursor) mdb_cursor_close(cursor);
    if (error_ == MDB_NOTFOUND) error_ = 0;
    return error_;
  }
  int commit();

 private:
  static std::string_view text(MDB_val const& value) {
    return {static_cast<char const*>(value.mv_data), value.mv_size};
  }

  MDB_txn* txn_ = nullptr;
  int error_;
};

}  // namespace Linux
