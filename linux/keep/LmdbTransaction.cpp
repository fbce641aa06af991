#include "linux/keep/LmdbTransaction.h"

#include <utility>

namespace Linux {

namespace {

MDB_val valueOf(std::string_view text) { return {text.size(), const_cast<char*>(text.data())}; }

}  // namespace

MDB_dbi LmdbTransaction::open() {
  MDB_dbi values = 0;
  if (error_ == 0) error_ = mdb_dbi_open(txn_, nullptr, 0, &values);
  return values;
}

void LmdbTransaction::put(MDB_dbi values, std::string_view key, std::string_view value) {
  MDB_val k = valueOf(key), v = valueOf(value);
  if (error_ == 0) error_ = mdb_put(txn_, values, &k, &v, 0);
}

void LmdbTransaction::erase(MDB_dbi values, std::string_view key) {
  MDB_val k = valueOf(key);
  if (error_ == 0) error_ = mdb_del(txn_, values, &k, nullptr);
  if (error_ == MDB_NOTFOUND) error_ = 0;
}

void LmdbTransaction::eraseBelow(MDB_dbi values, std::string const& path) {
  erase(values, path);
  std::string const below = path + '/';
  MDB_cursor* cursor = nullptr;
  if (error_ == 0) error_ = mdb_cursor_open(txn_, values, &cursor);
  while (error_ == 0) {
    MDB_val key = valueOf(below), value;
    error_ = mdb_cursor_get(cursor, &key, &value, MDB_SET_RANGE);
    if (error_ == 0 && !text(key).starts_with(below)) break;
    if (error_ == 0) error_ = mdb_cursor_del(cursor, 0);
  }
  if (cursor) mdb_cursor_close(cursor);
  if (error_ == MDB_NOTFOUND) error_ = 0;
}

void LmdbTransaction::clear(MDB_dbi values) {
  if (error_ == 0) error_ = mdb_drop(txn_, values, 0);
}

int LmdbTransaction::commit() {
  if (error_ == 0) error_ = mdb_txn_commit(std::exchange(txn_, nullptr));
  return error_;
}

}  // namespace Linux
