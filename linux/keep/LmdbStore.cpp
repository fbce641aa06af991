#include "linux/keep/LmdbStore.h"

#include <fmt/format.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "linux/keep/LmdbTransaction.h"

namespace Linux {

namespace {

// No path of an attribute: in those two digits follow a '%'.
constexpr char const* kLayoutKey = "%layout";

constexpr unsigned kFlags = MDB_NOSUBDIR | MDB_NOSYNC | MDB_NOTLS;
constexpr mode_t kMode = 0600;

// Whether all of the file is there that its own head speaks of.
bool isWhole(MDB_env* env, char const* path) {
  MDB_envinfo info;
  MDB_stat stat;
  struct stat file;
  if (mdb_env_info(env, &info) != 0 || mdb_env_stat(env, &stat) != 0) return false;
  return ::stat(path, &file) == 0 &&
         static_cast<size_t>(file.st_size) >= (info.me_last_pgno + 1) * stat.ms_psize;
}

// Reads everything and begins to write. On a damaged file the library may well crash.
bool canBeUsed(char const* path) {
  MDB_env* env = nullptr;
  if (mdb_env_create(&env) != 0) return false;
  if (mdb_env_open(env, path, kFlags | MDB_NOLOCK, kMode) != 0 || !isWhole(env, path)) return false;
  LmdbTransaction transaction(env, 0);
  MDB_dbi const values = transaction.open();
  size_t octets = 0;
  transaction.readAll(values, [&](std::string_view key, std::string_view value) {
    for (char const c : std::string(key) + std::string(value)) octets += c != 0;
  });
  transaction.put(values, kLayoutKey, "");
  return transaction.error() == 0;
}

// Tries it in a process that may crash.
bool isDamaged(char const* path) {
  pid_t const child = fork();
  if (child < 0) return false;
  if (child == 0) {
    rlimit const none{0, 0};
    setrlimit(RLIMIT_CORE, &none);
    for (int const fatal : {SIGSEGV, SIGBUS, SIGABRT, SIGALRM}) signal(fatal, SIG_DFL);
    alarm(Limits::kStoreTrial);
    if (!std::freopen("/dev/null", "w", stderr)) close(STDERR_FILENO);
    _exit(canBeUsed(path) ? 0 : 1);
  }
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return status != 0;
}

}  // namespace

LmdbStore::LmdbStore(std::string path, size_t firstMapSize)
    : path_(std::move(path)), lock_(path_ + ".lock"), mapSize_(firstMapSize) {
  checkKinds();
  setAsideIfDamaged();
  open();
  checkLayout();
}

void LmdbStore::fail(std::string const& what, int error) const {
  throw std::runtime_error(fmt::format("{}: {}: {}", path_, what, mdb_strerror(error)));
}

// Another kind of file would be waited for: the library opens both and asks nothing.
void LmdbStore::checkKinds() const {
  struct stat file;
  for (std::string const& path : {path_, path_ + "-lock"}) {
    if (lstat(path.c_str(), &file) != 0) continue;
    if (S_ISREG(file.st_mode) && file.st_uid == geteuid()) continue;
    throw std::runtime_error(
        path + ": is no regular file of this user; remove it, or name another " + "path");
  }
}

void LmdbStore::setAsideIfDamaged() {
  if (access(path_.c_str(), F_OK) != 0) return;
  if (!isDamaged(path_.c_str())) return;
  std::string const aside = path_ + ".damaged";
  if (std::rename(path_.c_str(), aside.c_str()) != 0) {
    fail("is damaged and can't be moved aside; remove it", errno);
  }
  unlink((path_ + "-lock").c_str());
  notices_.push_back(
      fmt::format("{} was damaged and is now {}: every session begins anew", path_, aside));
}

void LmdbStore::open() {
  MDB_env* env = nullptr;
  if (int const error = mdb_env_create(&env)) fail("can't be opened", error);
  env_.reset(env);
  mdb_env_set_mapsize(env, mapSize_);
  int error = mdb_env_open(env, path_.c_str(), kFlags, kMode);
  if (error != 0) fail("can't be opened; see that its folder is there and may be written", error);
  chmod(path_.c_str(), kMode);
  chmod((path_ + "-lock").c_str(), kMode);
  int gone = 0;
  mdb_reader_check(env, &gone);
  MDB_envinfo info;
  if (mdb_env_info(env, &info) == 0) mapSize_ = info.me_mapsize;
  LmdbTransaction transaction(env, 0);
  values_ = transaction.open();
  if ((error = transaction.commit())) fail("can't be written", error);
}

void LmdbStore::checkLayout() {
  std::string layout;
  bool isEmpty = true;
  LmdbTransaction transaction(env_.get(), 0);
  transaction.readAll(values_, [&](std::string_view key, std::string_view value) {
    isEmpty = false;
    if (key == kLayoutKey) layout = value;
  });
  if (layout == kLayout) return;
  transaction.clear(values_);
  transaction.put(values_, kLayoutKey, kLayout);
  if (int const error = transaction.commit()) fail("can't be written", error);
  if (isEmpty) return;
  notices_.push_back(
      fmt::format("{} had layout '{}' instead of '{}' and was emptied: every "
                  "session begins anew",
                  path_, layout, kLayout));
}

Macsecd::StateValues LmdbStore::readAll() {
  Macsecd::StateValues all;
  LmdbTransaction transaction(env_.get(), MDB_RDONLY);
  int const error = transaction.readAll(values_, [&](std::string_view key, std::string_view value) {
    if (key != kLayoutKey) all.emplace(key, value);
  });
  if (error != 0) notices_.push_back(fmt::format("{}: {}", path_, mdb_strerror(error)));
  return all;
}

int LmdbStore::tryCommit(Macsecd::StateChange const& change) {
  LmdbTransaction transaction(env_.get(), 0);
  for (std::string const& path : change.erasedBelow) transaction.eraseBelow(values_, path);
  for (auto const& [path, value] : change.values) {
    if (value) {
      transaction.put(values_, path, *value);
    } else {
      transaction.erase(values_, path);
    }
  }
  return transaction.commit();
}

int LmdbStore::grow() {
  mapSize_ *= 2;
  return mdb_env_set_mapsize(env_.get(), mapSize_);
}

Macsecd::Result<> LmdbStore::commit(Macsecd::StateChange const& change) {
  int error = tryCommit(change);
  while (error == MDB_MAP_FULL && (error = grow()) == 0) error = tryCommit(change);
  if (error == 0) return {};
  return Macsecd::Fault{
      fmt::format("{}: the state of the sessions can't be kept: {}", path_, mdb_strerror(error)),
      "see that its file system has room, or restart with another path"};
}

}  // namespace Linux
