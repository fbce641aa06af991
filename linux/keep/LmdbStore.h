#pragma once

#include <lmdb.h>

#include <memory>
#include <string>
#include <vector>

#include "host/state/StateStore.h"
#include "linux/process/FileLock.h"
#include "linux/process/Limits.h"

namespace Linux {

/// The status tree in an LMDB file. What is committed outlives the process however that ends, a
/// kill in mid-commit too; it isn't forced out to a disk, so the place for it is a file system in
/// memory, as /run is.
class LmdbStore final : public Macsecd::StateStore {
 public:
  /// Another one means that the values can't be read as those of today.
  static constexpr char const* kLayout = "1";

  /// Opens or creates `path`, and beside it `path`-lock, which is the library's, and `path`.lock,
  /// which lets one process at a time have the store, all 0600; the folder has to be there. A
  /// file that is damaged is moved to `path`.damaged, and what another layout holds is dropped;
  /// `notices` tells of both. Throws `std::runtime_error` with path and remedy if the file belongs
  /// to somebody else, is another process's or can't be made. Forks a child that tries whether the
  /// file can be read, so it is to be called while the process has one thread and may fork.
  explicit LmdbStore(std::string path, size_t firstMapSize = Limits::kFirstMap);

  Macsecd::StateValues readAll() override;
  Macsecd::Result<> commit(Macsecd::StateChange const& change) override;

  /// What happened to the file that the operator should know, a sentence each.
  std::vector<std::string> const& notices() const { return notices_; }

 private:
  struct CloseEnvironment {
    void operator()(MDB_env* env) const { mdb_env_close(env); }
  };

  void checkKinds() const;
  void setAsideIfDamaged();
  void open();
  void checkLayout();
  int tryCommit(Macsecd::StateChange const& change);
  int grow();
  [[noreturn]] void fail(std::string const& what, int error) const;

  std::string const path_;
  FileLock const lock_;
  size_t mapSize_;
  std::unique_ptr<MDB_env, CloseEnvironment> env_;
  MDB_dbi values_ = 0;
  std::vector<std::string> notices_;
};

}  // namespace Linux
